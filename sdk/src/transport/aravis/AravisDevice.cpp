#include "transport/aravis/AravisDevice.h"

#include "norvane/Log.h"
#include "transport/aravis/AravisStream.h"
#include "transport/aravis/GvcpSocket.h"
#include "transport/aravis/RegisterAccess.h"

#include <arpa/inet.h>
#include <cstring>

namespace Norvane::Transport {
namespace {

constexpr auto kWatchPeriod = std::chrono::milliseconds(500);
constexpr int kMissedAnswersUntilLost = 3;
constexpr auto kOpenLimit = std::chrono::milliseconds(20000);

GObjectPtr<GInetAddress> MakeInetAddress(std::uint32_t address) {
    const std::uint32_t bytes = htonl(address);
    return GObjectPtr<GInetAddress>(g_inet_address_new_from_bytes(reinterpret_cast<const guint8*>(&bytes),
                                                                  G_SOCKET_FAMILY_IPV4)); // copies the bytes
}

/// What the worker found when it opened the device.
struct Opening {
    std::shared_ptr<OpenedDevice> device;
    std::string description;
    bool controller = true;
};

} // namespace

AravisDevice::AravisDevice(const DeviceTarget& target)
    : m_target(target), m_life(std::make_shared<DeviceLife>(target.label)),
      m_worker(std::make_shared<DeviceWorker>()) {
    if (!IsThere(m_target)) {
        throw Exception(Error::Timeout, m_target.label + ": cannot be opened, it does not answer; check its "
                                                         "power, its cable and that its address fits the "
                                                         "adapter's network");
    }
    const auto opening = std::make_shared<Opening>();
    auto work = [opening, life = m_life, where = m_target] {
        auto watch = std::make_shared<ControlWatch>(life);
        GErrorHolder error;
        ArvDevice* device = nullptr;
        if (where.technology == Technology::GigEVision) {
            const auto adapterAddress = MakeInetAddress(where.adapterAddress);
            const auto deviceAddress = MakeInetAddress(where.deviceAddress);
            device = arv_gv_device_new(adapterAddress.get(), deviceAddress.get(), error.Out());
        } else {
            device = arv_uv_device_new_from_guid(where.guid.c_str(), error.Out());
        }
        GObjectPtr<ArvDevice> owner(device);
        if (!device || error) {
            throw Exception(error.Code() == Error::InvalidId ? Error::Io : error.Code(),
                            where.label + ": cannot be opened: " + error.Text());
        }
        auto opened = std::make_shared<OpenedDevice>(std::move(owner), std::move(watch));
        if (where.technology == Technology::GigEVision) {
            opening->controller = arv_gv_device_is_controller(ARV_GV_DEVICE(device));
            if (opening->controller) {
                NegotiatePacketSize(device, where);
            }
        }
        std::size_t size = 0;
        if (const char* text = arv_device_get_genicam_xml(device, &size)) {
            opening->description.assign(text, size);
        }
        opening->device = std::move(opened);
    };
    Run("opening", std::move(work), kOpenLimit);
    m_opened = std::move(opening->device);
    m_description = std::move(opening->description);
    m_access = opening->controller ? Access::ReadWrite : Access::ReadOnly;
    if (m_access == Access::ReadOnly) {
        Log(LogLevel::Info, m_target.label + ": another program controls it, so it is opened for reading");
    }
    m_life->AddWaker([worker = std::weak_ptr(m_worker)] {
        if (const auto alive = worker.lock()) {
            alive->Interrupt();
        }
    });
    m_watcher = std::thread([life = m_life, where = m_target] {
        int missed = 0;
        while (!life->WaitForEnd(kWatchPeriod)) {
            missed = IsThere(where) ? 0 : missed + 1;
            if (missed >= kMissedAnswersUntilLost) {
                life->MarkLost("it stopped answering");
            }
        }
        life->TellWhenLost();
    });
}

AravisDevice::~AravisDevice() {
    m_life->Close();
    if (m_watcher.joinable()) {
        if (m_watcher.get_id() == std::this_thread::get_id()) {
            m_watcher.detach(); // closed from its own lost handler
        } else {
            m_watcher.join();
        }
    }
    m_worker->Post([opened = std::move(m_opened)] {});
}

GenApi::EAccessMode AravisDevice::GetAccessMode() const {
    if (m_life->IsLost()) {
        return GenApi::NA;
    }
    return m_access == Access::ReadWrite ? GenApi::RW : GenApi::RO;
}

void AravisDevice::Run(const std::string& what, std::function<void()> work,
                       std::chrono::milliseconds maximum) {
    if (m_life->IsLost()) {
        throw Exception(Error::NotAvailable, m_target.label + ": " + what +
                                                 " is not possible, the connection is lost; open the camera "
                                                 "again when it is back");
    }
    DeviceWorker::Patience patience;
    patience.maximum = maximum;
    patience.isThere = [this] { return IsThere(m_target); };
    DeviceWorker::Outcome outcome = DeviceWorker::Outcome::Done;
    try {
        outcome = m_worker->Run(std::move(work), patience);
    } catch (const Exception& error) {
        if (error.GetError() == Error::NotAvailable) { // Aravis itself found that the device has gone
            m_life->MarkLost(error.what());
        }
        throw;
    }
    switch (outcome) {
    case DeviceWorker::Outcome::Done:
        return;
    case DeviceWorker::Outcome::Gone:
        m_life->MarkLost("no answer while " + what);
        throw Exception(Error::Timeout, m_target.label + ": " + what + " failed: the camera does not answer");
    case DeviceWorker::Outcome::Interrupted:
        throw Exception(Error::NotAvailable,
                        m_target.label + ": " + what + " was cut short, the connection is lost");
    case DeviceWorker::Outcome::TimedOut:
        throw Exception(Error::Timeout,
                        m_target.label + ": " + what + " took too long, though the camera is there");
    }
}

namespace {

std::chrono::milliseconds TransferLimit(std::int64_t length) {
    return std::chrono::milliseconds(10000 + length / 50); // slower than any link by far
}

void CheckSpan(const DeviceTarget& target, std::int64_t address, std::int64_t length) {
    const std::int64_t end = target.technology == Technology::GigEVision ? std::int64_t{1} << 32 : INT64_MAX;
    if (address < 0 || length < 0 || address > end - length) {
        throw Exception(Error::InvalidAddress, target.label + ": there are no " + std::to_string(length) +
                                                   " bytes at address " + std::to_string(address));
    }
}

} // namespace

void AravisDevice::Read(void* buffer, std::int64_t address, std::int64_t length) {
    CheckSpan(m_target, address, length);
    if (length == 0) {
        return;
    }
    const auto bytes = std::make_shared<std::vector<std::uint8_t>>();
    Run(
        "reading " + FormatRegister(static_cast<std::uint64_t>(address)),
        [opened = m_opened, bytes, address, length, label = m_target.label] {
            *bytes = ReadBytes(opened->Get(), label, static_cast<std::uint64_t>(address),
                               static_cast<std::size_t>(length));
        },
        TransferLimit(length));
    std::memcpy(buffer, bytes->data(), bytes->size());
}

void AravisDevice::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    CheckSpan(m_target, address, length);
    const std::string what = "writing " + FormatRegister(static_cast<std::uint64_t>(address));
    if (m_access != Access::ReadWrite) {
        throw Exception(Error::AccessDenied, m_target.label + ": " + what +
                                                 " is not possible, another program controls the camera");
    }
    if (length == 0) {
        return;
    }
    const auto* first = static_cast<const std::uint8_t*>(buffer);
    Run(
        what,
        [opened = m_opened, address, label = m_target.label,
         bytes = std::vector<std::uint8_t>(first, first + length)] {
            WriteBytes(opened->Get(), label, static_cast<std::uint64_t>(address), bytes);
        },
        TransferLimit(length));
}

std::unique_ptr<IStream> AravisDevice::OpenStream(const StreamSettings& settings) {
    if (m_access != Access::ReadWrite) {
        throw Exception(Error::AccessDenied, m_target.label + ": cannot stream, another program controls it");
    }
    const auto core = std::make_shared<StreamCore>(m_target, settings);
    try {
        Run(
            "preparing a stream", [opened = m_opened, core] { core->Start(opened, core); }, kOpenLimit);
    } catch (...) {
        m_worker->Post([core] { core->Stop(); }); // it may have begun and come about later
        throw;
    }
    return std::make_unique<AravisStream>(core, m_worker, m_life);
}

void AravisDevice::SetLostHandler(std::function<void()> handler) {
    m_life->SetLostHandler(std::move(handler));
}

} // namespace Norvane::Transport
