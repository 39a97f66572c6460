#include "transport/emulator/features/Features.h"

#include <cstdlib>
#include <string>

namespace Norvane::Transport::Emulator {
namespace {

enum Event : std::size_t { ExposureEnd = 0, FrameEnd = 1, AcquisitionEnd = 2, kEvents = 3 };

void AddEventData(FeatureBuilder& f, const char* name, const char* id, Event event, const char* toolTip) {
    const std::string base = std::string("Event") + name;
    const std::string condition = base + "IsOn";
    f.Category((base + "Data").c_str(), toolTip, "EventControl", "Expert");
    // The notification of this event, whichever one the selector shows.
    XmlNode& flag = f.Helper("IntReg", condition);
    flag.Add("Visibility", "Invisible");
    flag.Add("Address", HexText(f.Bank().Address("EventNotification") + 4 * event))
        .Add("Length", 4)
        .Add("AccessMode", "RO")
        .Add("pPort", "Device")
        .Add("pInvalidator", "EventNotificationReg")
        .Add("Endianess", f.Bank().IsBigEndian() ? "BigEndian" : "LittleEndian");
    const auto value = [&](const std::string& feature, const char* text, const char* unit) {
        Feature node = f.Integer(feature.c_str(), text);
        node.ReadOnly().Expert().Length(8).Element("EventID", id).Available(condition.c_str()).Polled(1000);
        if (unit) {
            node.Unit(unit);
        }
    };
    value(base, "Identifies the event.", nullptr);
    value(base + "Timestamp", "The camera's clock when it happened.", "ns");
    value(base + "FrameID", "The image that it belongs to.", nullptr);
    f.Bank().SetInt(base, std::strtol(id, nullptr, 16));
}

} // namespace

void NoteEvents(CameraModel& camera, std::uint64_t frameId, std::int64_t timestampNs, bool last) {
    RegisterBank& bank = camera.Bank();
    const auto note = [&](Event event, const std::string& base, double delayUs) {
        if (bank.Int("EventNotification", event)) {
            bank.SetInt(base + "Timestamp", timestampNs + static_cast<std::int64_t>(delayUs * 1000.0));
            bank.SetInt(base + "FrameID", static_cast<std::int64_t>(frameId));
        }
    };
    note(ExposureEnd, "EventExposureEnd", camera.ExposureUs());
    note(FrameEnd, "EventFrameEnd", camera.ExposureUs() + 1000.0);
    if (last) {
        note(AcquisitionEnd, "EventAcquisitionEnd", camera.ExposureUs() + 1000.0);
    }
}

void AddEventControl(FeatureBuilder& f, CameraModel&) {
    f.Category("EventControl", "What the camera reports of its own accord.", "Root", "Expert");
    f.Enumeration("EventSelector", "Which event Event Notification switches.")
        .Expert()
        .Selects({"EventNotification"})
        .Entry("ExposureEnd", ExposureEnd)
        .Entry("FrameEnd", FrameEnd)
        .Entry("AcquisitionEnd", AcquisitionEnd);
    f.Enumeration("EventNotification", "Whether the selected event is reported.")
        .Expert()
        .By("EventSelector", kEvents)
        .Stored()
        .Entry("Off", 0)
        .Entry("On", 1);
    AddEventData(f, "ExposureEnd", "9001", ExposureEnd, "The end of an image's exposure.");
    AddEventData(f, "FrameEnd", "9002", FrameEnd, "The end of an image's readout.");
    AddEventData(f, "AcquisitionEnd", "9003", AcquisitionEnd,
                 "The end of an acquisition that ends by itself.");
}

} // namespace Norvane::Transport::Emulator
