#pragma once

#include <QString>
#include <QTemporaryDir>

/// The emulator's description file of one test. Made before the camera system starts.
class EmulatorFile {
public:
    EmulatorFile();
    ~EmulatorFile();

    /// Replaces the file as a whole, as an editor does.
    void Write(const QString& text) const;

    /// Sections of one GigE interface and of cameras on it.
    static QString Interface(const QString& name);
    static QString Camera(int serial, const QString& interface, const QString& model = "Duskwing S DWS-50S5C",
                          const QString& more = {});

private:
    QTemporaryDir m_folder;
};
