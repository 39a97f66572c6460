#include "DisplayFixture.h"

#include "wRecordingDialog.h"

#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTime>

namespace {

/// What a person does with the dialog, by the names of its controls.
class DialogHands {
public:
    explicit DialogHands(QWidget* dialog) : m_dialog(dialog) {}

    template <class Control>
    Control* Get(const char* name) const {
        Control* control = m_dialog->findChild<Control*>(name);
        EXPECT_TRUE(control) << name;
        return control;
    }
    void Press(const char* button) const { QTest::mouseClick(Get<QPushButton>(button), Qt::LeftButton); }
    void Select(const char* radio) const { Get<QRadioButton>(radio)->click(); }
    void Enter(const char* edit, const QString& text) const {
        auto* line = Get<QLineEdit>(edit);
        line->setFocus();
        line->selectAll();
        QTest::keyClicks(line, text);
        QTest::keyClick(line, Qt::Key_Return);
    }
    QString Status() const { return Get<QLineEdit>("editBox_Status")->text(); }
    QString Count(const char* label) const { return Get<QLabel>(label)->text().section(' ', -1); }

private:
    QWidget* m_dialog;
};

class RecordingDialogTest : public testing::Test {
protected:
    RecordingDialogTest() {
        m_dialog.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&m_dialog));
        m_dialog.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&m_dialog));
    }
    wRecordingDialog m_dialog;
    DialogHands m_hands{&m_dialog};
};

TEST_F(RecordingDialogTest, SkipRulesDemandTheBuffer) {
    QSignalSpy modes(&m_dialog, &wRecordingDialog::updateRecordMode);
    QSignalSpy rules(&m_dialog, &wRecordingDialog::updateSaveMode);
    m_hands.Select("radio_Streaming");
    EXPECT_EQ(modes.last().first().value<RecordMode>(), STREAMING);
    m_hands.Select("radio_OneOfN");
    EXPECT_EQ(modes.last().first().value<RecordMode>(), BUFFERED);
    EXPECT_EQ(rules.last().first().value<RecordSaveOption>(), SAVE_ONE_OF_N);
    EXPECT_SOON(!m_hands.Get<QRadioButton>("radio_Streaming")->isEnabled());
    EXPECT_TRUE(m_hands.Get<QLineEdit>("editBox_EveryN")->isEnabled());
    EXPECT_FALSE(m_hands.Get<QLineEdit>("editBox_FramesToGrab")->isEnabled());
    m_hands.Select("radio_StopTime");
    EXPECT_TRUE(m_hands.Get<QRadioButton>("radio_Streaming")->isEnabled());
}

TEST_F(RecordingDialogTest, InvalidOptionsDoNotStart) {
    struct Row {
        const char* radio;
        std::pair<const char*, const char*> first, second;
        bool starts;
    };
    const Row rows[] = {
        {"radio_FramesToGrab", {"editBox_FramesToGrab", "-1"}, {}, false},
        {"radio_FramesToGrab", {"editBox_FramesToGrab", "0"}, {}, true},
        {"radio_StopTime", {"editBox_StopTime", "-1"}, {}, false},
        {"radio_StopTime", {"editBox_StopTime", "99999999999"}, {}, true},
        {"radio_OneOfN", {"editBox_EveryN", "0"}, {"editBox_RunFrames", "10"}, false},
        {"radio_OneOfN", {"editBox_EveryN", "11"}, {"editBox_RunFrames", "10"}, false},
        {"radio_OneOfN", {"editBox_EveryN", "10"}, {"editBox_RunFrames", "10"}, true},
        {"radio_TimeLapse", {"editBox_Interval", "0"}, {"editBox_RunTime", "10"}, false},
        {"radio_TimeLapse", {"editBox_Interval", "11"}, {"editBox_RunTime", "10"}, false},
        {"radio_TimeLapse", {"editBox_Interval", "10"}, {"editBox_RunTime", "10"}, true},
    };
    QSignalSpy started(&m_dialog, &wRecordingDialog::startRecording);
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.radio) + " " + row.first.second);
        m_hands.Select(row.radio);
        m_hands.Enter(row.first.first, row.first.second);
        if (row.second.first) {
            m_hands.Enter(row.second.first, row.second.second);
        }
        started.clear();
        m_hands.Press("button_StartRecord");
        EXPECT_EQ(started.count(), row.starts ? 1 : 0);
        EXPECT_EQ(m_hands.Status(), row.starts ? "Recording..." : "Invalid Save Options...");
        if (row.starts) {
            EXPECT_FALSE(m_hands.Get<QWidget>("groupBox_SaveOptions")->isEnabled());
            m_dialog.OnDoneRecording();
        }
    }
    m_hands.Enter("editBox_Interval", "0");
    m_hands.Press("button_StartRecord");
    EXPECT_SOON(m_hands.Status() == "Ready");
}

