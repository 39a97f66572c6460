#pragma once

#include "FileAccessTab.h"

#include "norvane/Camera.h"
#include "norvane/genapi/GenApi.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

class CameraFile;
class QCheckBox;
class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;

/// The tab that copies whole files between the computer and the camera's file store. Owned by the feature
/// tabs' dock; user-interface thread, where a transfer runs as well, chunk by chunk with events processed in
/// between. The camera may go away and the window may be closed in the middle of a transfer, which then
/// fails.
class wFileAccess : public FileAccessTab {
    Q_OBJECT

public:
    explicit wFileAccess(QWidget* parent);
    ~wFileAccess() override;

    bool isFileAccessCapable() const override { return m_fileAccessCapable; }

    /// Node callback: passes the node on to every tab as NodeUpdated. Any thread, inside the node map's lock.
    static void Callback(Norvane::GenApi::INode* node);

public slots:
    void OnCameraUpdated(const Norvane::CameraPtr& camPtr) override;
    void OnNodeChanged(Norvane::GenApi::INode* node);
    void OnFileOperationStatusChanged(bool busy);
    void OnFileSelectorCurrentIndexChanged(int index);
    void OnUploadButtonClicked();
    void OnDownloadButtonClicked();
    void OnWriteToDDRCheckBoxChanged(int state);

signals:
    void NodeUpdated(Norvane::GenApi::INode* node);

private:
    void setupWidgets();
    void initializeValues();
    void deinitializeValues();
    void populateFileSelector();
    void updateWriteToFlash();
    void setStatus(const QString& text);
    /// @param percent  a negative number for a bar that has not begun.
    void setProgress(int percent);
    void showProgress(std::int64_t moved, std::int64_t total);
    bool upload(CameraFile& file, const QByteArray& content);
    std::optional<QByteArray> download(CameraFile& file, std::int64_t size);
    static void processEvents();

    Norvane::CameraPtr m_camera;
    QComboBox* m_fileSelector = nullptr;
    QPushButton* m_buttonUpload = nullptr;
    QPushButton* m_buttonDownload = nullptr;
    QCheckBox* m_writeToDdr = nullptr;
    QProgressBar* m_progress = nullptr;
    QLabel* m_status = nullptr;
    Norvane::GenApi::CEnumerationPtr m_selectorNode;
    Norvane::GenApi::CBooleanPtr m_writeToFlashNode;
    std::vector<Norvane::GenApi::CallbackHandleType> m_callbacks; ///< while registered
    bool m_fileAccessCapable = false;
    bool m_populating = false; ///< the selector's changes come from the camera
    bool m_transferRunning = false;
    QString m_userFilePath;
    QString m_uploadName;
    QString m_downloadName;
};
