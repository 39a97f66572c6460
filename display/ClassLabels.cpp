#include "ClassLabels.h"

#include <QTextStream>

namespace {

/// More than any network knows; a file with more lines is no label file.
constexpr int kMaxClasses = 100'000;
constexpr qint64 kMaxLineLength = 4096; // characters

} // namespace

QMap<int, QString> ReadClassLabels(const QByteArray& text) {
    QMap<int, QString> labels;
    QTextStream stream(text);
    stream.setCodec("UTF-8");
    for (int classNumber = 0; classNumber < kMaxClasses && !stream.atEnd(); ++classNumber) {
        const QString line = stream.readLine(kMaxLineLength);
        QString rest = line;
        while (rest.size() == kMaxLineLength && !stream.atEnd()) {
            rest = stream.readLine(kMaxLineLength);
        }
        labels.insert(classNumber, line);
    }
    return labels;
}