TEST_F(RecordingDialogTest, OptionsReachTheWorkerAsTyped) {
    QSignalSpy save(&m_dialog, &wRecordingDialog::updateSaveOptions);
    m_hands.Select("radio_OneOfN");
    m_hands.Enter("editBox_EveryN", "3");
    EXPECT_EQ(save.last().at(1).toUInt(), 3U);
    for (const char* huge : {"99999999999", "99999999999999999999"}) {
        m_hands.Enter("editBox_RunFrames", huge);
        EXPECT_EQ(save.last().at(2).toUInt(), 4294967295U) << huge;
    }

    QSignalSpy tiff(&m_dialog, &wRecordingDialog::updateTIFFOptions);
    m_hands.Get<QComboBox>("comboBox_CompressionTiff")->setCurrentText("LZW");
    EXPECT_EQ(tiff.last().first().value<Norvane::TIFFOption>().compression, Norvane::TIFFOption::LZW);

    QSignalSpy bitrate(&m_dialog, &wRecordingDialog::updateH264Bitrate);
    QSignalSpy rate(&m_dialog, &wRecordingDialog::updateVideoFrameRate);
    m_hands.Get<QTabWidget>("tabWidget_RecordType")->setCurrentIndex(1);
    m_hands.Get<QComboBox>("comboBox_VideoType")->setCurrentText("H264");
    EXPECT_TRUE(m_hands.Get<QWidget>("groupBox_H264Options")->isVisible());
    EXPECT_FALSE(m_hands.Get<QWidget>("groupBox_VideoFileSplitSizeOptions")->isVisible());
    m_hands.Enter("editBox_Bitrate", "0");
    m_hands.Enter("editBox_FrameRate", "0");
    m_hands.Enter("editBox_FrameRate", "inf");
    EXPECT_EQ(bitrate.count() + rate.count(), 0) << "what is no rate is not sent";
    m_hands.Enter("editBox_FrameRate", "29.97");
    EXPECT_EQ(rate.last().first().toDouble(), 29.97);
    m_dialog.OnFrameRateChanged(59.9401234);
    EXPECT_EQ(m_hands.Get<QLineEdit>("editBox_FrameRate")->text(), "59.9401");
}

TEST_F(RecordingDialogTest, ATypedFolderIsMade) {
    const QTemporaryDir folder;
    const QString fresh = folder.path() + "/new";
    QSignalSpy path(&m_dialog, &wRecordingDialog::updateFilePath);
    m_hands.Enter("editBox_Filename", fresh);
    EXPECT_TRUE(QFileInfo(fresh).isDir());
    EXPECT_EQ(path.last().first().toString(), fresh);
}

/// The dialog of a real display, over a streaming camera.
class DisplayRecordingTest : public DisplayFixture {
protected:
    void OpenRecorder(const std::string& keys = "") {
        Open(keys);
        Click("actionRecord");
        m_dialog = m_display->findChild<wRecordingDialog*>();
        ASSERT_TRUE(m_dialog && m_dialog->isVisible());
        m_hands = std::make_unique<DialogHands>(m_dialog);
        EXPECT_EQ(m_hands->Status(), "Ready");
        m_hands->Enter("editBox_Filename", m_folder.path());
    }
    QStringList Files(const QString& filter) const {
        return QDir(m_folder.path()).entryList({filter}, QDir::Files | QDir::Hidden);
    }

    QTemporaryDir m_folder;
    wRecordingDialog* m_dialog = nullptr;
    std::unique_ptr<DialogHands> m_hands;
};

