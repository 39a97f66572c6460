#pragma once

#include "CustomTabInterface.h"

/// What the feature tabs need of the camera file access tab, which another folder implements.
class FileAccessTab : public CustomTabInterface {
    Q_OBJECT

public:
    using CustomTabInterface::CustomTabInterface;

    /// Whether the camera last given to OnCameraUpdated has the file access features.
    virtual bool isFileAccessCapable() const = 0;

signals:
    /// True while a transfer runs.
    void FileOperationStatusChanged(bool busy);
};
