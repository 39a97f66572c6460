#pragma once

#include "transport/emulator/CameraModel.h"
#include "transport/emulator/FeatureBuilder.h"

namespace Norvane::Transport::Emulator {

// The feature groups of the emulated camera, by the chapters of the GenICam Standard Features Naming
// Convention (SFNC 2.7). Each declares its part of the description and gives the registers their behaviour.
// The behaviours run with the camera's mutex held and live as long as the model.

void AddDeviceControl(FeatureBuilder& f, CameraModel& camera);
void AddImageFormatControl(FeatureBuilder& f, CameraModel& camera);
void AddAcquisitionControl(FeatureBuilder& f, CameraModel& camera);
void AddAnalogControl(FeatureBuilder& f, CameraModel& camera);
void AddLutControl(FeatureBuilder& f, CameraModel& camera);
void AddDigitalIOControl(FeatureBuilder& f, CameraModel& camera);
void AddCounterAndTimerControl(FeatureBuilder& f, CameraModel& camera);
void AddEventControl(FeatureBuilder& f, CameraModel& camera);
void AddInferenceControl(FeatureBuilder& f, CameraModel& camera);
void AddChunkDataControl(FeatureBuilder& f, CameraModel& camera);
void AddFileAccessControl(FeatureBuilder& f, CameraModel& camera);
void AddUserSetControl(FeatureBuilder& f, CameraModel& camera);
void AddTransportLayerControl(FeatureBuilder& f, CameraModel& camera);

/// The square waves at the two inputs, which stand for whatever is connected: half a period each.
inline constexpr std::int64_t kLineHalfPeriodNs[] = {500000000, 2000000000};

/// Entries of the look-up table, 12-bit values.
inline constexpr std::uint32_t kLutEntries = 1024;

// What the description file says to a group, at power-up and whenever it changes.
void ApplyInference(CameraModel& camera);
void ApplyInferenceChunks(CameraModel& camera);
void ApplyFileSettings(CameraModel& camera);

// What an image does to a group.
void CountImage(CameraModel& camera);
void CountTrigger(CameraModel& camera);
void NoteEvents(CameraModel& camera, std::uint64_t frameId, std::int64_t timestampNs, bool last);
bool TimerIsActive(CameraModel& camera, std::size_t timer);

/// What an image's chunks tell of its making. `timestampNs` is the camera's clock, `seconds` the scene's.
struct Exposed {
    std::uint64_t frameId;
    std::int64_t timestampNs;
    double seconds;
    double exposureUs;
};

/// The chunks of an image in the order of the payload.
ChunkLayout::Chunks BuildChunks(const CameraModel& camera, const ImageSettings& image,
                                const Exposed& exposed);

/// Puts the region of interest back inside the sensor after something made the sensor's picture smaller or
/// larger.
void FitRegion(CameraModel& camera);
/// Whether the emulated sensor can deliver the format: mono sensors no colour, colour sensors one Bayer
/// phase.
bool SensorDelivers(const CameraModel& camera, const EmulatedFormat& format);

} // namespace Norvane::Transport::Emulator
