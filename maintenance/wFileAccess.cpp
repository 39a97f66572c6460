#include "wFileAccess.h"

#include "CameraFile.h"
#include "Guarded.h"
#include "WrappingCheckBox.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QSaveFile>
#include <QScopeGuard>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QStandardPaths>
#include <QThread>
#include <QVBoxLayout>

#include <algorithm>
#include <limits>
#include <mutex>

using namespace Norvane::GenApi;

namespace {

/// A window that answers within this time feels alive.
constexpr qint64 kProgressIntervalMs = 100;
/// The transfer goes on for this many times as long as drawing the progress took: a window that also shows
/// images may draw slower than a fast link moves many chunks.
constexpr qint64 kWorkPerDrawing = 5;
/// What a byte array can hold.
constexpr std::int64_t kLargestFile = std::numeric_limits<int>::max() - 64;

/// The tabs that a node callback, which knows only its node, reports to.
struct Listeners {
    std::mutex mutex;
    std::vector<wFileAccess*> tabs;
};

Listeners& listeners() {
    static Listeners instance;
    return instance;
}

/// Tells when a running transfer is to draw its progress again.
class DrawingPace {
public:
    DrawingPace() { m_clock.start(); }
    bool IsTime() const { return m_clock.hasExpired(m_intervalMs); }
    /// @param draw  draws, and processes whatever else waits.
    template <class Draw>
    void Run(Draw&& draw) {
        m_clock.restart();
        draw();
        m_intervalMs = std::max(kProgressIntervalMs, m_clock.restart() * kWorkPerDrawing);
    }

private:
    QElapsedTimer m_clock;
    qint64 m_intervalMs = kProgressIntervalMs;
};

/// Lets the window live while the camera works on a command.
void waitForCamera() {
    QCoreApplication::processEvents();
    QThread::usleep(200);
}

/// The whole content of a file; nothing when it cannot be read, or is no plain file at all.
std::optional<QByteArray> readFile(const QString& path) {
    QFile file(path);
    if (!QFileInfo(path).isFile() || file.size() > kLargestFile || !file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return std::nullopt;
    }
    return content;
}

} // namespace

wFileAccess::wFileAccess(QWidget* parent) : FileAccessTab(parent) {
    qRegisterMetaType<Norvane::GenApi::INode*>("Norvane::GenApi::INode*");
    setWindowTitle(tr("Camera File Access"));
    setFeatures(QDockWidget::NoDockWidgetFeatures);
    setupWidgets();
    m_userFilePath =
        QStandardPaths::writableLocation(QStandardPaths::HomeLocation) + QStringLiteral("/Videos");

    // Queued: the callback runs inside the node map's lock, maybe on a thread of the library.
    connect(this, SIGNAL(NodeUpdated(Norvane::GenApi::INode*)), this,
            SLOT(OnNodeChanged(Norvane::GenApi::INode*)), Qt::QueuedConnection);
    connect(this, SIGNAL(FileOperationStatusChanged(bool)), this, SLOT(OnFileOperationStatusChanged(bool)));
    connect(m_fileSelector, SIGNAL(currentIndexChanged(int)), this,
            SLOT(OnFileSelectorCurrentIndexChanged(int)));
    connect(m_buttonUpload, SIGNAL(clicked()), this, SLOT(OnUploadButtonClicked()));
    connect(m_buttonDownload, SIGNAL(clicked()), this, SLOT(OnDownloadButtonClicked()));
    connect(m_writeToDdr, SIGNAL(stateChanged(int)), this, SLOT(OnWriteToDDRCheckBoxChanged(int)));

    Listeners& all = listeners();
    const std::lock_guard lock(all.mutex);
    all.tabs.push_back(this);
}

wFileAccess::~wFileAccess() {
    deinitializeValues();
    Listeners& all = listeners();
    const std::lock_guard lock(all.mutex);
    all.tabs.erase(std::remove(all.tabs.begin(), all.tabs.end(), this), all.tabs.end());
}

