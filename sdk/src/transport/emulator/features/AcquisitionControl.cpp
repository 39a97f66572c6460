#include "transport/emulator/features/Features.h"

#include "norvane/Exception.h"

#include <algorithm>

namespace Norvane::Transport::Emulator {
namespace {

constexpr double kSmallestExposureUs = 20.0, kLargestExposureUs = 10000000.0;
constexpr std::uint32_t kTriggers = Acquisition::kTriggerKinds;

/// The frame rate gives way to a longer exposure, as the sensor cannot expose two images at once.
void FitFrameRate(CameraModel& camera) {
    RegisterBank& bank = camera.Bank();
    const double largest = std::min(camera.LargestFrameRate(), 1e6 / camera.ExposureTimeUs());
    bank.SetReal("AcquisitionFrameRate", std::min(bank.Real("AcquisitionFrameRate"), largest));
}

void AddModes(FeatureBuilder& f, CameraModel& camera) {
    f.Enumeration("AcquisitionMode", "How many images one start delivers.")
        .Stored()
        .Locked()
        .Initial(0)
        .Entry("Continuous", 0, nullptr, nullptr, "Images until the acquisition is stopped.")
        .Entry("SingleFrame", 1, nullptr, nullptr, "One image.")
        .Entry("MultiFrame", 2, nullptr, nullptr, "As many images as Acquisition Frame Count says.");
    f.Command("AcquisitionStart", "Starts the acquisition.").OnWrite([&camera] {
        camera.StartAcquisition();
    });
    f.Command("AcquisitionStop", "Ends the acquisition after the current image.").OnWrite([&camera] {
        camera.StopAcquisition();
    });
    f.Command("AcquisitionAbort", "Ends the acquisition at once.").Expert().OnWrite([&camera] {
        camera.StopAcquisition();
    });
    f.Formula("ModeIsMultiFrame", "MODE = 2", {{"MODE", "AcquisitionModeReg"}});
    f.Integer("AcquisitionFrameCount", "Images of one start in multi-frame mode.")
        .Min(1)
        .Max(65535)
        .Stored()
        .Locked()
        .Initial(2)
        .Available("ModeIsMultiFrame");
    f.Integer("AcquisitionBurstFrameCount", "Images of one burst trigger.")
        .Expert()
        .Min(1)
        .Max(65535)
        .Stored()
        .Locked()
        .Initial(1);
    f.HiddenRegister("Acquiring", 0, {"AcquisitionStart", "AcquisitionStop", "AcquisitionAbort"}, 200);
    f.Formula("ParamsLocked", "(TL > 0) || (CAMERA > 0)",
              {{"TL", "TLParamsLocked"}, {"CAMERA", "Acquiring"}});
    f.Enumeration("AcquisitionStatusSelector", "Which state Acquisition Status shows.")
        .Expert()
        .Selects({"AcquisitionStatus"})
        .Entry("AcquisitionTriggerWait", 0)
        .Entry("AcquisitionActive", 1)
        .Entry("FrameTriggerWait", 2)
        .Initial(1);
    f.Boolean("AcquisitionStatus", "The selected state.")
        .ReadOnly()
        .Expert()
        .By("AcquisitionStatusSelector", 3)
        .Polled(200)
        .OnRead([&camera, &bank = f.Bank()] {
            const bool active = camera.Frames().IsActive();
            const auto parameters = camera.AcquisitionParameters();
            const bool waiting = active && !camera.Frames().Due(parameters);
            bank.SetInt("AcquisitionStatus", waiting && parameters.trigger[Acquisition::AcquisitionStart], 0);
            bank.SetInt("AcquisitionStatus", active, 1);
            bank.SetInt("AcquisitionStatus", waiting && parameters.trigger[Acquisition::FrameStart], 2);
        });
}

void AddRate(FeatureBuilder& f, CameraModel& camera) {
    RegisterBank& bank = f.Bank();
    const auto wake = [&camera] { camera.Wake(); };
    f.Boolean("AcquisitionFrameRateEnable",
              "Whether Acquisition Frame Rate decides the rate; the sensor's own pace does otherwise.")
        .Stored()
        .Initial(1)
        .OnWrite(wake);
    f.Formula("FrameRateEnabled", "ON > 0", {{"ON", "AcquisitionFrameRateEnableReg"}});
    f.FloatReg("SensorFrameRateMax", "The sensor's fastest pace at the current height.")
        .ReadOnly()
        .Guru()
        .Unit("Hz")
        .InvalidatedBy({"HeightReg", "BinningVerticalReg", "DecimationVerticalReg", "SensorHeightReg"})
        .Polled(1000)
        .OnRead([&camera, &bank] { bank.SetReal("SensorFrameRateMax", camera.LargestFrameRate()); });
    f.Formula("FrameRateMax", "(1000000.0 / EXPOSURE < SENSOR) ? 1000000.0 / EXPOSURE : SENSOR",
              {{"EXPOSURE", "ExposureTime"}, {"SENSOR", "SensorFrameRateMax"}}, "SwissKnife");
    f.Float("AcquisitionFrameRate", "Images a second.")
        .Unit("Hz")
        .Min(0.1)
        .Max("FrameRateMax")
        .Stored()
        .Available("FrameRateEnabled")
        .Element("DisplayNotation", "Fixed")
        .Element("DisplayPrecision", 3)
        .InvalidatedBy({"ExposureTimeTicks"})
        .Polled(1000)
        .Initial(30.0)
        .OnWrite([&bank, &camera, wake] {
            const double rate = bank.Real("AcquisitionFrameRate");
            if (!(rate >= 0.099 && rate <= camera.LargestFrameRate() * 1.0001)) {
                throw Exception(Error::InvalidParameter, "the frame rate is out of range");
            }
            FitFrameRate(camera);
            wake();
        });
    f.FloatReg("AcquisitionResultingFrameRate", "The rate that all settings together allow.")
        .ReadOnly()
        .Unit("Hz")
        .Polled(1000)
        .InvalidatedBy({"AcquisitionFrameRateReg", "AcquisitionFrameRateEnableReg", "ExposureTimeTicks",
                        "HeightReg", "WidthReg", "PixelFormatReg", "DeviceLinkThroughputLimitReg",
                        "DeviceLinkThroughputLimitModeReg"})
        .Element("DisplayNotation", "Fixed")
        .Element("DisplayPrecision", 3)
        .OnRead(
            [&camera, &bank] { bank.SetReal("AcquisitionResultingFrameRate", camera.ResultingFrameRate()); });
}

void AddExposure(FeatureBuilder& f, CameraModel& camera) {
    RegisterBank& bank = f.Bank();
    f.Enumeration("ExposureMode", "What ends the exposure: a time, or the next image.")
        .Stored()
        .Imaging()
        .Initial(1)
        .Entry("Off", 0)
        .Entry("Timed", 1);
    f.Formula("ExposureIsTimed", "MODE = 1", {{"MODE", "ExposureModeReg"}});
    f.Formula("ExposureIsManual", "AUTO = 0", {{"AUTO", "ExposureAutoReg"}});
    f.Formula("ExposureIsAutomatic", "AUTO <> 0", {{"AUTO", "ExposureAutoReg"}});
    f.Enumeration("ExposureAuto", "Whether the camera finds the exposure time itself.")
        .Stored()
        .Initial(0)
        .Polled(500)
        .Entry("Off", 0)
        .Entry("Once", 1)
        .Entry("Continuous", 2);
    // The register counts hundredths of a microsecond.
    bank.Add("ExposureTicks", RegisterBank::Type::Unsigned, 4,
             RegisterBank::Readable | RegisterBank::Writable | RegisterBank::Stored | RegisterBank::Imaging);
    XmlNode& ticks = f.Helper("IntReg", "ExposureTimeTicks");
    f.Locate(ticks, "ExposureTicks", 4, "RW");
    ticks.Add("pInvalidator", "UserSetLoad").Add("pInvalidator", "ExposureAutoReg").Add("PollingTime", 1000);
    XmlNode& converter = f.Helper("Converter", "ExposureTimeConverter");
    converter.Add("FormulaTo", "FROM * 100")
        .Add("FormulaFrom", "TO / 100")
        .Add("pValue", "ExposureTimeTicks")
        .Add("Slope", "Increasing");
    f.Float("ExposureTime", "Time for which each image is exposed.")
        .Unit("us")
        .Min(kSmallestExposureUs)
        .Max(kLargestExposureUs)
        .Representation("Logarithmic")
        .Element("DisplayNotation", "Fixed")
        .Element("DisplayPrecision", 2)
        .Available("ExposureIsTimed")
        .Element("pIsLocked", "ExposureIsAutomatic")
        .ValueFrom("ExposureTimeConverter");
    bank.SetInt("ExposureTicks", 500000);
    bank.OnWrite("ExposureTicks", [&camera](std::size_t) {
        const double exposure = camera.ExposureTimeUs();
        if (exposure < kSmallestExposureUs || exposure > kLargestExposureUs) {
            throw Exception(Error::InvalidParameter, "the exposure time is out of range");
        }
        FitFrameRate(camera);
        camera.Wake();
    });
}

void AddTriggers(FeatureBuilder& f, CameraModel& camera) {
    RegisterBank& bank = f.Bank();
    const auto wake = [&camera] { camera.Wake(); };
    f.Enumeration("TriggerSelector", "Which trigger the features below set.")
        .Initial(1)
        .Entry("AcquisitionStart", Acquisition::AcquisitionStart)
        .Entry("FrameStart", Acquisition::FrameStart)
        .Entry("FrameBurstStart", Acquisition::FrameBurstStart)
        .Selects({"TriggerMode", "TriggerSoftware", "TriggerSource", "TriggerActivation", "TriggerOverlap",
                  "TriggerDelay"});
    f.Enumeration("TriggerMode", "Whether the selected trigger is waited for.")
        .Stored()
        .By("TriggerSelector", kTriggers)
        .Entry("Off", 0)
        .Entry("On", 1)
        .OnWrite(wake);
    f.Enumeration("TriggerSource", "Where the selected trigger comes from.")
        .Stored()
        .By("TriggerSelector", kTriggers)
        .Entry("Software", 0)
        .Entry("Line0", 1)
        .Entry("Line1", 2)
        .OnWrite(wake);
    f.Formula("TriggerIsSoftware", "(MODE = 1) && (SOURCE = 0)",
              {{"MODE", "TriggerModeReg"}, {"SOURCE", "TriggerSourceReg"}});
    f.Formula("TriggerIsLine", "(SOURCE = 1) || (SOURCE = 2)", {{"SOURCE", "TriggerSourceReg"}});
    f.Command("TriggerSoftware", "Gives the selected trigger.")
        .Available("TriggerIsSoftware")
        .OnWrite([&bank, &camera, wake] {
            const auto kind = static_cast<std::size_t>(bank.Int("TriggerSelector"));
            if (kind < kTriggers && bank.Int("TriggerMode", kind) && bank.Int("TriggerSource", kind) == 0) {
                camera.Frames().Trigger(static_cast<Acquisition::TriggerKind>(kind), Clock::now(),
                                        camera.AcquisitionParameters());
                CountTrigger(camera);
                wake();
            }
        });
    f.Enumeration("TriggerActivation", "Which edge of the line triggers.")
        .Stored()
        .By("TriggerSelector", kTriggers)
        .Available("TriggerIsLine")
        .Entry("RisingEdge", 0)
        .Entry("FallingEdge", 1)
        .Entry("AnyEdge", 2);
    f.Enumeration("TriggerOverlap", "Whether a trigger may come during the readout of the image before.")
        .Expert()
        .Stored()
        .By("TriggerSelector", kTriggers)
        .Entry("Off", 0)
        .Entry("ReadOut", 1)
        .Initial(1);
    f.Float("TriggerDelay", "Time from the trigger to the exposure.")
        .Expert()
        .Unit("us")
        .Min(0)
        .Max(1000000)
        .Stored()
        .By("TriggerSelector", kTriggers)
        .Initial(0.0)
        .OnWrite(wake);
}

} // namespace

void AddAcquisitionControl(FeatureBuilder& f, CameraModel& camera) {
    f.Category("AcquisitionControl", "When images are taken.");
    AddModes(f, camera);
    AddRate(f, camera);
    AddExposure(f, camera);
    AddTriggers(f, camera);
}

} // namespace Norvane::Transport::Emulator
