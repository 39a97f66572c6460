#include "EventHandlerImpl.h"

#include <QCoreApplication>
#include <QStringList>
#include <QThread>
#include <QVector>

#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(EventBridgeTest, EventsOfOtherThreadsArriveQueuedAndConverted) {
    SystemEventHandlerImpl interfaces;
    InterfaceEventHandlerImpl devices;
    QObject receiver;
    QStringList names;
    QVector<int> serials;
    bool ownThread = true;
    const auto note = [&](const QString& prefix) {
        return [&, prefix](const QString& id) {
            names << prefix + id;
            ownThread &= QThread::currentThread() == receiver.thread();
        };
    };
    QObject::connect(&interfaces, &SystemEventHandlerImpl::InterfaceArrived, &receiver, note("+"));
    QObject::connect(&interfaces, &SystemEventHandlerImpl::InterfaceRemoved, &receiver, note("-"));
    QObject::connect(&devices, &InterfaceEventHandlerImpl::DeviceArrived, &receiver,
                     [&](int serial) { serials << serial; });
    QObject::connect(&devices, &InterfaceEventHandlerImpl::DeviceRemoved, &receiver,
                     [&](int serial) { serials << serial; });

    std::thread([&] {
        interfaces.OnInterfaceArrival("K\xC3\xB6ln");
        interfaces.OnInterfaceRemoval("eth0");
        devices.OnDeviceArrival(21034567);
        devices.OnDeviceRemoval(0x80000001ULL);
        devices.OnDeviceRemoval(0x500000002ULL);
    }).join();
    EXPECT_TRUE(names.isEmpty());
    QCoreApplication::processEvents();
    EXPECT_EQ(names, (QStringList{QString::fromUtf8("+K\xC3\xB6ln"), "-eth0"}));
    EXPECT_EQ(serials, (QVector<int>{21034567, -2147483647, 2}));
    EXPECT_TRUE(ownThread);
}

} // namespace
