#include "transport/emulator/InferenceResult.h"
#include "transport/emulator/features/Features.h"

namespace Norvane::Transport::Emulator {

void ApplyInference(CameraModel& camera) {
    RegisterBank& bank = camera.Bank();
    const Inference inference = camera.Camera().inference;
    bank.SetInt("InferencePresent", inference != Inference::None);
    bank.SetInt("InferenceEnable", inference != Inference::None);
    bank.SetInt("InferenceNetworkTypeSelector", inference == Inference::Detection ? 1 : 0);
    ApplyInferenceChunks(camera);
}

void AddInferenceControl(FeatureBuilder& f, CameraModel& camera) {
    f.Category("InferenceControl", "The neural network on board.");
    f.HiddenRegister("InferencePresent", 0, {}, 1000);
    f.Boolean("InferenceEnable", "Whether the network looks at the images.")
        .Implemented("InferencePresent")
        .Stored()
        .InvalidatedBy({"InferencePresent"});
    f.Enumeration("InferenceNetworkTypeSelector", "What kind of network runs.")
        .Implemented("InferencePresent")
        .Stored()
        .Locked()
        .InvalidatedBy({"InferencePresent"})
        .Entry("Classification", 0, nullptr, nullptr, "One class for the whole image.")
        .Entry("Detection", 1, nullptr, nullptr, "A box around each thing found.");
    f.Float("InferenceConfidenceThreshold", "Boxes below this confidence are not reported.")
        .Implemented("InferencePresent")
        .Min(0)
        .Max(1)
        .Length(4)
        .Stored();
    f.Integer("InferenceBoundingBoxMaxCount", "The most boxes that are reported.")
        .Implemented("InferencePresent")
        .Min(1)
        .Max(static_cast<double>(kMostBoxes))
        .Stored()
        .Initial(static_cast<std::int64_t>(kMostBoxes));
    f.StringReg("InferenceNetworkName", "Name of the network.")
        .Implemented("InferencePresent")
        .ReadOnly()
        .Length(32)
        .Initial("Three shapes");
    f.IntReg("InferenceClassCount", "Classes that the network tells apart.")
        .Implemented("InferencePresent")
        .ReadOnly()
        .Expert()
        .Initial(3);
    f.FloatReg("InferenceTime", "Time that the network takes for one image.")
        .Implemented("InferencePresent")
        .ReadOnly()
        .Expert()
        .Length(4)
        .Unit("ms")
        .Initial(7.5);
    ApplyInference(camera);
}

} // namespace Norvane::Transport::Emulator
