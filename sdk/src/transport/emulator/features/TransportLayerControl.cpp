#include "transport/emulator/features/Features.h"

namespace Norvane::Transport::Emulator {

void AddTransportLayerControl(FeatureBuilder& f, CameraModel& camera) {
    RegisterBank& bank = f.Bank();
    f.Category("TransportLayerControl", "What goes over the link.");
    f.Integer("PayloadSize", "Bytes of one image with all that is sent along.")
        .ReadOnly()
        .Expert()
        .Unit("B")
        .Length(8)
        .Polled(1000)
        .InvalidatedBy({"WidthReg", "HeightReg", "PixelFormatReg"})
        .OnRead([&bank, &camera] {
            bank.SetInt("PayloadSize", static_cast<std::int64_t>(camera.PayloadSize()));
        });
    f.Integer("TLParamsLocked", "Set by the host while it streams: what would alter the payload is locked.")
        .Invisible()
        .Min(0)
        .Max(1)
        .Element("Value", "0");
}

} // namespace Norvane::Transport::Emulator