void wFileAccess::setupWidgets() {
    // Scrolled, because the dock must not become as wide as the longest text here.
    auto* scrollArea = new QScrollArea(this);
    scrollArea->setFrameShape(QFrame::NoFrame);
    scrollArea->setWidgetResizable(true);
    scrollArea->setFocusPolicy(Qt::NoFocus); // it follows the focus of what it holds
    auto* container = new QWidget;
    m_fileSelector = new QComboBox;
    m_fileSelector->setObjectName(QStringLiteral("m_fileSelector"));
    m_fileSelector->setToolTip(tr("Selects which file is being operated on"));
    m_fileSelector->setStyleSheet(QStringLiteral("QComboBox { border: 1px solid gray; background: white;} "
                                                 "QComboBox:focus { border-color: #2f7fd6; } "
                                                 "QComboBox QAbstractItemView { background: white; }"));
    m_buttonUpload = new QPushButton(tr("Upload"));
    m_buttonUpload->setObjectName(QStringLiteral("m_buttonUpload"));
    m_buttonUpload->setToolTip(tr("Upload file to device"));
    m_buttonDownload = new QPushButton(tr("Download"));
    m_buttonDownload->setObjectName(QStringLiteral("m_buttonDownload"));
    m_buttonDownload->setToolTip(tr("Download file from device"));
    m_writeToDdr =
        new WrappingCheckBox(tr("\nWrite to DDR (Faster but data is cleared after power cycling)"));
    m_writeToDdr->setObjectName(QStringLiteral("m_writeToDdr"));
    m_writeToDdr->setToolTip(tr("Check this option to upload files to DDR instead of the device flash.\n"
                                "This is a faster operation, but the camera forgets the files when its power "
                                "is switched off."));
    m_progress = new QProgressBar;
    m_progress->setObjectName(QStringLiteral("m_progressBar"));
    m_progress->setAccessibleName(tr("Transfer progress"));
    m_progress->setRange(0, 100);
    m_progress->hide();
    m_status = new QLabel;
    m_status->setObjectName(QStringLiteral("m_statusLabel"));
    m_status->setWordWrap(true);
    m_status->hide();

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_buttonUpload);
    buttons->addWidget(m_buttonDownload);
    auto* layout = new QVBoxLayout(container);
    layout->addWidget(m_fileSelector);
    layout->addLayout(buttons);
    layout->addWidget(m_writeToDdr);
    layout->addWidget(m_progress);
    layout->addWidget(m_status);
    layout->addStretch();
    scrollArea->setWidget(container);
    setWidget(scrollArea);
}

void wFileAccess::Callback(INode* node) {
    Listeners& all = listeners();
    const std::lock_guard lock(all.mutex);
    for (wFileAccess* tab : all.tabs) {
        emit tab->NodeUpdated(node);
    }
}

void wFileAccess::OnCameraUpdated(const Norvane::CameraPtr& camPtr) {
    deinitializeValues();
    m_camera = camPtr;
    if (m_camera.IsValid()) {
        guarded("looking for a camera's file access features", [&] { initializeValues(); });
    }
}

void wFileAccess::initializeValues() {
    if (!m_camera->IsInitialized()) {
        m_camera->Init();
    }
    INodeMap& map = m_camera->GetNodeMap();
    m_selectorNode = map.GetNode("FileSelector");
    m_writeToFlashNode = map.GetNode("FileWriteToFlash");
    for (INode* node : {map.GetNode("FileSelector"), map.GetNode("FileWriteToFlash")}) {
        if (node) {
            m_callbacks.push_back(Register(node, &wFileAccess::Callback));
        }
    }
    m_fileAccessCapable = CameraFile::IsSupported(map);
    populateFileSelector();
    updateWriteToFlash();
}

void wFileAccess::deinitializeValues() {
    for (const CallbackHandleType handle : m_callbacks) {
        guarded("ending a node callback", [&] { Deregister(handle); });
    }
    m_callbacks.clear();
    m_selectorNode = nullptr;
    m_writeToFlashNode = nullptr;
    m_fileAccessCapable = false;
}

