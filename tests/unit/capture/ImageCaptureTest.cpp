#include "ImageCapture.h"

#include "FakeCamera.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QThreadPool>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <future>
#include <string>
#include <thread>
#include <vector>

using Norvane::CameraPtr;
using testing::ElementsAre;

namespace {

constexpr char kStreamNodes[] = R"(
    <Integer Name="StreamIncompleteFrameCount"><Value>3</Value></Integer>
    <Integer Name="StreamLostFrameCount"><Value>4</Value></Integer>
    <Integer Name="GevTotalPacketCount"><Value>100</Value></Integer>
    <Integer Name="GevMissedPacketCount"><Value>7</Value></Integer>
    <Integer Name="GevResendRequestCount"><Value>8</Value></Integer>)";

std::string deviceType(int value) {
    return R"(<Enumeration Name="DeviceType"><EnumEntry Name="GigEVision"><Value>0</Value></EnumEntry>
              <EnumEntry Name="USB3Vision"><Value>1</Value></EnumEntry><Value>)" +
           std::to_string(value) + "</Value></Enumeration>";
}

/// A worker on the test's own thread, its images coming from Deliver().
class ImageCaptureTest : public testing::Test {
protected:
    void SetUp() override {
        m_camera->SetStreamNodes(kStreamNodes);
        m_camera->SetDeviceNodes(deviceType(0));
        m_capture.setCamera(CameraPtr(m_camera));
        QObject::connect(&m_capture, &ImageCapture::streamImageReady, &m_capture,
                         &ImageCapture::OnStreamImageReady);
        QObject::connect(&m_capture, &ImageCapture::bufferedImageReady, &m_capture,
                         &ImageCapture::OnBufferedImageReady, Qt::QueuedConnection);
    }

    std::shared_ptr<FakeCamera> m_camera = std::make_shared<FakeCamera>();
    ImageCapture m_capture;
};

TEST_F(ImageCaptureTest, HandsTheNewestImageOutOnce) {
    m_capture.OnStartContinuousCapture();
    m_capture.OnStartContinuousCapture(); // runs already
    EXPECT_EQ(m_camera->registrations, 1);
    m_camera->Deliver(TestImage(1));
    m_camera->Deliver(TestImage(2));
    const Norvane::ImagePtr image = m_capture.getRawImagePtr(true);
    ASSERT_TRUE(image.IsValid());
    EXPECT_EQ(image->GetFrameID(), 2U);
    EXPECT_FALSE(m_capture.getRawImagePtr(false).IsValid());
    m_capture.OnStopContinuousCapture();
    EXPECT_FALSE(m_camera->IsStreaming());
}

TEST_F(ImageCaptureTest, IncompleteImagesAreShownUnlessTheyAreUnwanted) {
    m_capture.OnStartContinuousCapture();
    QSignalSpy statistics(&m_capture, &ImageCapture::imageInfoGEV);
    m_camera->Deliver(TestImage(1, 1, true));
    EXPECT_TRUE(m_capture.getRawImagePtr(true).IsValid());
    EXPECT_EQ(statistics.count(), 1);

    m_capture.OnDisplayIncomplete(false);
    const Norvane::ImagePtr dropped = TestImage(2, 1, true);
    m_camera->Deliver(dropped);
    EXPECT_FALSE(m_capture.getRawImagePtr(true).IsValid());
    EXPECT_TRUE(dropped->IsReleased());
    EXPECT_EQ(statistics.count(), 1);
}

