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
void AddUserSetControl(FeatureBuilder& f, CameraModel& camera);
void AddTransportLayerControl(FeatureBuilder& f, CameraModel& camera);

/// Puts the region of interest back inside the sensor after something made the sensor's picture smaller or
/// larger.
void FitRegion(CameraModel& camera);
/// Whether the emulated sensor can deliver the format: mono sensors no colour, colour sensors one Bayer
/// phase.
bool SensorDelivers(const CameraModel& camera, const EmulatedFormat& format);

} // namespace Norvane::Transport::Emulator