void wFileAccess::populateFileSelector() {
    m_populating = true;
    const auto done = qScopeGuard([this] { m_populating = false; });
    m_fileSelector->clear();
    guarded("listing a camera's files", [&] {
        if (!IsReadable(m_selectorNode.Get())) {
            return;
        }
        node_vector entries;
        m_selectorNode->GetEntries(entries);
        for (INode* node : entries) {
            const CEnumEntryPtr entry(node);
            if (IsImplemented(entry.Get())) {
                m_fileSelector->addItem(QString::fromUtf8(entry->GetSymbolic().c_str()),
                                        static_cast<qlonglong>(entry->GetValue()));
            }
        }
        m_fileSelector->setCurrentIndex(
            m_fileSelector->findData(static_cast<qlonglong>(m_selectorNode->GetIntValue())));
    });
}

void wFileAccess::OnFileSelectorCurrentIndexChanged(int index) {
    if (m_populating || !m_selectorNode || index < 0) {
        return;
    }
    const qlonglong file = m_fileSelector->itemData(index).toLongLong();
    if (!guarded("selecting a camera file", [&] { m_selectorNode->SetIntValue(file, true); })) {
        populateFileSelector();
    }
}

void wFileAccess::updateWriteToFlash() {
    if (m_transferRunning) {
        return;
    }
    bool toDdr = false;
    bool writable = false;
    guarded("reading FileWriteToFlash", [&] {
        toDdr = IsReadable(m_writeToFlashNode.Get()) && !m_writeToFlashNode->GetValue();
        writable = IsWritable(m_writeToFlashNode.Get());
    });
    const QSignalBlocker blocker(m_writeToDdr);
    m_writeToDdr->setChecked(toDdr);
    m_writeToDdr->setEnabled(writable);
}

void wFileAccess::OnWriteToDDRCheckBoxChanged(int state) {
    guarded("writing FileWriteToFlash", [&] {
        if (IsReadable(m_writeToFlashNode.Get())) {
            m_writeToFlashNode->SetValue(state == Qt::Unchecked, true);
        }
    });
}

void wFileAccess::OnNodeChanged(INode* node) {
    // A late call for another camera's node finds no match and does nothing.
    if (m_selectorNode && node == m_selectorNode->GetNode()) {
        populateFileSelector();
    } else if (m_writeToFlashNode && node == m_writeToFlashNode->GetNode()) {
        updateWriteToFlash();
    }
}

void wFileAccess::OnFileOperationStatusChanged(bool busy) {
    m_transferRunning = busy;
}

void wFileAccess::setStatus(const QString& text) {
    m_status->setText(text);
}

void wFileAccess::processEvents() {
    QCoreApplication::processEvents();
}

void wFileAccess::setProgress(int percent) {
    // Left to itself the bar draws at once, and with it all that waits in the window.
    m_progress->setUpdatesEnabled(false);
    if (percent < 0) {
        m_progress->reset();
    } else {
        m_progress->setValue(percent);
    }
    m_progress->setUpdatesEnabled(true);
}

void wFileAccess::showProgress(std::int64_t moved, std::int64_t total) {
    setProgress(static_cast<int>(moved * 100 / total));
    setStatus(QStringLiteral("%1/%2 bytes").arg(moved).arg(total));
}

void wFileAccess::OnUploadButtonClicked() {
    if (m_transferRunning) {
        return;
    }
    const QPointer<wFileAccess> self(this);
    const QString name = QFileDialog::getOpenFileName(this, tr("Open File"), m_userFilePath);
    if (!self || name.isEmpty()) {
        return;
    }
    m_uploadName = name;
    m_status->clear();
    m_status->show();
    const std::optional<QByteArray> content = readFile(m_uploadName);
    if (!content) {
        setStatus(tr("The file specified is not readable"));
        return;
    }

    CameraFile file(m_camera, &waitForCamera);
    if (!file.OpenForWriting()) {
        setStatus(tr("Problem opening file node."));
        setStatus(tr("Upload failed."));
        return;
    }
    m_progress->show();
    setProgress(-1);
    setStatus(tr("Uploading..."));
    const CameraFile::ChunkAnswer answer = file.PrepareChunks();
    if (answer == CameraFile::ChunkAnswer::LengthNotWritable) {
        m_progress->hide();
        file.Close();
        setStatus(tr("Upload failed. FileAccessLength is not writable."));
        return;
    }
    if (answer == CameraFile::ChunkAnswer::Failed) {
        file.Close();
        setStatus(tr("Upload failed."));
        return;
    }

    emit FileOperationStatusChanged(true);
    setProgress(0);
    const bool success = upload(file, *content);
    if (!file.Close() && self) {
        setStatus(tr("Problem closing file node."));
    }
    if (!self) {
        return;
    }
    setStatus(success ? tr("Upload completed. Wrote %1 bytes.").arg(content->size()) : tr("Upload failed."));
    emit FileOperationStatusChanged(false);
    updateWriteToFlash();
}

