#include "EmulatorFixture.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstdlib>
#include <fstream>

namespace Norvane::Transport::Emulator {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class FileWatchingTest : public EmulatorFixture {
protected:
    bool Comes(const std::string& serial) {
        return Eventually([&] { return Find(serial).has_value(); });
    }
};

TEST_F(FileWatchingTest, NoticesRewritingRenamingDeletingAndCreating) {
    std::atomic<int> changes{0};
    Start("[camera 1]\n").SetChangeHandler([&] { ++changes; });
    EXPECT_TRUE(Find("1"));
    std::ofstream(Path("emulator.ini")) << "[camera 2]\n";
    EXPECT_TRUE(Comes("2"));
    Write("[camera 3]\n");
    EXPECT_TRUE(Comes("3"));
    EXPECT_TRUE(Eventually([&] { return changes >= 2; }));
    std::filesystem::remove(Path("emulator.ini"));
    EXPECT_TRUE(Eventually([&] { return !Find("3"); }));
    Write("[camera 4]\n");
    EXPECT_TRUE(Comes("4"));
}

TEST_F(FileWatchingTest, AFileThatIsBeingWrittenIsLeftAlone) {
    Start("[camera 1]\n");
    const auto device = Open();
    std::ofstream file(Path("emulator.ini"), std::ios::trunc);
    file << "[cam" << std::flush;
    // A scan in between must not take the torso for the whole. (A second one at rest would, after a second.)
    EXPECT_TRUE(Find("1"));
    file << "era 1]\n[camera 2]\n";
    file.close();
    EXPECT_TRUE(Comes("2"));
    EXPECT_TRUE(device->IsAlive());
    EXPECT_THAT(Complaints(), IsEmpty());
}

TEST_F(FileWatchingTest, AFolderThatDoesNotExistYet) {
    m_transport = std::make_unique<EmulatorTransport>(Path("a/b/emulator.ini"));
    EXPECT_THAT(m_transport->Scan().interfaces, IsEmpty());
    EXPECT_THAT(Complaints(), IsEmpty());
    std::filesystem::create_directories(Path("a/b"));
    std::ofstream(Path("a/b/emulator.ini")) << "[camera 1]\n";
    EXPECT_TRUE(Comes("1"));
}

TEST_F(FileWatchingTest, AFileWhoseChangesNobodyReportsIsNoticedByScanning) {
    // A link's target changes outside the watched folder.
    std::filesystem::create_directory(Path("elsewhere"));
    std::ofstream(Path("elsewhere/real.ini")) << "[camera 1]\n";
    std::filesystem::create_symlink(Path("elsewhere/real.ini"), Path("link.ini"));
    m_transport = std::make_unique<EmulatorTransport>(Path("link.ini"));
    EXPECT_TRUE(Find("1"));
    std::ofstream(Path("elsewhere/real.ini")) << "[camera 22]\n";
    EXPECT_TRUE(Comes("22"));
}

TEST_F(FileWatchingTest, TheSameFaultIsToldOnceForEachSaving) {
    Start("[camera 1]\nbad = 1\n[camera 2]\n");
    EXPECT_THAT(Complaints(), ElementsAre(HasSubstr("emulator.ini:2: bad")));
    Write("[camera 1]\nbad = 1\n[camera 3]\n");
    EXPECT_TRUE(Comes("3"));
    EXPECT_EQ(Complaints().size(), 2U);
}

TEST_F(FileWatchingTest, KeysOfARunningCameraTakeEffectAtOnce) {
    Start("[camera 1]\nwidth=64\nheight=64\nframe-rate=0.1\n");
    const auto device = Open();
    const auto map = Map(device);
    const auto stream =
        device->OpenStream({10, static_cast<std::uint64_t>(NumberOf(*map, "PayloadSize")), 20, true});
    Execute(*map, "AcquisitionStart");
    ASSERT_TRUE(stream->Pop(10000));
    // The next image would be due in ten seconds. The chunks of inference find no room in the buffers: they
    // stay out instead of spoiling the images.
    Write("[camera 1]\nwidth=64\nheight=64\nframe-rate=200\ninference=detection\nincomplete-every=2\n");
    int incomplete = 0;
    for (int i = 0; i < 10; ++i) {
        const auto frame = stream->Pop(5000);
        ASSERT_TRUE(frame);
        incomplete += frame->status == IMAGE_MISSING_PACKETS;
        EXPECT_NE(frame->status, IMAGE_DATA_OVERFLOW);
    }
    EXPECT_EQ(incomplete, 5);
    map->Poll(1000);
    EXPECT_EQ(NumberOf(*map, "InferenceNetworkTypeSelector"), 1);
    EXPECT_DOUBLE_EQ(Real(*map, "AcquisitionFrameRate"), 200.0);
}

TEST_F(FileWatchingTest, TheFileIsFoundByTheEnvironment) {
    setenv("NORVANE_EMULATOR", "/somewhere/x.ini", 1);
    EXPECT_EQ(EmulatorTransport::DefaultPath(), "/somewhere/x.ini");
    unsetenv("NORVANE_EMULATOR");
    const std::string home = std::getenv("HOME") ? std::getenv("HOME") : "";
    setenv("HOME", "/nowhere", 1);
    EXPECT_EQ(EmulatorTransport::DefaultPath(), "/nowhere/.config/norvane/emulator.ini");
    setenv("HOME", home.c_str(), 1);
    EXPECT_THAT(EmulatorTransport("").Scan().interfaces, IsEmpty());
}

} // namespace
} // namespace Norvane::Transport::Emulator