TEST_F(DisplayRecordingTest, RecordsStillsFromTheStream) {
    // Stills that begin within one millisecond share a name, and a busy machine writes buffered images in
    // bursts: these take longer than that to pack.
    OpenRecorder("width = 640\nheight = 480\n");
    m_hands->Get<QComboBox>("comboBox_ImageFormat")->setCurrentText("PNG");
    m_hands->Enter("editBox_FramesToGrab", "5");
    StreamUntilShown();
    m_hands->Press("button_StartRecord");
    EXPECT_EQ(m_hands->Get<QPushButton>("button_StartRecord")->isEnabled(), false);
    ASSERT_SOON(m_hands->Status() == "Done");
    EXPECT_SOON(m_hands->Count("label_SavedImages") == "5");
    EXPECT_EQ(m_hands->Count("label_BufferedImages"), "5");
    EXPECT_EQ(m_hands->Count("label_RemainingImages"), "0");
    EXPECT_EQ(Files("*").size(), 5) << "nothing unfinished is left";
    for (const QString& file : Files("*.png")) {
        EXPECT_EQ(QImage(m_folder.path() + "/" + file).size(), QSize(640, 480)) << file.toStdString();
    }
    EXPECT_TRUE(m_hands->Get<QPushButton>("button_StartRecord")->isEnabled());
    EXPECT_FALSE(m_hands->Get<QPushButton>("button_StopRecord")->isEnabled());
}

TEST_F(DisplayRecordingTest, RecordsAVideoUntilStoppedAndThenAnother) {
    OpenRecorder();
    m_hands->Get<QTabWidget>("tabWidget_RecordType")->setCurrentIndex(1);
    m_hands->Get<QComboBox>("comboBox_VideoType")->setCurrentText("MJPG");
    m_hands->Press("button_UseFrameRate");
    EXPECT_EQ(m_hands->Get<QLineEdit>("editBox_FrameRate")->text(), "50");
    StreamUntilShown();
    for (const char* mode : {"radio_Streaming", "radio_Buffered"}) {
        m_hands->Select(mode);
        m_hands->Press("button_StartRecord");
        ASSERT_SOON(m_hands->Count("label_SavedImages").toInt() >= 10) << mode;
        m_hands->Press("button_StopRecord");
        ASSERT_SOON(m_hands->Get<QPushButton>("button_StartRecord")->isEnabled()) << mode;
    }
    EXPECT_EQ(Files("*MJPG.avi").size(), 2) << "also when they begin within a second, which names tell";
}

TEST_F(DisplayRecordingTest, LeavingWithAFullBufferKeepsTheWindowFreeAndEveryImage) {
    OpenRecorder("width = 1600\nheight = 1200\nframe-rate = 200\n"); // much faster than images are packed
    m_hands->Get<QComboBox>("comboBox_ImageFormat")->setCurrentText("PNG");
    m_hands->Enter("editBox_FramesToGrab", "40");
    StreamUntilShown();
    m_hands->Press("button_StartRecord");
    ASSERT_SOON(m_hands->Count("label_RemainingImages").toInt() >= 5);
    m_display->deleteWhenWritten();
    int buffered = m_hands->Count("label_BufferedImages").toInt();
    EXPECT_LT(Files("*.png").size(), buffered);
    ASSERT_SOON(!m_display || m_hands->Get<QPushButton>("button_StopRecord")->text() == "Abort Saving");
    ASSERT_TRUE(m_display) << "it left before its buffer was empty, or was too fast";
    EXPECT_SOON([&] {
        buffered = m_display ? m_hands->Count("label_BufferedImages").toInt() : buffered;
        return !m_display;
    }());
    EXPECT_EQ(Files("*.png").size(), buffered);
}

TEST_F(DisplayRecordingTest, UnpluggingInMidRecordingKeepsTheVideo) {
    OpenRecorder();
    m_hands->Get<QTabWidget>("tabWidget_RecordType")->setCurrentIndex(1);
    m_hands->Select("radio_Streaming");
    StreamUntilShown();
    m_hands->Press("button_StartRecord");
    ASSERT_SOON(m_hands->Count("label_SavedImages").toInt() >= 5);
    Unplug("1001");
    EXPECT_SOON(!m_camera->IsValid());
    CloseDisplay();
    ASSERT_EQ(Files("*Uncompressed.avi").size(), 1);
    EXPECT_GE(QFileInfo(m_folder.path() + "/" + Files("*.avi").first()).size(), 5 * 320 * 240);
}

} // namespace
