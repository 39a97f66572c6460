#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <mutex>

/// The worker behind the firmware dialog. Made by the dialog and moved to the dialog's thread, which deletes
/// it when it finishes; the owner widget is only remembered for a transfer that wants to report to it.
class FirmwareUpdater : public QObject {
    Q_OBJECT

public:
    explicit FirmwareUpdater(QWidget* owner);

public slots:
    /// Runs on the worker's thread. Announces the update; the camera library offers no firmware transfer, so
    /// nothing is read from the file and nothing is sent to the camera.
    ///
    /// @param filePath  the firmware file.
    /// @param serial  the camera's number, decimal.
    void startFirmwareUpdate(const QString& filePath, const QString& serial);

signals:
    /// Asks the device list to show (true) or hide its progress page.
    void toggleProgressView(bool show);

private:
    std::mutex m_mutex; ///< keeps two updates from overlapping
    QPointer<QWidget> m_owner;
};

/// Receives a firmware transfer's progress; see ProgressCallbackFcn.
using ShowProgressFunction = void (*)(const char* action, unsigned int percent, int a, int b);

/// Sets the function that ProgressCallbackFcn passes its arguments on to; null for none. Any thread.
void SetShowProgressFunction(ShowProgressFunction function);

/// The action that a transfer reported last; empty before the first one. Any thread.
QString LastFirmwareAction();

/// The progress callback of a firmware transfer. Any thread.
///
/// @param action  what is being done, UTF-8, or null for "the same as before". It becomes the last action
///        unless the last action's text contains its first character.
/// @param percent  0 to 100.
/// @return always 1, which tells the transfer to go on.
int ProgressCallbackFcn(const char* action, unsigned int percent, int a, int b);
