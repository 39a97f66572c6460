#pragma once

#include "norvane/EventHandlers.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <string>

/// Turns the library's interface events into signals. Made and deleted by the main window on the
/// user-interface thread; called by the library on threads of its own, so receivers get the signals queued.
class SystemEventHandlerImpl : public QObject,
                               public Norvane::InterfaceArrivalEventHandler,
                               public Norvane::InterfaceRemovalEventHandler {
    Q_OBJECT

public:
    void OnInterfaceArrival(std::string interfaceId) override;
    void OnInterfaceRemoval(std::string interfaceId) override;

signals:
    void InterfaceArrived(QString interfaceId);
    void InterfaceRemoved(QString interfaceId);
};

/// The same for cameras. The 64-bit number is narrowed to its low 32 bits, as everywhere in the viewer.
class InterfaceEventHandlerImpl : public QObject, public Norvane::InterfaceEventHandler {
    Q_OBJECT

public:
    void OnDeviceArrival(std::uint64_t serialNumber) override;
    void OnDeviceRemoval(std::uint64_t serialNumber) override;

signals:
    void DeviceArrived(int serial);
    void DeviceRemoved(int serial);
};
