#include "ImageSaver.h"

#include "WritePriority.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtConcurrent>
#include <QtDebug>

namespace {

/// "(*.jpg *.jpeg)" gives "jpg".
QString suffixOf(const QString& nameFilter) {
    return nameFilter.section(QLatin1Char('.'), 1).section(QRegularExpression(QStringLiteral("[ )]")), 0, 0);
}

void save(const Norvane::ImagePtr& image, const QString& fileName, Norvane::ImageFileFormat format) {
    giveWayToLiveThreads();
    try {
        image->Save(fileName.toUtf8().constData(), format);
    } catch (const std::exception& error) {
        qWarning("Saving the image to %s: %s", qPrintable(fileName), error.what());
    }
}

} // namespace

Norvane::ImageFileFormat ImageSaver::FormatOf(const QString& nameFilter) {
    const QString word = nameFilter.section(QLatin1Char(' '), 0, 0);
    if (word == QLatin1String("PNG")) {
        return Norvane::FILE_FORMAT_PNG;
    }
    if (word == QLatin1String("BMP")) {
        return Norvane::FILE_FORMAT_BMP;
    }
    if (word == QLatin1String("JPG") || word == QLatin1String("JPEG")) {
        return Norvane::FILE_FORMAT_JPEG;
    }
    if (word == QLatin1String("TIFF")) {
        return Norvane::FILE_FORMAT_TIFF;
    }
    return Norvane::FILE_FORMAT_RAW;
}

void ImageSaver::AskAndSave(const Norvane::ImagePtr& image, QWidget* parent) {
    // Shown without a loop of its own: the camera, and its display with it, may go away meanwhile.
    auto* dialog = new QFileDialog(parent, QCoreApplication::translate("wImageDisplay", "Save Image"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilters(
        QStringLiteral("RAW (*.raw);;PNG (*.png);;BMP (*.bmp);;JPEG (*.jpg *.jpeg);;TIFF (*.tif)")
            .split(QStringLiteral(";;")));
    dialog->selectFile(QStringLiteral("untitled.raw"));
    QObject::connect(dialog, &QFileDialog::filterSelected, dialog, [dialog](const QString& filter) {
        const QStringList files = dialog->selectedFiles();
        if (!files.isEmpty() && QFileInfo(files.first()).completeBaseName() == QLatin1String("untitled")) {
            dialog->selectFile(QStringLiteral("untitled.") + suffixOf(filter));
        }
    });
    QObject::connect(dialog, &QFileDialog::fileSelected, dialog, [dialog, image](const QString& fileName) {
        const Norvane::ImageFileFormat format = FormatOf(dialog->selectedNameFilter());
        QtConcurrent::run([image, fileName, format] { save(image, fileName, format); });
    });
    dialog->open();
}
