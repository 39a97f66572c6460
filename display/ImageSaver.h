#pragma once

#include "norvane/Image.h"

class QString;
class QWidget;

/// Saves one image under a name and in a format that the user picks. User-interface thread.
class ImageSaver {
public:
    /// Shows the save dialog and returns; the file is written by Qt's pool once a name is picked.
    /// @param image  belongs to the caller's side no more.
    static void AskAndSave(const Norvane::ImagePtr& image, QWidget* parent);
    /// The format of a dialog filter such as "JPEG (*.jpg *.jpeg)"; raw for an unknown one.
    static Norvane::ImageFileFormat FormatOf(const QString& nameFilter);
};
