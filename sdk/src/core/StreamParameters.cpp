#include "core/StreamParameters.h"

#include "core/Descriptions.h"
#include "core/InformationMap.h"

#include <algorithm>
#include <utility>

namespace Norvane::Core {
namespace {

using Transport::StreamStatistics;
using Transport::Technology;

constexpr std::int64_t kManual = 0;
constexpr std::int64_t kLargestBufferCount = 1000;
constexpr std::uint64_t kSmallestAutomaticCount = 10;
/// What automatic buffering covers: a quarter of a second in which the program does not run, within a bound
/// of memory.
constexpr double kAutomaticSeconds = 0.25;
constexpr std::uint64_t kAutomaticBytes = 256ULL << 20U;

std::uint64_t AutomaticCount(std::uint64_t payloadSize, double imagesPerSecond) {
    const auto wanted = static_cast<std::uint64_t>(
        std::clamp(imagesPerSecond * kAutomaticSeconds, 0.0, static_cast<double>(kLargestBufferCount)));
    const std::uint64_t fitting = payloadSize == 0 ? kSmallestAutomaticCount : kAutomaticBytes / payloadSize;
    return std::max(kSmallestAutomaticCount, std::min(wanted, fitting));
}

} // namespace

StreamParameters::StreamParameters(const std::string& streamId, Technology technology) {
    BuildPort(streamId, technology);
    GenApi::NodeMapOptions options;
    options.deviceName = streamId;
    m_map = GenApi::CreateNodeMap(kStreamParametersXml, m_port, options);
}

void StreamParameters::BuildPort(const std::string& streamId, Technology technology) {
    const bool gev = technology == Technology::GigEVision;
    m_port->AddText(0x1000, kTextLength, [streamId] { return streamId; });
    m_port->AddNumber(0x8000, [gev]() -> std::int64_t { return gev ? 0 : 1; });
    m_port->AddNumber(0x8008, [gev]() -> std::int64_t { return gev; });
    m_port->AddNumber(0x8010, [this]() -> std::int64_t {
        MutexLock lock(m_mutex);
        return m_stream != nullptr;
    });
    AddSetting(0x8018, m_countMode);
    AddSetting(0x8020, m_countManual);
    m_port->AddNumber(0x8028, [this] { return m_countResult.load(); });
    m_port->AddNumber(0x8030, [] { return kLargestBufferCount; });
    AddSetting(0x8038, m_handling);
    AddStatistic(0x8040, &StreamStatistics::deliveredImages);
    AddStatistic(0x8048, &StreamStatistics::corruptImages);
    AddStatistic(0x8050, &StreamStatistics::underruns);
    m_port->AddNumber(0x8058, [this] {
        const Occupancy now = CurrentOccupancy();
        return std::max<std::int64_t>(0, m_countResult - now.waiting - now.held);
    });
    m_port->AddNumber(0x8060, [this] { return CurrentOccupancy().waiting; });
    AddSetting(0x8068, m_resend);
    AddSetting(0x8070, m_resendTimeoutMs);
    AddStatistic(0x8078, &StreamStatistics::totalPackets);
    AddStatistic(0x8080, &StreamStatistics::missedPackets);
    AddStatistic(0x8088, &StreamStatistics::resendRequests);
    AddStatistic(0x8090, &StreamStatistics::resendPackets);
}

void StreamParameters::AddSetting(std::int64_t address, std::atomic<std::int64_t>& value) {
    m_port->AddNumber(
        address, [&value] { return value.load(); }, [&value](std::int64_t wanted) { value = wanted; });
}

void StreamParameters::AddStatistic(std::int64_t address, std::uint64_t StreamStatistics::*field) {
    m_port->AddNumber(address, [this, field] { return static_cast<std::int64_t>(Statistics().*field); });
}

StreamStatistics StreamParameters::Statistics() const {
    MutexLock lock(m_mutex);
    return m_stream ? m_stream->Statistics() : m_last;
}

StreamParameters::Occupancy StreamParameters::CurrentOccupancy() const {
    MutexLock lock(m_mutex);
    return m_occupancy ? m_occupancy() : Occupancy{};
}

Transport::StreamSettings StreamParameters::Settings(std::uint64_t payloadSize,
                                                     double imagesPerSecond) const {
    Transport::StreamSettings settings;
    settings.payloadSize = payloadSize;
    settings.bufferCount =
        static_cast<std::uint32_t>(m_countMode == kManual ? static_cast<std::uint64_t>(m_countManual)
                                                          : AutomaticCount(payloadSize, imagesPerSecond));
    settings.packetResend = m_resend != 0;
    settings.resendTimeoutMs = static_cast<std::uint32_t>(m_resendTimeoutMs);
    return settings;
}

void StreamParameters::Attach(const Transport::IStream& stream, std::uint32_t bufferCount,
                              std::function<Occupancy()> occupancy) {
    {
        MutexLock lock(m_mutex);
        m_stream = &stream;
        m_occupancy = std::move(occupancy);
    }
    m_countResult = bufferCount;
    Invalidate("StreamIsGrabbingReg");
    Invalidate("StreamBufferCountResultReg");
}

void StreamParameters::Detach() {
    {
        MutexLock lock(m_mutex);
        if (!m_stream) {
            return;
        }
        m_last = m_stream->Statistics();
        m_stream = nullptr;
        m_occupancy = nullptr;
    }
    m_countResult = 0;
    Invalidate("StreamIsGrabbingReg");
    Invalidate("StreamBufferCountResultReg");
}

void StreamParameters::Invalidate(const char* node) const {
    if (GenApi::INode* found = m_map->GetNode(node)) {
        found->InvalidateNode();
    }
}

} // namespace Norvane::Core
