#include "FakeFileStore.h"

#include "wFileAccess.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <thread>

namespace {

using Store = FakeFileStore;

QByteArray Pattern(int size) {
    QByteArray content(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i) {
        content[i] = static_cast<char>((i * 2654435761U) >> 13U);
    }
    return content;
}

QByteArray ContentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

void WriteFile(const QString& path, const QByteArray& content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

class FileAccessTest : public testing::Test {
protected:
    void Use(const Store::Setup& setup = {}) {
        m_store = std::make_shared<Store>(setup);
        m_camera = Store::CameraWith(m_store);
        m_tab = std::make_unique<wFileAccess>(nullptr);
        m_tab->OnCameraUpdated(Norvane::CameraPtr(m_camera));
        m_tab->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_tab.get()));
        m_busy = std::make_unique<QSignalSpy>(m_tab.get(), &wFileAccess::FileOperationStatusChanged);
    }

    /// Does what opens a file dialog, and answers it as a person would.
    void Choose(const QString& path, const std::function<void()>& action) {
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, [&] {
            QWidget* modal = QApplication::activeModalWidget();
            if (auto* question = qobject_cast<QMessageBox*>(modal)) {
                question->button(QMessageBox::Yes)->click();
            } else if (auto* dialog = qobject_cast<QFileDialog*>(modal)) {
                m_caption = dialog->windowTitle();
                m_suggestion = dialog->selectedFiles().value(0);
                dialog->findChild<QLineEdit*>("fileNameEdit")->setText(path);
                QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
            }
        });
        watch.start(20);
        action();
    }

    void PressAndChoose(const char* button, const QString& path) {
        Choose(path, [&] { QTest::mouseClick(m_tab->findChild<QPushButton*>(button), Qt::LeftButton); });
    }

    void Upload(const QByteArray& content) {
        const QString path = m_folder.filePath(QString::fromUtf8("für die Kamera.bin"));
        WriteFile(path, content);
        PressAndChoose("m_buttonUpload", path);
    }

    QString Download() {
        const QString path = m_folder.filePath("from camera.bin");
        PressAndChoose("m_buttonDownload", path);
        return path;
    }

    QString Status() const { return m_tab->findChild<QLabel*>("m_statusLabel")->text(); }

    /// Busy and idle again as often as transfers ran.
    std::vector<bool> BusySignals() const {
        std::vector<bool> values;
        for (const auto& arguments : *m_busy) {
            values.push_back(arguments[0].toBool());
        }
        return values;
    }

    QTemporaryDir m_folder;
    std::shared_ptr<Store> m_store;
    std::shared_ptr<TestCamera> m_camera;
    std::unique_ptr<wFileAccess> m_tab;
    std::unique_ptr<QSignalSpy> m_busy;
    QString m_caption, m_suggestion;
};

TEST_F(FileAccessTest, FilesOfAnySizeGoUpAndComeBackUnchanged) {
    for (const bool advances : {true, false}) {
        for (const int size : {0, 1, 3, 4, 5, 1023, 1024, 1025, 8 << 20}) {
            if (size > 2000 && !advances) {
                continue;
            }
            SCOPED_TRACE(testing::Message() << size << " bytes, the camera "
                                            << (advances ? "advances" : "keeps") << " the offset");
            Store::Setup setup;
            setup.advancesOffset = advances;
            setup.bufferLength = setup.accessLength = size > 2000 ? 16384 : 1024;
            Use(setup);
            const QByteArray content = Pattern(size);
            Upload(content);
            EXPECT_EQ(m_caption, "Open File");
            EXPECT_EQ(Status(), QString("Upload completed. Wrote %1 bytes.").arg(size));
            EXPECT_TRUE(m_store->files[Store::UserFile1] == content);
            const QString path = Download();
            EXPECT_EQ(m_caption, "Open Path");
            EXPECT_TRUE(m_suggestion.endsWith("/UserFile1")) << m_suggestion.toStdString();
            EXPECT_EQ(Status(), QString("Download completed. Read %1 bytes.").arg(size));
            EXPECT_TRUE(ContentOf(path) == content);
            EXPECT_FALSE(m_store->open);
            EXPECT_EQ(BusySignals(), (std::vector<bool>{true, false, true, false}));
        }
    }
}

