#pragma once

#include "norvane/Camera.h"

#include <QDialog>
#include <QString>
#include <QThread>

#include <memory>

class Ui_wFirmwareDialog;

/// Shows one camera's identity, takes a firmware file and a confirmation, and hands the request to a
/// FirmwareUpdater on a thread of its own. Made by the device list, which must offer the slot
/// ToggleProgressBarView(bool). User-interface thread.
class wFirmwareDialog : public QDialog {
    Q_OBJECT

public:
    explicit wFirmwareDialog(QWidget* parent);
    /// Waits for the worker thread to end.
    ~wFirmwareDialog() override;

    /// Fills the table from the camera's discovery-level information; what cannot be read stays empty.
    void SetCamera(Norvane::CameraPtr camera);

public slots:
    void OnBrowseFiles();
    void OnUpdateFirmware();

signals:
    void updateFirmware(QString filePath, QString serial);

private:
    void setCell(int column, const QString& text);

    std::unique_ptr<Ui_wFirmwareDialog> m_ui;
    QString m_filePath;
    QString m_serial; ///< the camera's number, decimal
    QThread m_thread;
};
