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
    AddLutControl(builder, *this);
    AddDigitalIOControl(builder, *this);
    AddCounterAndTimerControl(builder, *this);
    AddEventControl(builder, *this);
    AddChunkDataControl(builder, *this);
    AddInferenceControl(builder, *this);
    AddFileAccessControl(builder, *this);
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
    Wake();
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
    m_bank.SetInt("SensorFilter", format->IsMono() || format->IsBayer() ? format->ColorFilter() : 2);
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
    if (camera.inference != before.inference) {
        ApplyInference(*this);
    }
    if (camera.fileBufferSize != before.fileBufferSize ||
        camera.fileLengthWritable != before.fileLengthWritable) {
        ApplyFileSettings(*this);
    }
    // The factory's set goes with the file: loading it must not bring the former file's values back.
    if (camera.frameRate != before.frameRate || camera.pixelFormat != before.pixelFormat ||
        camera.inference != before.inference) {
        for (const char* name : {"AcquisitionFrameRate", "ExposureTicks", "PixelFormat", "InferenceEnable",
                                 "InferenceNetworkTypeSelector", "ChunkEnable", "ChunkModeActive"}) {
            m_factory[name] = m_bank.Bytes(name);
        }
    }
    Wake();
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
    m_acquisition.Start(Clock::now());
    m_bank.SetInt("Acquiring", 1);
    m_bank.SetLocked(true);
    Wake();
}

void CameraModel::StopAcquisition() {
    m_acquisition.Stop();
    m_bank.SetInt("Acquiring", 0);
    m_bank.SetLocked(false);
    Wake();
}

void CameraModel::AfterImage(std::uint64_t frameId, std::int64_t timestampNs) {
    const bool last = !m_acquisition.IsActive();
    CountImage(*this);
    NoteEvents(*this, frameId, timestampNs, last);
    FollowAutomatics();
    if (last) {
        StopAcquisition();
    }
}

void CameraModel::FollowAutomatics() {
    // Each image brings the setting a good part nearer to the scene's natural look; one close to it is there.
    const auto approach = [](double from, double to) {
        const double next = from + (to - from) * 0.5;
        return std::abs(next - to) < 0.02 * to + 0.05 ? to : next;
    };
    const auto follow = [&](const char* automatic, auto&& step) {
        const std::int64_t mode = m_bank.Int(automatic);
        if (mode != 0 && step() && mode == 1) {
            m_bank.SetInt(automatic, 0);
        }
    };
    follow("ExposureAuto", [&] {
        const double wanted = NaturalExposureUs(m_camera.frameRate);
        m_bank.SetInt("ExposureTicks", std::lround(approach(ExposureTimeUs(), wanted) * 100.0));
        return std::abs(ExposureTimeUs() - wanted) < 0.01;
    });
    follow("GainAuto", [&] {
        m_bank.SetInt("GainTenths", m_bank.Int("GainTenths") / 2);
        return m_bank.Int("GainTenths") == 0;
    });
    follow("BalanceWhiteAuto", [&] {
        bool balanced = true;
        for (std::size_t i = 0; i < 3; ++i) {
            m_bank.SetReal("BalanceRatio", approach(m_bank.Real("BalanceRatio", i), 1.0), i);
            balanced = balanced && m_bank.Real("BalanceRatio", i) == 1.0;
        }
        return balanced;
    });
}

double CameraModel::ExposureTimeUs() const {
    return static_cast<double>(m_bank.Int("ExposureTicks")) / 100.0;
}

double CameraModel::ExposureUs() const {
    return m_bank.Int("ExposureMode") == 0 ? 1e6 / ResultingFrameRate() : ExposureTimeUs();
}

std::optional<Clock::time_point> CameraModel::NextEdgeFor(std::size_t trigger,
                                                          Clock::time_point after) const {
    const std::int64_t line = m_bank.Int("TriggerSource", trigger) - 1;
    if (!m_bank.Int("TriggerMode", trigger) || line < 0) {
        return std::nullopt;
    }
    // The wave at a line rises at each odd multiple of its half period and falls at each even one.
    const std::int64_t half = kLineHalfPeriodNs[line];
    std::int64_t next = NanosecondsSincePowerUp(after) / half + 1;
    const std::int64_t activation = m_bank.Int("TriggerActivation", trigger); // 0 rising, 1 falling, 2 any
    const bool wantsOdd =
        (activation == 0) != (m_bank.Int("LineInverter", static_cast<std::size_t>(line)) != 0);
    if (activation != 2 && (next % 2 == 1) != wantsOdd) {
        ++next;
    }
    return m_powerUp + std::chrono::nanoseconds(next * half);
}

std::optional<Clock::time_point> CameraModel::NextLineEdge(Clock::time_point after) const {
    std::optional<Clock::time_point> next;
    for (std::size_t i = 0; i < Acquisition::kTriggerKinds && m_acquisition.IsActive(); ++i) {
        if (const auto edge = NextEdgeFor(i, after)) {
            next = next ? std::min(*next, *edge) : *edge;
        }
    }
    return next;
}

