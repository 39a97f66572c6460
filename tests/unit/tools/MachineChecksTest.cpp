#include "check/MachineChecks.h"
#include "check/Check.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::Field;
using testing::HasSubstr;

auto says(Weight weight, const std::string& text) {
    return AllOf(Field(&Finding::weight, weight), Field(&Finding::text, HasSubstr(text)));
}
auto isGood() {
    return Field(&Finding::weight, Weight::Good);
}

/// A machine on which nothing limits cameras, made of files; tests break it at one place.
class MachineChecksTest : public testing::Test {
protected:
    MachineChecksTest() {
        std::string pattern = (std::filesystem::temp_directory_path() / "norvane-machine-XXXXXX").string();
        m_root = mkdtemp(pattern.data());
        addAdapter("eth0");
        setRoutes({"eth0\t0000FEA9\t00000000\t0001\t0\t0\t0\t0000FFFF\t0\t0\t0"});
        write("proc/sys/net/ipv4/conf/all/rp_filter", "0\n");
        write("proc/sys/net/core/rmem_max", "33554432\n");
        write("proc/sys/net/core/rmem_default", "212992\n");
        write("proc/modules", "nf_tables 311296 0 - Live 0x0\nusbcore 344064 3 a,b,c, Live 0x0\n");
        write("sys/module/usbcore/parameters/usbfs_memory_mb", "1000\n");
        write("sys/devices/system/cpu/cpu0/cpufreq/scaling_governor", "performance\n");
        write("sys/bus/usb/devices/usb2/speed", "5000\n");
        write("sys/bus/usb/devices/2-1/product", "Cam\n");
        write("sys/bus/usb/devices/2-1/busnum", "2\n");
        write("sys/bus/usb/devices/2-1/devnum", "7\n");
        write("sys/bus/usb/devices/2-1/speed", "5000\n");
        write("sys/bus/usb/devices/2-1/power/control", "on\n");
        write("sys/bus/usb/devices/2-1:1.0/bInterfaceClass", "ef\n");
        write("sys/bus/usb/devices/2-1:1.0/bInterfaceSubClass", "05\n");
        write("sys/bus/usb/devices/2-1:1.0/bInterfaceProtocol", "00\n");
        write("dev/bus/usb/002/007", "");
    }
    ~MachineChecksTest() override { std::filesystem::remove_all(m_root); }

    void write(const std::string& path, const std::string& content) const {
        std::filesystem::create_directories((m_root / path).parent_path());
        std::ofstream(m_root / path) << content;
    }
    void addAdapter(const std::string& name) const {
        const std::string folder = "sys/class/net/" + name + "/";
        std::filesystem::create_directories(m_root / (folder + "device"));
        write(folder + "type", "1\n");
        write(folder + "carrier", "1\n");
        write(folder + "mtu", "9000\n");
        write(folder + "speed", "1000\n");
    }
    void setRoutes(const std::vector<std::string>& routes) const {
        std::string text =
            "Iface\tDestination\tGateway\tFlags\tRefCnt\tUse\tMetric\tMask\tMTU\tWindow\tIRTT\n";
        for (const std::string& route : routes) {
            text += route + "\n";
        }
        write("proc/net/route", text);
    }
    Machine machine() const { return Machine(m_root); }

    std::filesystem::path m_root;
};

TEST_F(MachineChecksTest, FindsNothingOnAMachineInOrder) {
    EXPECT_THAT(checkNetwork(machine()),
                AllOf(Each(isGood()), Contains(says(Weight::Good, "169.254.0.0/16"))));
    EXPECT_THAT(checkSockets(machine()), Each(isGood()));
    EXPECT_THAT(checkFirewall(machine()), Each(isGood()));
    EXPECT_THAT(checkUsb(machine()), AllOf(Each(isGood()), Contains(says(Weight::Good, "Cam (USB 2-1)"))));
    EXPECT_THAT(checkProcessors(machine()), Each(isGood()));
}

