#include "core/CameraImpl.h"

#include "core/Identity.h"
#include "norvane/Log.h"

#include <utility>

namespace Norvane::Core {
namespace {

/// The longest that opening and closing keep their caller.
constexpr std::chrono::seconds kPatience{1};

std::string NameOf(const Transport::DeviceRecord& record) {
    return record.serial.empty() ? record.model : record.model + " " + record.serial;
}

} // namespace

CameraImpl::CameraImpl(Services services, const DeviceView& view)
    : m_number(view.number), m_deviceId(view.record.id), m_name(NameOf(view.record)),
      m_information(
          view,
          [this] {
              MutexLock lock(m_mutex);
              const Services now = m_services;
              lock.unlock();
              StartForceIp(now, m_deviceId, m_forcing);
          },
          [forcing = m_forcing] { return *forcing > 0; }),
      m_parameters(m_name + " stream 0", view.record.technology), m_acquisition(m_name, m_parameters),
      m_services(std::move(services)) {}

CameraImpl::~CameraImpl() {
    Shutdown();
}

bool CameraImpl::IsValid() const {
    MutexLock lock(m_mutex);
    return m_valid;
}

bool CameraImpl::IsInitialized() const {
    MutexLock lock(m_mutex);
    return m_state == State::Open && !m_lost;
}

void CameraImpl::Init() {
    const Clock::time_point deadline = Clock::now() + kPatience;
    MutexLock lock(m_mutex);
    bool attempted = false;
    while (m_state != State::Open || m_lost) {
        if (!m_valid) {
            throw Exception(Error::NotAvailable,
                            m_name + " is not connected; connect it, then open it again");
        }
        if (m_state == State::Closed && attempted) {
            throw m_failure ? *m_failure
                            : Exception(Error::Abort, m_name + " was closed while it was opened");
        }
        if (m_state == State::Closed) {
            StartOpening();
            attempted = true;
        }
        if (m_state == State::Opening) {
            m_abandoned = false;
            attempted = true;
        }
        if (m_state != State::Closed && m_changed.wait_until(lock, deadline) == std::cv_status::timeout &&
            Clock::now() >= deadline) {
            throw Exception(Error::Timeout, m_name +
                                                " did not answer within a second; opening goes on in the "
                                                "background, try again in a moment");
        }
    }
}

void CameraImpl::StartOpening() {
    const std::uint64_t attempt = ++m_attempt;
    m_abandoned = false;
    m_lost = false;
    m_failure.reset();
    if (!m_shutdown && m_services.tasks->Run([self = shared_from_this(), attempt] { self->Open(attempt); })) {
        m_state = State::Opening;
    } else {
        m_failure = Exception(Error::NotAvailable,
                              m_name + " cannot be opened because the camera system was released");
    }
}

void CameraImpl::Open(std::uint64_t attempt) {
    std::shared_ptr<Transport::ITransport> transport;
    {
        MutexLock lock(m_mutex);
        transport = m_services.transport;
    }
    std::shared_ptr<Transport::IDevice> device;
    DeviceMaps::Entry maps;
    std::optional<Exception> failure;
    try {
        if (!transport) {
            throw Exception(Error::NotAvailable, "the camera system was released");
        }
        device = transport->Open(m_deviceId);
        device->SetLostHandler([weak = weak_from_this(), attempt] {
            if (const auto self = weak.lock()) {
                self->OnLost(attempt);
            }
        });
        maps = m_maps.Connect(m_name, device);
        SetOpenedWith(device->CurrentAccess());
        if (!device->IsAlive()) {
            throw Exception(Error::Io, "it stopped answering meanwhile");
        }
    } catch (const Exception& error) {
        failure = Exception(error.GetError(), m_name + " cannot be opened: " + error.what());
    } catch (const std::exception& error) {
        failure = Exception(Error::Unknown, m_name + " cannot be opened: " + error.what());
    }
    bool kept = false;
    {
        MutexLock lock(m_mutex);
        kept = !failure && !m_abandoned && !m_lost && !m_shutdown;
        if (kept) {
            m_device = std::move(device); // closing must find the only owner
            m_current = maps;
            m_state = State::Open;
        }
    }
    if (!kept) {
        if (maps.port) {
            maps.port->Switch(nullptr);
        }
        SetOpenedWith(std::nullopt);
        device.reset();
        MutexLock lock(m_mutex);
        m_failure = failure;
        m_state = State::Closed;
    }
    m_changed.notify_all();
}

void CameraImpl::DeInit() {
    std::shared_ptr<Tasks> tasks;
    {
        MutexLock lock(m_mutex);
        m_abandoned = true;
        tasks = m_services.tasks;
    }
    if (BeginClosing(true) &&
        !(tasks && tasks->Run([self = shared_from_this()] { self->FinishClosing(); }))) {
        FinishClosing();
    }
    const Clock::time_point deadline = Clock::now() + kPatience;
    MutexLock lock(m_mutex);
    while (m_state == State::Closing && m_changed.wait_until(lock, deadline) == std::cv_status::no_timeout) {
    }
}

bool CameraImpl::BeginClosing(bool tellCamera) {
    std::shared_ptr<SwitchablePort> port;
    {
        MutexLock lock(m_mutex);
        if (m_state != State::Open) {
            return false;
        }
        m_state = State::Closing;
        tellCamera = tellCamera && !m_lost;
        port = m_current.port;
    }
    m_acquisition.End(tellCamera);
    port->Switch(nullptr);
    SetOpenedWith(std::nullopt);
    return true;
}

void CameraImpl::FinishClosing() {
    std::shared_ptr<Transport::IDevice> device;
    {
        MutexLock lock(m_mutex);
        device.swap(m_device);
    }
    device.reset();
    {
        MutexLock lock(m_mutex);
        m_state = State::Closed;
    }
    m_changed.notify_all();
}

void CameraImpl::OnLost(std::uint64_t attempt) {
    std::shared_ptr<SwitchablePort> port;
    Services services;
    {
        MutexLock lock(m_mutex);
        if (attempt != m_attempt || m_lost || m_state == State::Closed) {
            return;
        }
        m_lost = true;
        m_lossPending = true;
        m_valid = false;
        m_lostAt = Clock::now();
        services = m_services;
        if (m_state != State::Opening) {
            port = m_current.port;
        }
    }
    Log(LogLevel::Warning, m_name + " was disconnected while it was open");
    m_acquisition.Abort();
    if (port) {
        port->Switch(nullptr);
        // The thread that reports the loss may be one that closing the device waits for.
        services.tasks->Run([self = shared_from_this()] {
            if (self->BeginClosing(false)) {
                self->FinishClosing();
            }
        });
    }
    services.rescan();
}

void CameraImpl::SetOpenedWith(std::optional<Transport::Access> access) {
    m_information.Update([access](DeviceView& view) { view.openedWith = access; });
}

std::shared_ptr<Transport::IDevice> CameraImpl::Device() const {
    MutexLock lock(m_mutex);
    return m_state == State::Open && !m_lost ? m_device : nullptr;
}

GenApi::EAccessMode CameraImpl::GetAccessMode() const {
    const std::shared_ptr<Transport::IDevice> device = Device();
    if (!device) {
        return GenApi::NA;
    }
    switch (device->CurrentAccess()) {
    case Transport::Access::ReadWrite:
        return GenApi::RW;
    case Transport::Access::ReadOnly:
        return GenApi::RO;
    case Transport::Access::None:
        break;
    }
    return GenApi::NA;
}

GenApi::INodeMap& CameraImpl::GetNodeMap() {
    MutexLock lock(m_mutex);
    if (!m_current.map) {
        throw Exception(Error::NotInitialized, m_name + " was never opened, so its features are not known");
    }
    return *m_current.map;
}

std::string CameraImpl::GetUniqueID() const {
    return UniqueIdOf(m_information.Get().record);
}

void CameraImpl::BeginAcquisition() {
    const std::shared_ptr<Transport::IDevice> device = Device();
    const auto closed = [this] {
        return Exception(Error::NotInitialized, m_name + " is not open; open it before acquisition begins");
    };
    if (!device) {
        throw closed();
    }
    if (device->CurrentAccess() != Transport::Access::ReadWrite) {
        throw Exception(Error::AccessDenied, m_name + " is controlled by another program, so it cannot be "
                                                      "started here");
    }
    std::shared_ptr<GenApi::INodeMap> map;
    {
        MutexLock lock(m_mutex);
        if (m_state != State::Open || m_lost || m_device != device) {
            throw closed();
        }
        m_acquisition.Reserve();
        map = m_current.map;
    }
    m_acquisition.Begin(device, std::move(map));
}

void CameraImpl::EndAcquisition() {
    if (!m_acquisition.End(true)) {
        throw Exception(Error::NotInitialized, m_name + " is not streaming");
    }
}

ImagePtr CameraImpl::GetNextImage(std::uint64_t timeoutMs, std::uint64_t streamIndex) {
    if (streamIndex != 0) {
        throw Exception(Error::InvalidId, m_name + " has no stream " + std::to_string(streamIndex));
    }
    return m_acquisition.Next(timeoutMs);
}

void CameraImpl::RegisterEventHandler(EventHandler& handler) {
    auto* images = dynamic_cast<ImageEventHandler*>(&handler);
    if (!images) {
        throw Exception(Error::InvalidParameter, m_name + ": an event handler of a camera must be an "
                                                          "ImageEventHandler");
    }
    if (!m_acquisition.AddHandler(*images)) {
        throw Exception(Error::InvalidParameter, m_name + ": this image handler is registered already");
    }
}

void CameraImpl::UnregisterEventHandler(EventHandler& handler) {
    m_acquisition.RemoveHandler(handler);
}

bool CameraImpl::Arrive(const DeviceView& seen, Clock::time_point scanStart) {
    {
        MutexLock lock(m_mutex);
        if (m_shutdown || (m_lost && scanStart <= m_lostAt)) {
            return false;
        }
        m_valid = true;
    }
    m_information.Update([&seen](DeviceView& view) {
        const std::optional<Transport::Access> openedWith = view.openedWith;
        view = seen;
        view.openedWith = openedWith;
    });
    return true;
}

void CameraImpl::Leave() {
    std::uint64_t attempt = 0;
    {
        MutexLock lock(m_mutex);
        m_valid = false;
        attempt = m_attempt;
    }
    OnLost(attempt);
    // The removal is in the picture that this call belongs to.
    TakeLoss();
}

bool CameraImpl::TakeLoss() {
    MutexLock lock(m_mutex);
    return std::exchange(m_lossPending, false);
}

bool CameraImpl::IsHeld() const {
    const std::shared_ptr<Transport::IDevice> device = Device();
    return device && device->IsAlive();
}

void CameraImpl::Poll(std::int64_t elapsedMs) {
    std::shared_ptr<GenApi::INodeMap> map;
    {
        MutexLock lock(m_mutex);
        if (m_state != State::Open || m_lost) {
            return;
        }
        map = m_current.map;
    }
    try {
        map->Poll(elapsedMs);
        m_parameters.Map().Poll(elapsedMs);
    } catch (const std::exception& error) {
        Log(LogLevel::Debug, m_name + ": polling failed: " + error.what());
    }
}

void CameraImpl::Shutdown() {
    {
        MutexLock lock(m_mutex);
        m_shutdown = true;
        m_valid = false;
    }
    if (BeginClosing(true)) {
        FinishClosing();
    }
    MutexLock lock(m_mutex);
    m_services.transport.reset();
    m_services.tasks.reset();
    m_services.rescan = [] {};
}

} // namespace Norvane::Core