TEST_F(FileAccessTest, ShortChunkIsPaddedAndItsLengthTold) {
    Use();
    Upload("0123456789");
    ASSERT_EQ(m_store->bufferWrites.size(), 1U);
    EXPECT_EQ(m_store->bufferWrites[0], QByteArray("0123456789\xFF\xFF"));
    EXPECT_EQ(m_store->lengthOfLastWrite, 10);
}

TEST_F(FileAccessTest, AccessLengthGrowsToTheBufferWhereItCan) {
    Store::Setup setup;
    setup.accessLength = 16;
    for (const bool perOperation : {false, true}) {
        setup.lengthPerOperation = perOperation;
        Use(setup);
        Upload(Pattern(10)); // leaves a short length behind
        Upload(Pattern(2000));
        EXPECT_EQ(m_store->bufferWrites.size(), 3U) << "the longest chunks";
        EXPECT_EQ(ContentOf(Download()), Pattern(2000));
    }
    setup.lengthPerOperation = false;

    setup.lengthWritable = false;
    Use(setup);
    Upload(Pattern(10));
    EXPECT_EQ(Status(), "Upload failed. FileAccessLength is not writable.");
    EXPECT_FALSE(m_tab->findChild<QProgressBar*>()->isVisible());
    EXPECT_FALSE(m_store->open);
    EXPECT_TRUE(BusySignals().empty());

    m_store->files[Store::UserFile1] = Pattern(100);
    EXPECT_EQ(ContentOf(Download()), Pattern(100));
}

TEST_F(FileAccessTest, EveryFailureEndsTheTransferAndLeavesTheFileClosed) {
    struct Case {
        const char* what;
        int failOperation, failFrom, loseAt;
        bool upload;
        const char* status;
    };
    for (const Case& c : {
             Case{"open refused", Store::Open, 0, -1, true, "Upload failed."},
             Case{"open refused", Store::Open, 0, -1, false, "Download failed."},
             Case{"second write refused", Store::Write_, 2, -1, true, "Upload failed."},
             Case{"second read refused", Store::Read_, 2, -1, false, "Download failed."},
             Case{"gone before opening", -1, 0, 0, true, "Upload failed."},
             Case{"gone after opening", -1, 0, 1, true, "Upload failed."},
             Case{"gone while writing", -1, 0, 2, true, "Upload failed."},
             Case{"gone after opening", -1, 0, 1, false, "Download failed."},
             Case{"gone while reading", -1, 0, 2, false, "Download failed."},
         }) {
        SCOPED_TRACE(testing::Message() << c.what << (c.upload ? ", upload" : ", download"));
        Use();
        m_store->files[Store::UserFile1] = Pattern(3000);
        m_store->failOperation = c.failOperation;
        m_store->failFrom = c.failFrom;
        m_store->loseAt = c.loseAt;
        if (c.upload) {
            Upload(Pattern(3000));
        } else {
            const QString path = m_folder.filePath("from camera.bin");
            WriteFile(path, "kept");
            Download();
            EXPECT_EQ(ContentOf(path), "kept");
        }
        EXPECT_EQ(Status(), c.status);
        if (c.loseAt < 0) {
            EXPECT_FALSE(m_store->open);
        }
        const auto busy = BusySignals();
        EXPECT_TRUE(busy.empty() || busy == (std::vector<bool>{true, false}));
    }
}

TEST_F(FileAccessTest, PathsThatCannotBeUsedAreToldAndNothingIsSent) {
    Use();
    const QString pipe = m_folder.filePath("pipe");
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    PressAndChoose("m_buttonUpload", pipe);
    EXPECT_EQ(Status(), "The file specified is not readable");
    EXPECT_EQ(m_store->operations, 0);

    PressAndChoose("m_buttonDownload", "/proc/no-such-folder/file");
    EXPECT_EQ(Status(), "Download failed.");
    EXPECT_FALSE(m_store->open);
}

