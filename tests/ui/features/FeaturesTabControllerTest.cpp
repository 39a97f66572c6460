#include "FileAccessTab.h"
#include "TestDevice.h"
#include "wFeatureTree.h"
#include "wFeaturesTabController.h"

#include <QStandardItemModel>
#include <QTabWidget>

#include <gmock/gmock.h>

using namespace Norvane::GenApi;

namespace {

/// Learns like the real one only from OnCameraUpdated what the camera can do.
class FileTab : public FileAccessTab {
public:
    using FileAccessTab::FileAccessTab;
    bool isFileAccessCapable() const override { return m_capable; }
    void OnCameraUpdated(const Norvane::CameraPtr& camera) override {
        m_capable = camera.IsValid() && camera->GetNodeMap().GetNode("FileSelector");
        ++updates;
    }
    int updates = 0;

private:
    bool m_capable = false;
};

const std::string kFeatures = category("Root", "Group") + category("Group", "Width") + integer("Width", 0);
const std::string kIdentity = category("Root", "Info") +
                              category("Info", "DeviceModelName DeviceSerialNumber") +
                              text("DeviceModelName", "Duskwing X") + text("DeviceSerialNumber", "4711");

Norvane::CameraPtr makeCamera(bool files, const std::string& more = {}) {
    return Norvane::CameraPtr(std::make_shared<TestCamera>(
        kFeatures + (files ? number("Integer", "FileSelector", "0") : std::string()), kIdentity + more, ""));
}

class FeaturesTabControllerTest : public testing::Test {
protected:
    FeaturesTabControllerTest()
        : m_controller(nullptr, [this](QWidget* parent) { return m_fileTab = new FileTab(parent); }) {
        m_controller.Initialize();
    }
    QStringList tabs() const {
        QStringList titles;
        const auto* widget = m_controller.findChild<QTabWidget*>();
        for (int i = 0; i < widget->count(); ++i) {
            titles << widget->tabText(i);
        }
        return titles;
    }
    int treeRows() const {
        return static_cast<wFeatureTree*>(m_controller.GetWidget(0))->GetCurrentModel()->rowCount();
    }

    FileTab* m_fileTab = nullptr;
    wFeaturesTabController m_controller;
};

const QStringList kTreeOnly = {"Features"};
const QStringList kBoth = {"Features", "File Access"};

TEST_F(FeaturesTabControllerTest, OffersTheTabsThatTheCameraIsCapableOf) {
    EXPECT_EQ(tabs(), kTreeOnly);
    EXPECT_EQ(m_controller.GetCurrentDeviceSerialNumber(), -1);
    m_controller.OnCameraUpdated(makeCamera(true));
    EXPECT_EQ(tabs(), kBoth) << "at the first selection already";
    EXPECT_EQ(m_controller.windowTitle(), "Duskwing X - 4711");
    EXPECT_EQ(m_controller.GetCurrentDeviceSerialNumber(), 4711);
    m_controller.OnCameraUpdated(makeCamera(false));
    EXPECT_EQ(tabs(), kTreeOnly);
    m_controller.showAllTabs();
    EXPECT_EQ(tabs(), kTreeOnly);
    m_controller.OnCameraUpdated(makeCamera(true));
    m_controller.updateVisibilityOfWidget(false, 0);
    m_controller.showAllTabs();
    EXPECT_EQ(tabs(), kBoth) << "hidden tabs come back in order";
    m_controller.ClearFeaturesView();
    EXPECT_EQ(tabs(), kTreeOnly);
    EXPECT_EQ(m_controller.windowTitle(), "Features");
    EXPECT_EQ(m_controller.GetCurrentDeviceSerialNumber(), -1);
    EXPECT_EQ(treeRows(), 0);
    EXPECT_EQ(m_controller.GetWidget(2), nullptr);
}

TEST_F(FeaturesTabControllerTest, AnInterfaceShowsItsMapAlone) {
    m_controller.OnCameraUpdated(makeCamera(true));
    const int updates = m_fileTab->updates;
    m_controller.OnInterfaceUpdated(Norvane::InterfacePtr(
        std::make_shared<TestInterface>(category("Root", "Info") + category("Info", "InterfaceDisplayName") +
                                        text("InterfaceDisplayName", "Port 1"))));
    EXPECT_EQ(m_controller.windowTitle(), "Port 1");
    EXPECT_EQ(tabs(), kTreeOnly);
    EXPECT_EQ(treeRows(), 1);
    EXPECT_EQ(m_fileTab->updates, updates + 1) << "the tabs learn that no camera is shown";
    EXPECT_EQ(m_controller.GetCurrentDeviceSerialNumber(), -1);
    m_controller.OnInterfaceUpdated(Norvane::InterfacePtr());
    EXPECT_EQ(m_controller.windowTitle(), "Features");
}

TEST_F(FeaturesTabControllerTest, ShowsNoFeaturesOfACameraThatCannotBeWorkedWith) {
    const auto expectEmpty = [this](const Norvane::CameraPtr& camera, const char* title, const char* why) {
        m_controller.OnCameraUpdated(makeCamera(true));
        m_controller.OnCameraUpdated(camera);
        EXPECT_EQ(treeRows(), 0) << why;
        EXPECT_EQ(tabs(), kTreeOnly) << why;
        EXPECT_EQ(m_controller.GetCurrentDeviceSerialNumber(), -1) << why;
        EXPECT_EQ(m_controller.windowTitle(), title) << why;
        EXPECT_EQ(m_controller.GetWidget(0)->windowTitle(), "Device Features") << why;
    };
    const auto marked = [](const char* name, int value) {
        return std::string("<Boolean Name=\"") + name + "\"><Value>" + std::to_string(value) +
               "</Value></Boolean>";
    };
    const auto other = [](const std::string& markers) {
        return Norvane::CameraPtr(
            std::make_shared<TestCamera>(kFeatures,
                                         category("Root", "Info") + text("DeviceModelName", "Duskwing Y") +
                                             text("DeviceSerialNumber", "4712") + markers,
                                         ""));
    };
    expectEmpty(other(marked("GevDeviceIsWrongSubnet", 1)), "Duskwing Y - 4712", "wrong subnet");
    expectEmpty(other(marked("GevDeviceIsWrongSubnet", 0) + marked("DeviceIsUnusable", 1)),
                "Duskwing Y - 4712", "unusable");

    auto readOnly = std::make_shared<TestCamera>(kFeatures, kIdentity, "");
    readOnly->access = RO;
    expectEmpty(Norvane::CameraPtr(readOnly), "Duskwing X - 4711", "held by another program");

    auto silent = std::make_shared<TestCamera>(kFeatures, "", "");
    silent->initialized = false;
    silent->opens = false;
    expectEmpty(Norvane::CameraPtr(silent), "Couldn't get device information", "does not answer");
    expectEmpty(Norvane::CameraPtr(), "Features", "no camera");
}

} // namespace