void CameraModel::TriggerByLines(Clock::time_point edge) {
    for (std::size_t i = 0; i < Acquisition::kTriggerKinds; ++i) {
        if (NextEdgeFor(i, edge - std::chrono::nanoseconds(1)) == edge) {
            m_acquisition.Trigger(static_cast<Acquisition::TriggerKind>(i), edge, AcquisitionParameters());
        }
    }
}

double CameraModel::LargestFrameRate() const {
    const double rows = static_cast<double>(m_bank.Int("Height") * m_bank.Int("DecimationVertical"));
    return std::min(1000.0, std::max(m_camera.frameRate, 1e6 / (rows * kRowTimeUs + 200.0)));
}

double CameraModel::ResultingFrameRate() const {
    double rate = LargestFrameRate();
    if (m_bank.Int("ExposureMode") != 0) {
        rate = std::min(rate, 1e6 / ExposureTimeUs());
    }
    if (m_bank.Int("AcquisitionFrameRateEnable")) {
        rate = std::min(rate, m_bank.Real("AcquisitionFrameRate"));
    }
    if (m_bank.Int("DeviceLinkThroughputLimitMode")) {
        const double bytes = static_cast<double>(PayloadSize());
        rate = std::min(rate,
                        static_cast<double>(m_bank.Int("DeviceLinkThroughputLimit")) / std::max(1.0, bytes));
    }
    return std::max(rate, 0.01);
}

ImageSettings CameraModel::CurrentImageShape() const {
    ImageSettings settings;
    ImageGeometry& geometry = settings.geometry;
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
    settings.format = FindEmulatedFormat(number("PixelFormat"));
    return settings;
}

std::shared_ptr<const ImageSettings> CameraModel::CurrentImageSettings() {
    if (m_imageSettings && m_imageGeneration == m_bank.ImagingGeneration()) {
        return m_imageSettings;
    }
    auto settings = std::make_shared<ImageSettings>(CurrentImageShape());
    settings->pattern = static_cast<TestPattern>(m_bank.Int("TestPattern"));
    settings->title = m_camera.model + "  " + m_camera.serial;
    settings->tone = CurrentTone();
    m_imageGeneration = m_bank.ImagingGeneration();
    m_imageSettings = std::move(settings);
    return m_imageSettings;
}

ToneSettings CameraModel::CurrentTone() const {
    ToneSettings tone;
    const auto decibels = [&](std::size_t index) {
        return static_cast<double>(m_bank.Int("GainTenths", index)) / 10.0;
    };
    double common = ExposureUs() / NaturalExposureUs(m_camera.frameRate);
    common *=
        m_bank.Int("BinningHorizontalMode") == 0 ? static_cast<double>(m_bank.Int("BinningHorizontal")) : 1.0;
    common *=
        m_bank.Int("BinningVerticalMode") == 0 ? static_cast<double>(m_bank.Int("BinningVertical")) : 1.0;
    const bool color = m_bank.Int("SensorFilter") != 0;
    for (std::size_t i = 0; i < 3; ++i) {
        tone.gain[i] = common * std::pow(10.0, (decibels(0) + (color ? decibels(i + 1) : 0.0)) / 20.0) *
                       (color ? m_bank.Real("BalanceRatio", i) : 1.0);
    }
    tone.black = m_bank.Real("BlackLevel") / 100.0;
    tone.gamma = m_bank.Int("GammaEnable") ? m_bank.Real("Gamma") : 1.0;
    if (m_bank.Int("LUTEnable")) {
        tone.lut.resize(kLutEntries);
        for (std::size_t i = 0; i < kLutEntries; ++i) {
            tone.lut[i] = static_cast<std::uint16_t>(std::min<std::int64_t>(m_bank.Int("LUTTable", i), 4095) *
                                                     65535 / 4095);
        }
    }
    return tone;
}

std::size_t CameraModel::PayloadSize() const {
    // Nothing of the exposure may enter here: without a set one it is the frame's time, which a limit of the
    // link derives from the payload.
    const ImageSettings shape = CurrentImageShape();
    return shape.ImageBytes() +
           (ChunksActive() ? ChunkLayout::Size(BuildChunks(*this, shape, {0, 0, 0.0, 0.0})) : 0);
}

bool CameraModel::ChunksActive() const {
    return m_bank.Int("ChunkModeActive") != 0;
}

ChunkLayout::Chunks CameraModel::ChunksOf(const ImageSettings& image, std::uint64_t frameId,
                                          std::int64_t timestampNs, double seconds) const {
    return BuildChunks(*this, image, {frameId, timestampNs, seconds, ExposureUs()});
}

std::uint64_t CameraModel::MacAddress() const {
    return 0x020000000000U | (HashOf(m_camera.serial) & 0xFFFFFFFFFFU);
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
