#include "transport/aravis/UsbControllers.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <unistd.h>

using namespace Norvane::Transport;
namespace fs = std::filesystem;

namespace {

/// A piece of sysfs as the kernel lays it out, in a folder of its own.
class UsbControllers : public testing::Test {
protected:
    UsbControllers() { fs::create_directories(m_root / "bus/usb/devices"); }
    ~UsbControllers() override { fs::remove_all(m_root); }

    void Add(const std::string& path, const std::vector<std::pair<std::string, std::string>>& attributes) {
        const fs::path folder = m_root / "devices" / path;
        fs::create_directories(folder);
        for (const auto& [name, value] : attributes) {
            std::ofstream(folder / name) << value << "\n";
        }
        fs::create_directory_symlink(folder, m_root / "bus/usb/devices" / folder.filename());
    }
    void AddInterface(const std::string& path, const std::string& protocol) {
        Add(path,
            {{"bInterfaceClass", "ef"}, {"bInterfaceSubClass", "05"}, {"bInterfaceProtocol", protocol}});
    }

    const fs::path m_root = fs::temp_directory_path() / ("norvane-sysfs-" + std::to_string(::getpid()));
};

} // namespace

TEST_F(UsbControllers, ListsUsb3ControllersAndTheCamerasBehindThem) {
    const std::string xhci = "pci0000:00/0000:00:14.0/";
    Add(xhci + "usb1", {{"speed", "480"}});
    Add(xhci + "usb2", {{"speed", "10000"}});
    Add("pci0000:00/0000:00:1a.0/usb3", {{"speed", "480"}}); // no USB 3
    Add("platform/soc/fe800000.usb/usb4", {{"speed", "5000"}});

    Add(xhci + "usb2/2-3",
        {{"speed", "5000"}, {"manufacturer", "Altrona"}, {"product", "Duskwing U"}, {"serial", "0123ABCD"}});
    AddInterface(xhci + "usb2/2-3/2-3:1.0", "00"); // control
    AddInterface(xhci + "usb2/2-3/2-3:1.1", "01"); // events: the same camera
    Add(xhci + "usb1/1-1", {{"speed", "480"}, {"product", "hub"}});
    Add(xhci + "usb1/1-1/1-1.4", {{"speed", "480"}, {"product", "Duskwing H"}});
    AddInterface(xhci + "usb1/1-1/1-1.4/1-1.4:1.0", "00");
    Add(xhci + "usb1/1-2", {{"speed", "12"}, {"product", "keyboard"}});
    Add(xhci + "usb1/1-2/1-2:1.0", {{"bInterfaceClass", "03"}});

    const UsbTree tree = ReadUsbTree(m_root.string());
    ASSERT_EQ(tree.controllers.size(), 2U);
    EXPECT_EQ(tree.controllers[0].id, "usb-0000:00:14.0");
    EXPECT_EQ(tree.controllers[0].technology, Technology::Usb3Vision);
    EXPECT_EQ(tree.controllers[0].linkSpeedMbps, 10000U);
    EXPECT_EQ(tree.controllers[1].id, "usb-fe800000.usb");

    ASSERT_EQ(tree.devices.size(), 2U);
    EXPECT_EQ(tree.devices[0].product, "Duskwing H") << "behind a hub";
    EXPECT_EQ(tree.devices[0].speed, "HighSpeed");
    EXPECT_EQ(tree.devices[0].controllerId, "usb-0000:00:14.0");
    EXPECT_EQ(tree.devices[1].vendor, "Altrona");
    EXPECT_EQ(tree.devices[1].serial, "0123ABCD");
    EXPECT_EQ(tree.devices[1].speed, "SuperSpeed");
    EXPECT_THAT(tree.devices[1].path, testing::EndsWith("/usb2/2-3"));
}

TEST_F(UsbControllers, NoUsbIsAnEmptyTree) {
    const UsbTree tree = ReadUsbTree((m_root / "nowhere").string());
    EXPECT_TRUE(tree.controllers.empty());
    EXPECT_TRUE(tree.devices.empty());
}