TEST_F(MachineChecksTest, AMachineThatTellsNothingIsNoError) {
    std::filesystem::remove_all(m_root / "proc");
    std::filesystem::remove_all(m_root / "sys");
    EXPECT_THAT(checkNetwork(machine()), Contains(says(Weight::Advice, "no network adapter")));
    EXPECT_THAT(checkSockets(machine()), Contains(says(Weight::Advice, "cannot be read")));
    EXPECT_THAT(checkFirewall(machine()), Each(isGood()));
    EXPECT_THAT(checkUsb(machine()), Contains(says(Weight::Advice, "no USB 3 host controller")));
    EXPECT_THAT(checkProcessors(machine()), Each(isGood()));
}

TEST_F(MachineChecksTest, TellsWhatIsWrongWithAdapters) {
    write("sys/class/net/eth0/mtu", "1500\n");
    write("sys/class/net/eth0/speed", "100\n");
    write("proc/sys/net/ipv4/conf/eth0/rp_filter", "2\n");
    addAdapter("eth1");
    write("sys/class/net/eth1/carrier", "0\n");
    addAdapter("eth2");
    addAdapter("wlan0");
    write("sys/class/net/wlan0/wireless", "");
    const std::string net = "\t0001A8C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0";
    setRoutes({"eth0" + net, "wlan0" + net, "eth2\t00000000\t0101A8C0\t0003\t0\t0\t0\t00000000\t0\t0\t0"});
    EXPECT_THAT(checkNetwork(machine()),
                AllOf(Contains(says(Weight::Advice, "eth0 sends and takes packets of 1500")),
                      Contains(says(Weight::Limiting, "eth0 runs at 100 Mbit/s")),
                      Contains(says(Weight::Advice, "rp_filter is 2")),
                      Contains(says(Weight::Advice, "eth1 has no link")),
                      Contains(says(Weight::Limiting, "eth2 has no IPv4 address")),
                      Contains(says(Weight::Advice, "wlan0 is wireless")),
                      Contains(says(Weight::Limiting, "eth0 and wlan0 are both on 192.168.1.0/24"))));
}

TEST_F(MachineChecksTest, LooksAtVirtualAdaptersThatReachCameras) {
    // A bridge with a device in it has the addresses; one of virtual machines reaches no camera.
    for (const std::string name : {"br0", "docker0", "vlan5"}) {
        addAdapter(name);
        std::filesystem::remove(m_root / "sys/class/net" / name / "device");
    }
    std::filesystem::create_directories(m_root / "sys/class/net/br0/bridge");
    std::filesystem::create_directories(m_root / "sys/class/net/docker0/bridge");
    std::filesystem::create_symlink("../eth0", m_root / "sys/class/net/br0/lower_eth0");
    std::filesystem::create_symlink("../../virtual/net/br0", m_root / "sys/class/net/eth0/master");
    setRoutes({"br0\t0000FEA9\t00000000\t0001\t0\t0\t0\t0000FFFF\t0\t0\t0",
               "docker0\t000011AC\t00000000\t0001\t0\t0\t0\t0000FFFF\t0\t0\t0",
               "vlan5\t0005A8C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0"});
    EXPECT_THAT(checkNetwork(machine()),
                testing::ElementsAre(says(Weight::Good, "br0 reaches 169.254.0.0/16"),
                                     says(Weight::Good, "eth0 serves br0"),
                                     says(Weight::Good, "vlan5 reaches 192.168.5.0/24")));
}

TEST_F(MachineChecksTest, TellsWhatIsWrongWithSocketsAndProcessors) {
    write("proc/sys/net/core/rmem_max", "212992\n");
    write("proc/sys/net/core/rmem_default", "400000\n");
    EXPECT_THAT(checkSockets(machine()), AllOf(Contains(says(Weight::Limiting, "212992 bytes")),
                                               Contains(says(Weight::Advice, "rmem_default (400000)"))));
    write("sys/devices/system/cpu/cpu1/cpufreq/scaling_governor", "powersave\n");
    EXPECT_THAT(checkProcessors(machine()), Contains(says(Weight::Advice, "1 processor(s) slow down")));
}

