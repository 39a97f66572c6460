#include "EmulatorFile.h"

#include <QSaveFile>

#include <stdexcept>

EmulatorFile::EmulatorFile() {
    Write({});
    qputenv("NORVANE_EMULATOR", m_folder.filePath("cameras.ini").toLocal8Bit());
}

EmulatorFile::~EmulatorFile() {
    qunsetenv("NORVANE_EMULATOR");
}

void EmulatorFile::Write(const QString& text) const {
    QSaveFile file(m_folder.filePath("cameras.ini"));
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0 || !file.commit()) {
        throw std::runtime_error("the emulator's file cannot be written");
    }
}

QString EmulatorFile::Interface(const QString& name) {
    return QString("[interface %1]\ntype = GEV\nname = Adapter %1\naddress = 169.254.10.1\n"
                   "netmask = 255.255.0.0\n")
        .arg(name);
}

QString EmulatorFile::Camera(int serial, const QString& interface, const QString& model,
                             const QString& more) {
    return QString("[camera %1]\ninterface = %2\nmodel = %3\nvendor = Altrona\naddress = 169.254.20.%4\n"
                   "width = 320\nheight = 240\nframe-rate = 50\n%5\n")
        .arg(serial)
        .arg(interface, model)
        .arg(serial % 250 + 1)
        .arg(more);
}
