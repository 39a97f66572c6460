#include "SettingsFile.h"

#include <QFile>

QString SettingsFilePath() {
    const QByteArray path = qgetenv("HOME") + "/.config/norvane/Tavorin_Qt.ini";
    return QFile::decodeName(path.constData());
}