TEST_F(ImageCaptureTest, LeaderRateFollowsTheCamerasClock) {
    struct Step {
        std::uint64_t frameId, timeStamp;
        bool incomplete;
        double rate;
    };
    const Step steps[] = {
        {1, 1'000'000'000, false, 0},   // primes
        {2, 1'020'000'000, false, 50},  //
        {6, 1'060'000'000, false, 100}, // four frames further on
        {7, 9'000'000'000, true, 100},  // incomplete: not even remembered
        {7, 1'065'000'000, false, 200}, //
        {1, 5'000'000, false, 200},     // the camera was restarted
        {2, 4'000'000, false, 200},     // a clock that goes back
        {3, 14'000'000, false, 100},    //
    };
    for (const Step& step : steps) {
        m_capture.UpdateCameraLeaderFrameRate(TestImage(step.frameId, step.timeStamp, step.incomplete));
        EXPECT_DOUBLE_EQ(m_capture.getCameraLeaderFrameRate(), step.rate) << "after frame " << step.frameId;
    }
}

TEST_F(ImageCaptureTest, StatisticsFollowTheTransport) {
    QSignalSpy gige(&m_capture, &ImageCapture::imageInfoGEV);
    QSignalSpy usb(&m_capture, &ImageCapture::imageInfoUSB);
    const auto text = [](const QSignalSpy& spy) {
        std::vector<std::string> words;
        for (const QVariant& argument : spy.last()) {
            words.push_back(argument.toString().toStdString());
        }
        return words;
    };
    m_capture.SendImageStatsToImageDisplay(TestImage(12, 345));
    ASSERT_EQ(gige.count(), 1);
    EXPECT_THAT(text(gige), ElementsAre("16", "8", "1", "8", "12", "345", "100", "7", "8", "N/A", "3", "4"));

    m_camera->SetDeviceNodes(deviceType(1));
    m_capture.setCamera(CameraPtr(m_camera));
    m_capture.SendImageStatsToImageDisplay(TestImage(12, 345));
    ASSERT_EQ(usb.count(), 1);
    EXPECT_THAT(text(usb), ElementsAre("16", "8", "1", "8", "12", "345", "3", "4"));
}

TEST_F(ImageCaptureTest, PresetChoosesTheManualBufferCount) {
    m_camera->SetStreamNodes(R"(<Enumeration Name="StreamBufferCountMode">
        <EnumEntry Name="Manual"><Value>5</Value></EnumEntry><EnumEntry Name="Auto"><Value>6</Value></EnumEntry>
        <Value>6</Value></Enumeration>)");
    m_capture.setCamera(CameraPtr(m_camera));
    const Norvane::GenApi::CEnumerationPtr mode =
        m_camera->GetTLStreamNodeMap().GetNode("StreamBufferCountMode");
    EXPECT_EQ(mode->GetIntValue(), 5);
}

/// Recording, with the wiring that a display makes.
class RecordingTest : public ImageCaptureTest {
protected:
    void SetUp() override {
        ImageCaptureTest::SetUp();
        QObject::connect(&m_capture, &ImageCapture::disableRecord, &m_capture, &ImageCapture::OnStopRecording,
                         Qt::QueuedConnection);
        QObject::connect(
            &m_capture, &ImageCapture::savedFramesUpdated, &m_here,
            [this](unsigned int saved) { m_saved = saved; }, Qt::DirectConnection);
        m_capture.OnUpdateFilePath(m_folder.path());
        m_capture.OnUpdateImageFormat(RAW);
        m_capture.OnStartContinuousCapture();
    }
    /// Two stills that are written within a millisecond share a name: each is waited for, and a pause keeps
    /// the files apart.
    void DeliverSlowly(int count) {
        for (int i = 0; i < count; ++i) {
            m_camera->Deliver(TestImage(++m_lastFrame));
            QCoreApplication::processEvents();
            QThreadPool::globalInstance()->waitForDone();
            QThread::msleep(2); // after the file has its name
        }
    }
    void WaitUntilDone() {
        ASSERT_TRUE(QTest::qWaitFor([this] { return !m_done.isEmpty(); }, 10'000));
    }
    int FilesIn(const QString& filter) const {
        return QDir(m_folder.path()).entryList({filter}, QDir::Files | QDir::Hidden).size();
    }
    unsigned int Last(const QSignalSpy& spy) const { return spy.isEmpty() ? 0 : spy.last().first().toUInt(); }

    QTemporaryDir m_folder;
    std::uint64_t m_lastFrame = 0;
    QSignalSpy m_grabbed{&m_capture, &ImageCapture::grabbedFramesUpdated};
    std::atomic<unsigned int> m_saved{0}; ///< told by whichever thread writes
    QSignalSpy m_done{&m_capture, &ImageCapture::doneRecording};
    QSignalSpy m_status{&m_capture, &ImageCapture::updateStatusText};
    QObject m_here;
};

TEST_F(RecordingTest, SkipRulesThinABufferedRunOut) {
    m_capture.OnUpdateSaveMode(SAVE_ONE_OF_N);
    m_capture.OnUpdateSaveOptions(0, 3, 10, 0, 1, 0);
    m_capture.OnUpdateImageFormat(JPEG);
    m_capture.OnUpdateJPEGOption({false, 4294967295U}); // more than there is
    m_capture.OnStartRecording();
    DeliverSlowly(12);
    WaitUntilDone();
    EXPECT_EQ(Last(m_grabbed), 9U);
    EXPECT_EQ(m_saved, 3U);
    EXPECT_EQ(FilesIn("*.jpg"), 3);
}

TEST_F(RecordingTest, AStreamedRunEndsAfterItsFrames) {
    m_capture.OnUpdateRecordMode(STREAMING);
    m_capture.OnUpdateSaveOptions(5, 1, 0, 0, 1, 0);
    m_capture.OnStartRecording();
    DeliverSlowly(7);
    WaitUntilDone();
    EXPECT_EQ(FilesIn("*.raw"), 5);
    EXPECT_EQ(m_status.last().first().toString(), "Done");
}

TEST_F(RecordingTest, TimeEndsARun) {
    m_capture.OnUpdateRecordMode(STREAMING);
    m_capture.OnUpdateSaveMode(SAVE_FOR_TIME);
    m_capture.OnUpdateSaveOptions(0, 1, 0, 30, 1, 0);
    m_capture.OnStartRecording();
    WaitUntilDone();
    EXPECT_EQ(m_status.last().first().toString(), "Done");
}

TEST_F(RecordingTest, SecondStopDropsWhatIsStillBuffered) {
    QSignalSpy stopButton(&m_capture, &ImageCapture::updateStopRecord);
    m_capture.OnStartRecording();
    for (int i = 1; i <= 10; ++i) {
        m_camera->Deliver(TestImage(static_cast<std::uint64_t>(i))); // no event loop: the drain waits
    }
    m_capture.OnStopRecording();
    ASSERT_EQ(stopButton.count(), 1);
    EXPECT_EQ(stopButton.first().first().toString(), "Abort Saving");
    m_capture.OnStopRecording();
    WaitUntilDone();
    EXPECT_EQ(FilesIn("*.raw"), 0);
    EXPECT_EQ(m_status.last().first().toString(), "Recording has been stopped.");
}

TEST_F(RecordingTest, TheTimeOfARunThatWasStoppedByHandDropsNothing) {
    QObject::disconnect(&m_capture, &ImageCapture::bufferedImageReady, nullptr, nullptr); // the drain waits
    m_capture.OnUpdateSaveMode(SAVE_FOR_TIME);
    m_capture.OnUpdateSaveOptions(0, 1, 0, 10, 1, 0);
    m_capture.OnStartRecording();
    for (int i = 1; i <= 10; ++i) {
        m_camera->Deliver(TestImage(static_cast<std::uint64_t>(i)));
    }
    m_capture.OnStopRecording();
    QTest::qWait(30); // until the run's time is over
    m_capture.OnBufferedImageReady();
    WaitUntilDone();
    EXPECT_EQ(m_saved, 10U);
    EXPECT_EQ(m_status.last().first().toString(), "Done");
}

TEST_F(RecordingTest, AnImageThatIsNotShownIsRecorded) {
    // An image that takes its time to go, with the lock held that guards the one to be shown.
    std::promise<void> isGoing;
    std::promise<void> mayGo;
    Norvane::ImagePtr shown = TestImage(1);
    Norvane::IImage* raw = shown.get();
    m_camera->Deliver(Norvane::ImagePtr(std::shared_ptr<Norvane::IImage>(raw, [&](Norvane::IImage*) {
        isGoing.set_value();
        mayGo.get_future().wait();
    })));
    std::thread restart([this] { m_capture.OnStartContinuousCapture(); });
    isGoing.get_future().wait();
    m_capture.OnUpdateSaveOptions(1, 1, 0, 0, 1, 0);
    m_capture.OnStartRecording();
    m_camera->Deliver(TestImage(2));
    mayGo.set_value();
    restart.join();
    WaitUntilDone();
    EXPECT_EQ(FilesIn("*.raw"), 1);
}

std::vector<std::string> warnings;

TEST_F(RecordingTest, ImagesThatNeverArrivedAreTold) {
    warnings.clear();
    const QtMessageHandler former =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
            if (type == QtWarningMsg) {
                warnings.push_back(text.toStdString());
            }
        });
    m_capture.OnUpdateRecordMode(STREAMING);
    m_capture.OnStartRecording();
    for (const std::uint64_t frameId : {7, 8, 11, 12, 20, 1, 2}) { // at 1 the camera was started anew
        m_camera->Deliver(TestImage(frameId));
    }
    m_capture.OnStopRecording();
    WaitUntilDone();
    qInstallMessageHandler(former);
    EXPECT_THAT(warnings, ElementsAre(testing::HasSubstr("9 images of the camera never arrived")));
    EXPECT_EQ(m_status.last().first().toString(), "Recording has been stopped.");
    m_camera->Deliver(TestImage(3));
    EXPECT_EQ(Last(m_grabbed), 7U) << "what comes after the stop is not recorded";
}

TEST_F(RecordingTest, AFolderThatIsGoneCostsFilesAndNothingElse) {
    m_capture.OnUpdateFilePath(m_folder.path() + "/not there");
    m_capture.OnUpdateSaveOptions(3, 1, 0, 0, 1, 0);
    m_capture.OnStartRecording();
    DeliverSlowly(3);
    WaitUntilDone();
    EXPECT_EQ(m_saved, 3U); // attempts
    EXPECT_EQ(FilesIn("*.raw"), 0);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