bool wFileAccess::upload(CameraFile& file, const QByteArray& content) {
    const QPointer<wFileAccess> self(this);
    const std::int64_t total = content.size();
    DrawingPace pace;
    for (std::int64_t written = 0; written < total;) {
        const std::int64_t count =
            file.WriteChunk(content.constData() + written, std::min(file.ChunkLength(), total - written));
        // A camera that reports success and takes nothing would be asked forever.
        if (!self || count <= 0) {
            return false;
        }
        written += count;
        if (pace.IsTime()) {
            showProgress(written, total);
            pace.Run(&wFileAccess::processEvents);
        } else if (written == total) {
            showProgress(written, total);
        }
        if (!self) {
            return false;
        }
    }
    return true;
}

void wFileAccess::OnDownloadButtonClicked() {
    if (m_transferRunning) {
        return;
    }
    const QPointer<wFileAccess> self(this);
    const QString suggestion = m_userFilePath + QLatin1Char('/') + m_fileSelector->currentText();
    const QString name = QFileDialog::getSaveFileName(this, tr("Open Path"), suggestion);
    if (!self || name.isEmpty()) {
        return;
    }
    m_downloadName = name;
    m_status->clear();
    m_status->show();

    CameraFile file(m_camera, &waitForCamera);
    if (!file.OpenForReading()) {
        setStatus(tr("Problem opening file node."));
        setStatus(tr("Download failed."));
        return;
    }
    const std::int64_t size = file.Size();
    // A length that cannot be written serves a download as it is.
    const bool prepared = file.PrepareChunks() != CameraFile::ChunkAnswer::Failed;
    // The file that the name stood for so far is replaced only by a complete one.
    QSaveFile target(m_downloadName);
    target.setDirectWriteFallback(true);
    if (!prepared || size < 0 || size > kLargestFile || !target.open(QIODevice::WriteOnly)) {
        file.Close();
        setStatus(tr("Download failed."));
        return;
    }

    emit FileOperationStatusChanged(true);
    m_progress->show();
    setProgress(-1);
    setStatus(tr("Downloading..."));
    setProgress(0);
    const std::optional<QByteArray> content = download(file, size);
    const bool success = content && target.write(*content) == content->size() && target.commit();
    if (!file.Close() && self) {
        setStatus(tr("Problem closing file node."));
    }
    if (!self) {
        return;
    }
    setStatus(success ? tr("Download completed. Read %1 bytes.").arg(content->size())
                      : tr("Download failed."));
    emit FileOperationStatusChanged(false);
    updateWriteToFlash();
}

std::optional<QByteArray> wFileAccess::download(CameraFile& file, std::int64_t size) {
    const QPointer<wFileAccess> self(this);
    QByteArray content(static_cast<int>(size), Qt::Uninitialized);
    DrawingPace pace;
    for (std::int64_t read = 0; read < size;) {
        const std::int64_t count = file.ReadChunk(content.data() + read, size - read);
        if (!self || count <= 0) {
            return std::nullopt;
        }
        read += count;
        if (pace.IsTime()) {
            showProgress(read, size);
            pace.Run(&wFileAccess::processEvents);
        } else if (read == size) {
            showProgress(read, size);
        }
        if (!self) {
            return std::nullopt;
        }
    }
    return content;
}
