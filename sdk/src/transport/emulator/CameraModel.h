#pragma once

#include "transport/emulator/Acquisition.h"
#include "transport/emulator/ChunkLayout.h"
#include "transport/emulator/Flash.h"
#include "transport/emulator/ImageSettings.h"
#include "transport/emulator/RegisterBank.h"
#include "transport/emulator/Settings.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace Norvane::Transport::Emulator {

/// What the camera is between power-up and power-down: its registers and the state behind them. The feature
/// groups in features/ declare the registers and give them behaviour. Owned by EmulatedCamera, whose mutex
/// guards every call.
class CameraModel {
public:
    /// `flash` holds what outlives a power cycle.
    CameraModel(const CameraSettings& camera, const InterfaceSettings& interface,
                std::shared_ptr<Flash> flash);
    CameraModel(const CameraModel&) = delete;
    CameraModel& operator=(const CameraModel&) = delete;

    RegisterBank& Bank() { return m_bank; }
    const RegisterBank& Bank() const { return m_bank; }
    const std::string& Description() const { return m_description; }
    const CameraSettings& Camera() const { return m_camera; }
    const InterfaceSettings& Interface() const { return m_interface; }
    bool IsGigE() const { return m_interface.kind == Kind::GigEVision; }
    /// Takes changed settings over while the camera runs.
    void Apply(const CameraSettings& camera, const InterfaceSettings& interface);
    void SetAddress(std::uint32_t address, std::uint32_t netmask);

    // Time.
    std::int64_t NanosecondsSincePowerUp(Clock::time_point at = Clock::now()) const;

    /// The camera's clock in ns, which the user may have reset.
    std::int64_t Timestamp(Clock::time_point at) const;
    std::string UserName() const { return m_bank.Text("DeviceUserID"); }
    /// Bytes of image data in one packet of the link.
    std::uint32_t PacketPayload() const;

    // Acquisition.
    Acquisition& Frames() { return m_acquisition; }
    Acquisition::Parameters AcquisitionParameters() const;
    void StartAcquisition();
    void StopAcquisition();
    /// To be called when an image was taken: ends the acquisition's locks after the last one.
    void AfterImage(std::uint64_t frameId, std::int64_t timestampNs);
    double ExposureUs() const;     ///< of the next image
    double ExposureTimeUs() const; ///< as set
    /// When a line that triggers are waited for gives its next edge; nothing when none is waited for.
    std::optional<Clock::time_point> NextLineEdge(Clock::time_point after) const;
    /// Gives the triggers of the edges at this time.
    void TriggerByLines(Clock::time_point edge);
    double ResultingFrameRate() const;
    double LargestFrameRate() const; ///< of the sensor at its current height, 1/s

    // Images.
    std::shared_ptr<const ImageSettings> CurrentImageSettings();
    std::size_t PayloadSize() const;
    bool ChunksActive() const;
    /// The chunks of an image, in the order of the payload.
    ChunkLayout::Chunks ChunksOf(const ImageSettings& image, std::uint64_t frameId, std::int64_t timestampNs,
                                 double seconds) const;
    std::uint64_t MacAddress() const;

    // What stays.
    Flash& Store() { return *m_flash; }
    FileStore& Files() { return m_files; }
    void LoadUserSet(std::size_t set);
    void SaveUserSet(std::size_t set);

    /// Seconds since power-up decide temperature and the like.
    double Temperature(std::size_t sensor) const;

    /// Called, with the mutex held, after whatever may wake the stream's thread.
    std::function<void()> onWake;
    void Wake() const {
        if (onWake) {
            onWake();
        }
    }
    /// Called, with the mutex held, by DeviceReset.
    std::function<void()> onReset;

private:
    void ApplySensor(bool keepFormat);
    void FollowAutomatics();
    std::optional<Clock::time_point> NextEdgeFor(std::size_t trigger, Clock::time_point after) const;
    /// The current settings without what the picture shows: enough for its bytes.
    ImageSettings CurrentImageShape() const;
    ToneSettings CurrentTone() const;

    CameraSettings m_camera;
    InterfaceSettings m_interface;
    RegisterBank m_bank;
    const std::shared_ptr<Flash> m_flash;
    FileStore m_files;
    RegisterBank::Snapshot m_factory; ///< the Default user set
    std::string m_description;
    Clock::time_point m_powerUp = Clock::now();
    Acquisition m_acquisition;
    std::shared_ptr<const ImageSettings> m_imageSettings;
    std::uint64_t m_imageGeneration = 0;
};

} // namespace Norvane::Transport::Emulator