TEST_F(MachineChecksTest, SeesSignsOfAFirewall) {
    write("proc/modules", "nf_tables 311296 12 nft_ct, Live 0x0\n");
    EXPECT_THAT(checkFirewall(machine()), Contains(says(Weight::Advice, "nf_tables is in use")));
    write("etc/ufw/ufw.conf", "# comment\nENABLED=yes\n");
    EXPECT_THAT(checkFirewall(machine()), Contains(says(Weight::Advice, "ufw is on")));
}

TEST_F(MachineChecksTest, TellsWhatIsWrongWithUsb) {
    write("sys/module/usbcore/parameters/usbfs_memory_mb", "16\n");
    write("sys/bus/usb/devices/2-1/speed", "480\n");
    write("sys/bus/usb/devices/2-1/power/control", "auto\n");
    // Not even root may write what is not there.
    std::filesystem::remove(m_root / "dev/bus/usb/002/007");
    EXPECT_THAT(checkUsb(machine()),
                AllOf(Contains(says(Weight::Limiting, "16 MB together")),
                      Contains(says(Weight::Limiting, "runs at 480 Mbit/s")),
                      Contains(says(Weight::Advice, "put to sleep")),
                      Contains(says(Weight::Limiting, "/dev/bus/usb/002/007 is not writable"))));
    // Another class of device is none of our business.
    write("sys/bus/usb/devices/2-1:1.0/bInterfaceClass", "08\n");
    write("sys/module/usbcore/parameters/usbfs_memory_mb", "0\n");
    EXPECT_THAT(checkUsb(machine()), Each(isGood()));
}

TEST_F(MachineChecksTest, TellsWhichCamerasCanBeReached) {
    EXPECT_THAT(checkCameras({}), Contains(says(Weight::Advice, "No camera answers")));
    const auto camera = [](const std::string& number, const std::string& address, const std::string& access) {
        CameraSummary summary;
        summary.number = number;
        summary.model = "Cam";
        summary.address = address;
        summary.access = access;
        return summary;
    };
    CameraSummary wrong = camera("2", "10.1.1.1", "ReadWrite");
    wrong.wrongSubnet = true;
    CameraSummary broken = camera("4", "", "ReadWrite");
    broken.usable = false;
    const Findings findings = checkCameras(
        {{"eth0",
          "",
          "",
          Subnet{0xA9FE0000, 0xFFFF0000},
          true,
          {camera("1", "169.254.3.4", "ReadWrite"), wrong, camera("3", "169.254.3.4", "ReadOnly")}},
         {"usb2", "", "", {}, true, {broken, camera("5", "", "ReadWrite")}}});
    EXPECT_THAT(findings,
                testing::ElementsAre(
                    says(Weight::Good, "1 Cam at 169.254.3.4 on eth0 (169.254.0.0/16) can be opened"),
                    says(Weight::Limiting, "2 Cam at 10.1.1.1 on eth0 (169.254.0.0/16) has an address"),
                    says(Weight::Advice, "3 Cam at 169.254.3.4 on eth0 (169.254.0.0/16) is in use"),
                    says(Weight::Limiting, "1 Cam and 3 Cam both have the address 169.254.3.4"),
                    says(Weight::Limiting, "4 Cam on usb2 is seen but cannot be opened"),
                    says(Weight::Good, "5 Cam on usb2 can be opened")));
    EXPECT_TRUE(limits(findings));
    EXPECT_THAT(checkAsText(findings), HasSubstr("Limiting cameras: 3 finding(s)"));
    EXPECT_THAT(checkAsJson(findings),
                AllOf(HasSubstr("\"limited\": true"), HasSubstr("\"weight\": \"limiting\"")));
    EXPECT_FALSE(limits({{Weight::Advice, "t", "x", "y"}}));
}

} // namespace
