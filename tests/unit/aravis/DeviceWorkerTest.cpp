#include "transport/aravis/DeviceWorker.h"

#include <atomic>
#include <future>
#include <gmock/gmock.h>
#include <memory>
#include <stdexcept>
#include <thread>

using Norvane::Transport::DeviceWorker;
using Outcome = DeviceWorker::Outcome;
using namespace std::chrono_literals;

namespace {

DeviceWorker::Patience Patience(bool there) {
    DeviceWorker::Patience patience;
    patience.slice = 20ms;
    patience.maximum = 200ms;
    patience.isThere = [there] { return there; };
    return patience;
}

/// Keeps the worker's thread in a call until it is let go.
struct Blocker {
    std::promise<void> gate;
    std::shared_future<void> opened = gate.get_future().share();
    std::function<void()> Work() {
        return [opened = opened] { opened.wait(); };
    }
};

} // namespace

TEST(DeviceWorker, RunsInOrderAndHandsErrorsBack) {
    DeviceWorker worker;
    std::vector<int> order;
    for (int i = 0; i < 100; ++i) {
        worker.Post([&order, i] { order.push_back(i); });
    }
    EXPECT_EQ(worker.Run([&order] { order.push_back(100); }, Patience(true)), Outcome::Done);
    ASSERT_EQ(order.size(), 101U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_THROW(worker.Run([] { throw std::runtime_error("no"); }, Patience(true)), std::runtime_error);
    EXPECT_EQ(worker.Run([] {}, Patience(true)), Outcome::Done) << "an error ends nothing";
}

TEST(DeviceWorker, NobodyWaitsForAStuckCall) {
    Blocker blocker;
    DeviceWorker worker;
    EXPECT_EQ(worker.Run(blocker.Work(), Patience(false)), Outcome::Gone);
    EXPECT_EQ(worker.Run(blocker.Work(), Patience(true)), Outcome::TimedOut);
    auto touched = std::make_shared<std::atomic<bool>>(false);
    EXPECT_EQ(worker.Run([touched] { *touched = true; }, Patience(false)), Outcome::Gone);
    EXPECT_EQ(touched.use_count(), 1) << "work whose caller gave up is dropped";
    blocker.gate.set_value();
    EXPECT_EQ(worker.Run([] {}, Patience(true)), Outcome::Done);
    EXPECT_FALSE(*touched) << "and never done later";
}

TEST(DeviceWorker, InterruptEndsAllWaits) {
    Blocker blocker;
    DeviceWorker worker;
    DeviceWorker::Patience endless;
    endless.slice = endless.maximum = 1min;
    std::promise<void> begun;
    auto waiting = std::async(std::launch::async, [&] {
        return worker.Run(
            [&begun, work = blocker.Work()] {
                begun.set_value();
                work();
            },
            endless);
    });
    begun.get_future().wait();
    worker.Interrupt();
    EXPECT_EQ(waiting.get(), Outcome::Interrupted);
    EXPECT_EQ(worker.Run([] {}, endless), Outcome::Interrupted);
    blocker.gate.set_value();
}

TEST(DeviceWorker, WorkOwnsItsThingsUntilItsEnd) {
    auto thing = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = thing;
    Blocker blocker;
    {
        DeviceWorker worker;
        EXPECT_EQ(worker.Run([kept = std::move(thing), work = blocker.Work()] { work(); }, Patience(false)),
                  Outcome::Gone);
        EXPECT_FALSE(watch.expired());
    } // waits its second and leaves the stuck call behind
    blocker.gate.set_value();
    const auto end = std::chrono::steady_clock::now() + 5s;
    while (!watch.expired() && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(watch.expired());
}
