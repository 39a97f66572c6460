#include "transport/emulator/features/Features.h"

#include "norvane/Exception.h"

namespace Norvane::Transport::Emulator {
namespace {

void AddGigEVision(FeatureBuilder& f, CameraModel& camera) {
    RegisterBank& bank = f.Bank();
    f.Category("GigEVision", "The Ethernet side of the camera.", "TransportLayerControl", "Expert");
    f.IntReg("GevMACAddress", "The camera's hardware address.")
        .ReadOnly()
        .Expert()
        .Length(8)
        .Representation("MACAddress");
    f.IntReg("GevCurrentIPAddress", "The address in force.")
        .ReadOnly()
        .Expert()
        .Representation("IPV4Address")
        .Polled(2000);
    f.IntReg("GevCurrentSubnetMask", "The subnet mask in force.")
        .ReadOnly()
        .Expert()
        .Representation("IPV4Address")
        .Polled(2000);
    f.IntReg("GevCurrentDefaultGateway", "The gateway in force.")
        .ReadOnly()
        .Expert()
        .Representation("IPV4Address")
        .Polled(2000);
    // Bits of one register, as in the standard's bootstrap registers: 0 persistent, 1 DHCP, 2 link-local.
    bank.Add("GevIPConfiguration", RegisterBank::Type::Unsigned, 4,
             RegisterBank::Readable | RegisterBank::Writable);
    Flash::PersistentIp& stored = camera.Store().persistentIp;
    bank.SetInt("GevIPConfiguration", stored.enabled ? 0b111 : 0b110);
    bank.OnWrite("GevIPConfiguration", [&bank, &stored](std::size_t) {
        bank.SetInt("GevIPConfiguration", (bank.Int("GevIPConfiguration") & 0b011) | 0b100);
        stored.enabled = bank.Int("GevIPConfiguration") & 1;
    });
    f.Bits("GevIPConfigurationPersistent", "GevIPConfiguration", 0, 0);
    f.Bits("GevIPConfigurationDHCP", "GevIPConfiguration", 1, 1);
    f.Bits("GevIPConfigurationLLA", "GevIPConfiguration", 2, 2, "RO");
    f.Boolean("GevCurrentIPConfigurationLLA",
              "A link-local address is taken when nothing else gives one; always on.")
        .Guru()
        .ValueFrom("GevIPConfigurationLLA");
    f.Boolean("GevCurrentIPConfigurationDHCP", "The address is asked for.")
        .Guru()
        .ValueFrom("GevIPConfigurationDHCP");
    f.Boolean("GevCurrentIPConfigurationPersistentIP", "The persistent address below is taken.")
        .Guru()
        .ValueFrom("GevIPConfigurationPersistent");
    const auto persistent = [&](const char* name, std::uint32_t& value, const char* toolTip) {
        f.Integer(name, toolTip)
            .Guru()
            .Min(0)
            .Max(4294967295.0)
            .Representation("IPV4Address")
            .Initial(std::int64_t{value})
            .OnWrite([&bank, &value, name] { value = static_cast<std::uint32_t>(bank.Int(name)); });
    };
    persistent("GevPersistentIPAddress", stored.address,
               "The address that the camera takes at power-up, when it is told to.");
    persistent("GevPersistentSubnetMask", stored.netmask, "The subnet mask that goes with it.");
    persistent("GevPersistentDefaultGateway", stored.gateway, "The gateway that goes with it.");
    f.StringReg("GevFirstURL", "Where the description is found.")
        .ReadOnly()
        .Guru()
        .Length(128)
        .Initial("Local:emulator.xml;10000;40000");
    f.StringReg("GevSecondURL", "Where the description is found otherwise.").ReadOnly().Guru().Length(128);
    f.IntReg("GevNumberOfInterfaces", "Network interfaces of the camera.").ReadOnly().Guru().Initial(1);
    f.Integer("GevStreamChannelSelector", "Which stream channel is set.")
        .Expert()
        .Min(0)
        .Max(0)
        .Selects({"GevSCPSPacketSize", "GevSCPD"});
    f.Integer("GevSCPSPacketSize", "Bytes of a stream packet, with its headers.")
        .Expert()
        .Unit("B")
        .Min(576)
        .Max(9000)
        .Inc(4)
        .Locked()
        .Stored()
        .Initial(1400)
        .OnWrite([&bank] {
            const std::int64_t size = bank.Int("GevSCPSPacketSize");
            if (size < 576 || size > 9000 || size % 4 != 0) {
                throw Exception(Error::InvalidParameter, "a packet of this size cannot be sent");
            }
        });
    f.Integer("GevSCPD", "Ticks of the camera's clock between two packets.")
        .Expert()
        .Min(0)
        .Max(1000000)
        .Stored();
    f.Boolean("GevSCPSDoNotFragment", "Packets must not be cut on their way.").Guru().Initial(1);
    f.Enumeration("GevCCP", "Who controls the camera.")
        .ReadOnly()
        .Guru()
        .Entry("OpenAccess", 0)
        .Entry("ExclusiveAccess", 1)
        .Entry("ControlAccess", 2)
        .Initial(2);
    f.IntReg("GevSCPHostPort", "Port of the stream's receiver.").ReadOnly().Guru().Initial(49152);
    f.IntReg("GevSCDA", "Address of the stream's receiver.").ReadOnly().Guru().Representation("IPV4Address");
    f.Boolean("GevGVCPHeartbeatDisable", "The camera keeps its controller without a sign of life.").Guru();
    f.Boolean("GevIEEE1588", "The clock follows the network's.").Expert().Stored();
    f.Formula("GevIEEE1588IsOn", "ON > 0", {{"ON", "GevIEEE1588Reg"}});
    f.Enumeration("GevIEEE1588Status", "The clock's part in the network.")
        .ReadOnly()
        .Expert()
        .Available("GevIEEE1588IsOn")
        .Entry("Listening", 4)
        .Entry("Slave", 9)
        .Initial(9);

    bank.SetInt("GevMACAddress", static_cast<std::int64_t>(camera.MacAddress()));
    bank.SetInt("GevSCDA", camera.Interface().address);
}

void AddUsb3Vision(FeatureBuilder& f) {
    f.Category("USB3Vision", "The USB side of the camera.", "TransportLayerControl", "Expert");
    f.Enumeration("DeviceCurrentSpeed", "The speed that the link came up with.")
        .ReadOnly()
        .Expert()
        .Entry("HighSpeed", 2)
        .Entry("SuperSpeed", 3)
        .Initial(3);
    f.IntReg("DeviceMaxThroughput", "The most bytes a second that the link carries.")
        .ReadOnly()
        .Expert()
        .Length(8)
        .Unit("Bps")
        .Initial(std::int64_t{400000000});
    f.IntReg("SIPayloadTransferSize", "Bytes of one transfer of the payload.")
        .ReadOnly()
        .Guru()
        .Unit("B")
        .Initial(65536);
    f.Integer("SIMaximumLeaderSize", "Bytes reserved for an image's leader.")
        .Guru()
        .Unit("B")
        .Min(52)
        .Max(4096)
        .Inc(4)
        .Initial(52);
    f.Integer("SIMaximumTrailerSize", "Bytes reserved for an image's trailer.")
        .Guru()
        .Unit("B")
        .Min(32)
        .Max(4096)
        .Inc(4)
        .Initial(32);
    f.StringReg("DeviceGUID", "The device's identifier on the bus.")
        .ReadOnly()
        .Expert()
        .Length(16)
        .Initial("4E5600000001");
}

} // namespace

void AddTransportLayerControl(FeatureBuilder& f, CameraModel& camera) {
    RegisterBank& bank = f.Bank();
    f.Category("TransportLayerControl", "What goes over the link.");
    f.Integer("PayloadSize", "Bytes of one image with all that is sent along.")
        .ReadOnly()
        .Expert()
        .Unit("B")
        .Length(8)
        .Polled(1000)
        .InvalidatedBy({"WidthReg", "HeightReg", "PixelFormatReg", "ChunkModeActiveReg", "ChunkEnableReg",
                        "InferenceEnableReg", "InferenceNetworkTypeSelectorReg"})
        .OnRead([&bank, &camera] {
            bank.SetInt("PayloadSize", static_cast<std::int64_t>(camera.PayloadSize()));
        });
    f.Integer("TLParamsLocked", "Set by the host while it streams: what would alter the payload is locked.")
        .Invisible()
        .Min(0)
        .Max(1)
        .Element("Value", "0");
    camera.IsGigE() ? AddGigEVision(f, camera) : AddUsb3Vision(f);
}

} // namespace Norvane::Transport::Emulator
