#pragma once

#include "transport/Transport.h"

#include <string>
#include <vector>

namespace Norvane::Transport {

/// A USB device that offers the USB3 Vision control interface (USB3 Vision 1.0, 3.3.2), as the kernel tells.
struct UsbVisionDevice {
    std::string path; ///< its folder below /sys, links resolved
    std::string controllerId;
    std::string vendor, product, serial;
    std::string speed; ///< SFNC DeviceCurrentSpeed wording, empty when unknown

    bool operator==(const UsbVisionDevice&) const = default;
};

/// The USB 3 host controllers and the cameras behind them, read from sysfs without touching a device.
struct UsbTree {
    std::vector<InterfaceRecord> controllers;
    std::vector<UsbVisionDevice> devices;
};

/// @param sysfs the folder that holds bus/usb, "/sys" unless a test has its own
UsbTree ReadUsbTree(const std::string& sysfs = "/sys");

} // namespace Norvane::Transport