TEST_F(FileAccessTest, TransferKeepsItsFileWhenTheSelectorChangesMeanwhile) {
    Use();
    m_store->files[Store::UserFile2] = "untouched";
    Norvane::GenApi::CEnumerationPtr selector(m_camera->deviceMap->GetNode("FileSelector"));
    QTimer::singleShot(0, [&] {
        QObject::connect(m_tab->findChild<QProgressBar*>(), &QProgressBar::valueChanged,
                         [=](int) mutable { selector->SetIntValue(Store::UserFile2); });
    });
    Upload(Pattern(200000));
    EXPECT_EQ(Status(), "Upload completed. Wrote 200000 bytes.");
    EXPECT_TRUE(m_store->files[Store::UserFile1] == Pattern(200000));
    EXPECT_EQ(m_store->files[Store::UserFile2], "untouched");
}

TEST_F(FileAccessTest, CameraMayBeDeselectedInTheMiddle) {
    Use();
    QObject::connect(m_tab->findChild<QProgressBar*>(), &QProgressBar::valueChanged, m_tab.get(),
                     [this](int) { m_tab->OnCameraUpdated({}); });
    Upload(Pattern(200000));
    EXPECT_TRUE(m_store->files[Store::UserFile1] == Pattern(200000));
    EXPECT_FALSE(m_tab->isFileAccessCapable());
}

TEST_F(FileAccessTest, TabMayBeDestroyedInTheMiddle) {
    Store::Setup setup;
    setup.bufferLength = setup.accessLength = 64; // many chunks, so that events come in between
    Use(setup);
    bool destroyed = false;
    QObject::connect(m_tab.get(), &wFileAccess::FileOperationStatusChanged, [&](bool) {
        // Runs with the events that the transfer processes.
        QTimer::singleShot(0, [&] {
            m_tab.reset();
            destroyed = true;
        });
    });
    const QString path = m_folder.filePath("file");
    WriteFile(path, Pattern(4 << 20));
    Choose(path, [&] { m_tab->OnUploadButtonClicked(); });
    EXPECT_TRUE(destroyed);
    EXPECT_FALSE(m_store->open);
    EXPECT_LT(m_store->files[Store::UserFile1].size(), 4 << 20);
}

TEST_F(FileAccessTest, SelectorAndDdrBoxFollowTheCameraBothWays) {
    Use();
    auto* selector = m_tab->findChild<QComboBox*>();
    auto* ddr = m_tab->findChild<QCheckBox*>();
    ASSERT_TRUE(m_tab->isFileAccessCapable());
    ASSERT_EQ(selector->count(), 2);
    EXPECT_EQ(selector->itemText(1), "UserFile2");
    EXPECT_FALSE(ddr->isChecked());

    ddr->setChecked(true);
    EXPECT_FALSE(m_store->writeToFlash);
    ddr->setChecked(false);
    EXPECT_TRUE(m_store->writeToFlash);

    selector->setCurrentIndex(1);
    Upload("two");
    EXPECT_EQ(m_store->files[Store::UserFile2], "two");

    // Changes come on whichever thread made them.
    std::thread([&] {
        Norvane::GenApi::CEnumerationPtr(m_camera->deviceMap->GetNode("FileSelector"))->SetIntValue(0);
        Norvane::GenApi::CBooleanPtr(m_camera->deviceMap->GetNode("FileWriteToFlash"))->SetValue(false);
    }).join();
    EXPECT_TRUE(QTest::qWaitFor([&] { return selector->currentIndex() == 0 && ddr->isChecked(); }));
}

TEST_F(FileAccessTest, CameraWithoutFileAccessIsNotCapable) {
    Use();
    const auto plain = std::make_shared<TestCamera>(integer("Width", 0), "", "");
    plain->unknown = true;
    m_tab->OnCameraUpdated(Norvane::CameraPtr(plain));
    EXPECT_FALSE(m_tab->isFileAccessCapable());
    plain->unknown = false;
    m_tab->OnCameraUpdated(Norvane::CameraPtr(plain));
    EXPECT_FALSE(m_tab->isFileAccessCapable());
    EXPECT_EQ(m_tab->findChild<QComboBox*>()->count(), 0);
    EXPECT_FALSE(m_tab->findChild<QCheckBox*>()->isEnabled());
    m_tab->OnCameraUpdated(Norvane::CameraPtr(m_camera));
    EXPECT_TRUE(m_tab->isFileAccessCapable());
}

} // namespace
