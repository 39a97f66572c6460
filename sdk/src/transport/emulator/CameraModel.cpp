#include "transport/emulator/CameraModel.h"

#include "norvane/Exception.h"
#include "transport/emulator/DescriptionWriter.h"
#include "transport/emulator/FeatureBuilder.h"
#include "transport/emulator/features/Features.h"

#include <algorithm>
#include <cmath>

namespace Norvane::Transport::Emulator {
namespace {

constexpr double kRowTimeUs = 6.5;

/// Exposure at which the scene has its natural brightness.
double NaturalExposureUs(double frameRate) {
    return std::min(5000.0, 0.9e6 / frameRate);
}

} // namespace

CameraModel::CameraModel(const CameraSettings& camera, const InterfaceSettings& interface,
                         std::shared_ptr<Flash> flash)
    : m_camera(camera), m_interface(interface), m_bank(interface.kind == Kind::GigEVision),
      m_flash(std::move(flash)), m_files(m_flash->files) {
    DescriptionWriter xml;
    FeatureBuilder builder(m_bank, xml);
    xml.Node("Port", "Device").Add("ToolTip", "The camera's registers.");
    AddDeviceControl(builder, *this);
    AddImageFormatControl(builder, *this);
    AddAcquisitionControl(builder, *this);
    AddAnalogControl(builder, *this);
    AddUserSetControl(builder, *this);
    AddTransportLayerControl(builder, *this);
    m_description = xml.Text(camera.vendor, camera.model, "1.0.0");
    ApplySensor(false);
    m_bank.SetInt("ExposureTicks", std::lround(NaturalExposureUs(camera.frameRate) * 100.0));
    m_bank.SetReal("AcquisitionFrameRate", camera.frameRate);
    m_factory = m_bank.SaveStored();
    m_bank.SetInt("UserSetDefault", static_cast<std::int64_t>(m_flash->startSet));
    LoadUserSet(m_flash->startSet);
}

void CameraModel::LoadUserSet(std::size_t set) {
    if (set >= Flash::kUserSets) {
        throw Exception(Error::InvalidParameter, "there is no such user set");
    }
    // A set that was never saved holds what the factory put in.
    const auto& stored = m_flash->userSets[set];
    m_bank.LoadStored(set > 0 && stored ? *stored : m_factory);
    ApplySensor(true);
    if (onWake) {
        onWake();
    }
}

void CameraModel::SaveUserSet(std::size_t set) {
    if (set == 0 || set >= Flash::kUserSets) {
        throw Exception(Error::InvalidParameter, "the default set cannot be overwritten");
    }
    m_flash->userSets[set] = m_bank.SaveStored();
}

void CameraModel::ApplySensor(bool keepFormat) {
    const EmulatedFormat* format = FindEmulatedFormat(m_camera.pixelFormat);
    m_bank.SetInt("SensorWidth", m_camera.width);
    m_bank.SetInt("SensorHeight", m_camera.height);
    const bool even = m_camera.width % 2 == 0 && m_camera.height % 2 == 0;
    m_bank.SetInt("WidthStep", m_camera.width % 4 == 0 ? 4 : 1);
    m_bank.SetInt("HeightStep", m_camera.height % 2 == 0 ? 2 : 1);
    m_bank.SetInt("OffsetStep", even ? 2 : 1);
    // A colour format without a mosaic comes from a sensor that has one all the same.
    m_bank.SetInt("SensorFilter", format->IsMono()    ? 0
                                  : format->IsBayer() ? static_cast<int>(format->order) -
                                                            static_cast<int>(SampleOrder::BayerGR) + 1
                                                      : 2);
    const EmulatedFormat* current = FindEmulatedFormat(static_cast<std::uint32_t>(m_bank.Int("PixelFormat")));
    if (!keepFormat || !SensorDelivers(*this, *current)) {
        m_bank.SetInt("PixelFormat", format->pfncCode);
    }
    FitRegion(*this);
    m_bank.TouchImaging();
}

void CameraModel::Apply(const CameraSettings& camera, const InterfaceSettings& interface) {
    const CameraSettings before = m_camera;
    m_camera = camera;
    m_interface = interface;
    if (camera.width != before.width || camera.height != before.height ||
        camera.pixelFormat != before.pixelFormat) {
        ApplySensor(camera.pixelFormat == before.pixelFormat);
    }
    if (camera.frameRate != before.frameRate) {
        m_bank.SetInt("ExposureTicks",
                      std::min<std::int64_t>(m_bank.Int("ExposureTicks"),
                                             std::lround(NaturalExposureUs(camera.frameRate) * 100.0)));
        m_bank.SetReal("AcquisitionFrameRate", camera.frameRate);
        m_bank.TouchImaging();
    }
    if (camera.model != before.model || camera.vendor != before.vendor ||
        camera.userName != before.userName) {
        m_bank.SetText("DeviceModelName", camera.model);
        m_bank.SetText("DeviceVendorName", camera.vendor);
        if (camera.userName != before.userName) {
            m_bank.SetText("DeviceUserID", camera.userName);
        }
        m_bank.TouchImaging();
    }
    if (onWake) {
        onWake();
    }
}

void CameraModel::SetAddress(std::uint32_t address, std::uint32_t netmask) {
    if (m_bank.Has("GevCurrentIPAddress")) {
        m_bank.SetInt("GevCurrentIPAddress", address);
        m_bank.SetInt("GevCurrentSubnetMask", netmask);
    }
}

std::int64_t CameraModel::NanosecondsSincePowerUp(Clock::time_point at) const {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(at - m_powerUp).count();
}

std::int64_t CameraModel::Timestamp(Clock::time_point at) const {
    return std::max<std::int64_t>(0, NanosecondsSincePowerUp(at) - m_bank.Int("TimestampOffset"));
}

std::uint32_t CameraModel::PacketPayload() const {
    // Of a GigE Vision packet, IP, UDP and GVSP headers take 36 bytes; a USB transfer carries up to 64 KiB.
    return m_bank.Has("GevSCPSPacketSize") ? static_cast<std::uint32_t>(m_bank.Int("GevSCPSPacketSize")) - 36
                                           : 65536;
}

Acquisition::Parameters CameraModel::AcquisitionParameters() const {
    Acquisition::Parameters parameters;
    parameters.mode = static_cast<Acquisition::Mode>(m_bank.Int("AcquisitionMode"));
    parameters.frameCount = static_cast<std::uint64_t>(m_bank.Int("AcquisitionFrameCount"));
    parameters.burstCount = static_cast<std::uint64_t>(m_bank.Int("AcquisitionBurstFrameCount"));
    parameters.period = std::chrono::nanoseconds(std::llround(1e9 / ResultingFrameRate()));
    for (std::size_t i = 0; i < Acquisition::kTriggerKinds; ++i) {
        parameters.trigger[i] = m_bank.Int("TriggerMode", i) != 0;
    }
    parameters.triggerDelay =
        std::chrono::nanoseconds(std::llround(m_bank.Real("TriggerDelay", Acquisition::FrameStart) * 1000.0));
    return parameters;
}

void CameraModel::StartAcquisition() {
    m_acquisition.Start(Clock::now(), AcquisitionParameters());
    m_bank.SetInt("Acquiring", 1);
    m_bank.SetLocked(true);
    if (onWake) {
        onWake();
    }
}

void CameraModel::StopAcquisition() {
    m_acquisition.Stop();
    m_bank.SetInt("Acquiring", 0);
    m_bank.SetLocked(false);
    if (onWake) {
        onWake();
    }
}

void CameraModel::AfterImage(std::uint64_t, std::int64_t) {
    if (!m_acquisition.IsActive()) {
        StopAcquisition();
    }
}

double CameraModel::ExposureUs() const {
    return static_cast<double>(m_bank.Int("ExposureTicks")) / 100.0;
}

double CameraModel::LargestFrameRate() const {
    const double rows = static_cast<double>(m_bank.Int("Height") * m_bank.Int("DecimationVertical"));
    return std::min(1000.0, std::max(m_camera.frameRate, 1e6 / (rows * kRowTimeUs + 200.0)));
}

double CameraModel::ResultingFrameRate() const {
    double rate = std::min(LargestFrameRate(), 1e6 / ExposureUs());
    if (m_bank.Int("AcquisitionFrameRateEnable")) {
        rate = std::min(rate, m_bank.Real("AcquisitionFrameRate"));
    }
    if (m_bank.Int("DeviceLinkThroughputLimitMode")) {
        const double bytes = static_cast<double>(const_cast<CameraModel*>(this)->PayloadSize());
        rate = std::min(rate,
                        static_cast<double>(m_bank.Int("DeviceLinkThroughputLimit")) / std::max(1.0, bytes));
    }
    return std::max(rate, 0.01);
}

std::shared_ptr<const ImageSettings> CameraModel::CurrentImageSettings() {
    if (m_imageSettings && m_imageGeneration == m_bank.ImagingGeneration()) {
        return m_imageSettings;
    }
    auto settings = std::make_shared<ImageSettings>();
    ImageGeometry& geometry = settings->geometry;
    const auto number = [&](const char* name) { return static_cast<std::uint32_t>(m_bank.Int(name)); };
    geometry.sensorWidth = number("SensorWidth");
    geometry.sensorHeight = number("SensorHeight");
    geometry.width = number("Width");
    geometry.height = number("Height");
    geometry.offsetX = number("OffsetX");
    geometry.offsetY = number("OffsetY");
    geometry.stepX = number("BinningHorizontal") * number("DecimationHorizontal");
    geometry.stepY = number("BinningVertical") * number("DecimationVertical");
    geometry.reverseX = number("ReverseControl") & 1;
    geometry.reverseY = number("ReverseControl") & 2;
    settings->format = FindEmulatedFormat(number("PixelFormat"));
    settings->pattern = static_cast<TestPattern>(m_bank.Int("TestPattern"));
    settings->title = m_camera.model + "  " + m_camera.serial;
    double gain = ExposureUs() / NaturalExposureUs(m_camera.frameRate) *
                  std::pow(10.0, static_cast<double>(m_bank.Int("GainTenths")) / 200.0);
    gain *= m_bank.Int("BinningHorizontalMode") == 0 ? number("BinningHorizontal") : 1.0;
    gain *= m_bank.Int("BinningVerticalMode") == 0 ? number("BinningVertical") : 1.0;
    settings->tone.gain = {gain, gain, gain};
    m_imageGeneration = m_bank.ImagingGeneration();
    m_imageSettings = std::move(settings);
    return m_imageSettings;
}

std::size_t CameraModel::PayloadSize() {
    const auto settings = CurrentImageSettings();
    return settings->ImageBytes();
}

bool CameraModel::ChunksActive() const {
    return m_bank.Has("ChunkModeActive") && m_bank.Int("ChunkModeActive");
}

ChunkLayout::Chunks CameraModel::ChunksOf(const ImageSettings&, std::uint64_t, std::int64_t) const {
    return {};
}

double CameraModel::Temperature(std::size_t sensor) const {
    // A cold start that settles within minutes, and a slow breath on top.
    const double seconds = static_cast<double>(NanosecondsSincePowerUp()) * 1e-9;
    const double warm = sensor == 0 ? 46.0 : 41.0;
    return std::round(
               (warm - 14.0 * std::exp(-seconds / 240.0) + 0.6 * std::sin(seconds / 7.0 + double(sensor))) *
               10.0) /
           10.0;
}

} // namespace Norvane::Transport::Emulator
