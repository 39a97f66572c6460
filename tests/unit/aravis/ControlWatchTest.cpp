#include "transport/aravis/OpenedDevice.h"

#include <atomic>
#include <future>
#include <gmock/gmock.h>
#include <thread>

using namespace Norvane::Transport;
using namespace std::chrono_literals;

namespace {

/// Aravis's device without hardware. The test plays its heartbeat thread.
class ControlWatchTest : public testing::Test {
protected:
    ControlWatchTest() {
        ArvDevice* device = arv_fake_device_new("1", nullptr);
        m_opened = std::make_unique<OpenedDevice>(GObjectPtr<ArvDevice>(device),
                                                  std::make_shared<ControlWatch>(m_life));
        g_object_weak_ref(
            G_OBJECT(device),
            [](gpointer closer, GObject*) {
                static_cast<std::promise<std::thread::id>*>(closer)->set_value(std::this_thread::get_id());
            },
            &m_closer);
    }
    /// The thread that closes the device.
    std::thread::id Closer() {
        auto closer = m_closer.get_future();
        return closer.wait_for(10s) == std::future_status::ready ? closer.get() : std::thread::id();
    }
    static void Tell(gpointer device) { g_signal_emit_by_name(device, "control-lost"); }

    std::shared_ptr<DeviceLife> m_life = std::make_shared<DeviceLife>("camera");
    std::unique_ptr<OpenedDevice> m_opened;
    std::promise<std::thread::id> m_closer;
};

} // namespace

TEST_F(ControlWatchTest, WhoeverTellsBeforeTheClosingMayLetGoAfterIt) {
    GObjectPtr<ArvDevice> held(static_cast<ArvDevice*>(g_object_ref(m_opened->Get())));
    std::promise<void> closes;
    std::thread heartbeat([&] {
        Tell(held.get());
        closes.get_future().wait();
        held.reset();
    });
    while (!m_life->IsLost()) {
        std::this_thread::yield();
    }
    closes.set_value();
    m_opened.reset();
    EXPECT_EQ(Closer(), std::this_thread::get_id());
    heartbeat.join();
}

TEST_F(ControlWatchTest, WhoeverTellsInTheMidstOfTheClosingDoesNotClose) {
    GObjectPtr<ArvDevice> held(static_cast<ArvDevice*>(g_object_ref(m_opened->Get())));
    m_opened.reset();
    std::thread heartbeat([&] {
        Tell(held.get());
        held.reset();
    });
    const std::thread::id closer = Closer();
    EXPECT_NE(closer, std::thread::id());
    EXPECT_NE(closer, heartbeat.get_id());
    heartbeat.join();
}
