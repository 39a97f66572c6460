#include "FakeLibrary.h"

#include "wDeviceList.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <chrono>

namespace {

const QColor kInterfaceBackground(135, 206, 250);
const QColor kCameraBackground(255, 255, 255);

class DeviceListTest : public testing::Test {
protected:
    void SetUp() override {
        m_gigE = m_system->Add("eth0", "First Adapter");
        m_camera = m_gigE->Add({21034567});
        m_second = m_gigE->Add({44, "Duskwing S DWS-20S4M", true, true, 0x0A000005});
        m_empty = m_system->Add("eth1", "Empty Adapter");
        m_system->Add("eth2", "Unusable Adapter")->usable = false;
        m_usb = m_system->Add("usb-0", "Host Controller", false);
        m_usbCamera = m_usb->Add({77, "Duskwing U", false});
    }

    void Show() {
        m_list = std::make_unique<wDeviceList>(m_system->GetInterfaces(false), Norvane::SystemPtr(m_system),
                                               nullptr);
        m_list->resize(400, 600);
        m_list->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_list.get()));
        m_tree = m_list->findChild<QTreeWidget*>("treeWidget");
        ASSERT_NE(m_tree, nullptr);
    }

    QTreeWidgetItem* Row(int interface, int camera = -1) const {
        QTreeWidgetItem* row = m_tree->topLevelItem(interface);
        return camera < 0 ? row : row->child(camera);
    }

    void Click(QTreeWidgetItem* row) {
        QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, {}, m_tree->visualItemRect(row).center());
    }

    QToolButton* Button(const char* name) const { return m_list->findChild<QToolButton*>(name); }

    QStringList TopLevelNames() const {
        QStringList names;
        for (int i = 0; i < m_tree->topLevelItemCount(); ++i) {
            names << m_tree->topLevelItem(i)->text(0);
        }
        return names;
    }

    QStringList CurrentRow() const {
        const QTreeWidgetItem* row = m_tree->currentItem();
        return row ? QStringList{row->text(0), row->text(1)} : QStringList();
    }

    std::shared_ptr<FakeSystem> m_system = std::make_shared<FakeSystem>();
    std::shared_ptr<FakeInterface> m_gigE, m_empty, m_usb;
    std::shared_ptr<FakeCamera> m_camera, m_second, m_usbCamera;
    std::unique_ptr<wDeviceList> m_list;
    QTreeWidget* m_tree = nullptr;
};

TEST_F(DeviceListTest, ShowsInterfacesAndTheirCameras) {
    Show();
    EXPECT_EQ(m_list->windowTitle(), "Devices");
    EXPECT_EQ(m_tree->headerItem()->text(1), "Serial");
    EXPECT_EQ(m_tree->headerItem()->text(2), "IP Address");
    EXPECT_EQ(TopLevelNames(), (QStringList{"First Adapter", "Empty Adapter", "Host Controller"}));

    EXPECT_EQ(Row(0, 0)->text(0), "Duskwing S DWS-50S5C");
    EXPECT_EQ(Row(0, 0)->text(1), "21034567");
    EXPECT_EQ(Row(0, 0)->text(2), "169.254.10.20");
    EXPECT_EQ(Row(2, 0)->text(2), "");
    for (int column = 0; column < 3; ++column) {
        EXPECT_EQ(Row(0)->background(column).color(), kInterfaceBackground);
        EXPECT_EQ(Row(0, 0)->background(column).color(), kCameraBackground);
    }
    ASSERT_EQ(Row(1)->childCount(), 1);
    EXPECT_EQ(Row(1, 0)->text(0), "No Devices Detected");

    EXPECT_TRUE(Row(0, 0)->icon(0).isNull());
    EXPECT_FALSE(Row(0, 1)->icon(0).isNull());
    EXPECT_EQ(Row(0, 1)->toolTip(0), "<p style='white-space:pre'>Device is on wrong subnet</p>");
    EXPECT_TRUE(Row(0)->isExpanded());
    m_list->OnRefreshDeviceList();
    EXPECT_EQ(m_tree->columnWidth(0), m_list->width() / 2);
    EXPECT_EQ(m_tree->columnWidth(1), m_list->width() / 4);
}

TEST_F(DeviceListTest, AdapterButtonHidesInterfacesWithoutCamerasWhileItIsChecked) {
    Show();
    QToolButton* adapters = Button("actionAdapters");
    QTest::mouseClick(adapters, Qt::LeftButton);
    EXPECT_EQ(TopLevelNames(), (QStringList{"First Adapter", "Host Controller"}));
    m_empty->Add({5});
    QTest::mouseClick(Button("actionRefresh"), Qt::LeftButton);
    EXPECT_EQ(TopLevelNames(), (QStringList{"First Adapter", "Empty Adapter", "Host Controller"}));
    m_empty->cameras.clear();
    QTest::mouseClick(adapters, Qt::LeftButton);
    EXPECT_EQ(Row(1, 0)->text(0), "No Devices Detected");
}

TEST_F(DeviceListTest, ClicksTellWhatIsSelectedAndSetTheButtons) {
    Show();
    const QSignalSpy cameraUpdated(m_list.get(), &wDeviceList::CameraUpdated);
    const QSignalSpy interfaceUpdated(m_list.get(), &wDeviceList::InterfaceUpdated);
    const QSignalSpy display(m_list.get(), &wDeviceList::notifyCreateImageDisplay);
    const QSignalSpy stream(m_list.get(), &wDeviceList::notifyDoubleClickToStartStreaming);
    const QSignalSpy nothing(m_list.get(), &wDeviceList::NothingSelected);
    EXPECT_FALSE(Button("actionDisconnectDevice")->isEnabled());
    EXPECT_FALSE(Button("actionCopyToClipboard")->isEnabled());

    Click(Row(0));
    ASSERT_EQ(interfaceUpdated.count(), 1);
    EXPECT_EQ(interfaceUpdated[0][0].value<Norvane::InterfacePtr>(), HandleOf(m_gigE));
    EXPECT_FALSE(Button("actionDisconnectDevice")->isEnabled());
    EXPECT_FALSE(Button("actionUpdateFirmware")->isEnabled());
    EXPECT_TRUE(Button("actionShowProperties")->isEnabled());

    Click(Row(2, 0));
    ASSERT_EQ(cameraUpdated.count(), 1);
    EXPECT_EQ(cameraUpdated[0][0].value<Norvane::CameraPtr>(), HandleOf(m_usbCamera));
    ASSERT_EQ(display.count(), 1);
    EXPECT_EQ(display[0][0].value<Norvane::InterfacePtr>(), HandleOf(m_usb));
    EXPECT_EQ(display[0][1].value<Norvane::CameraPtr>(), HandleOf(m_usbCamera));
    EXPECT_TRUE(Button("actionDisconnectDevice")->isEnabled());

    QTest::mouseDClick(m_tree->viewport(), Qt::LeftButton, {}, m_tree->visualItemRect(Row(2, 0)).center());
    ASSERT_EQ(stream.count(), 1);
    EXPECT_EQ(stream[0][0].toInt(), 77);

    EXPECT_EQ(nothing.count(), 0);
    Click(Row(1, 0));
    EXPECT_EQ(nothing.count(), 1);
    EXPECT_FALSE(Button("actionDisconnectDevice")->isEnabled());
    QTest::mouseDClick(m_tree->viewport(), Qt::LeftButton, {}, m_tree->visualItemRect(Row(1, 0)).center());
    EXPECT_EQ(stream.count(), 1);
}

TEST_F(DeviceListTest, ReturnKeyDoesWhatAClickDoes) {
    Show();
    const QSignalSpy cameraUpdated(m_list.get(), &wDeviceList::CameraUpdated);
    m_tree->setFocus();
    m_tree->setCurrentItem(Row(0));
    QTest::keyClick(m_tree, Qt::Key_Down);
    EXPECT_EQ(cameraUpdated.count(), 0);
    QTest::keyClick(m_tree, Qt::Key_Return);
    ASSERT_EQ(cameraUpdated.count(), 1);
    EXPECT_EQ(cameraUpdated[0][0].value<Norvane::CameraPtr>(), HandleOf(m_camera));
}

TEST_F(DeviceListTest, SelectionOutlivesARefreshOnlyWithItsInterface) {
    Show();
    const QSignalSpy nothing(m_list.get(), &wDeviceList::NothingSelected);
    Click(Row(2, 0));
    m_list->OnDeviceRemoval(21034567);
    EXPECT_EQ(nothing.count(), 0);
    EXPECT_EQ(CurrentRow(), (QStringList{"Duskwing U", "77"}));

    m_usb->cameras.clear();
    m_list->OnDeviceRemoval(77);
    EXPECT_EQ(nothing.count(), 1);
    EXPECT_FALSE(Button("actionDisconnectDevice")->isEnabled());

    Click(Row(0, 0));
    m_system->interfaces.erase(m_system->interfaces.begin());
    m_list->OnInterfaceRemoval("eth0");
    EXPECT_GE(nothing.count(), 2);
    EXPECT_FALSE(Button("actionShowProperties")->isEnabled());
    EXPECT_EQ(TopLevelNames(), (QStringList{"Empty Adapter", "Host Controller"}));
}

TEST_F(DeviceListTest, SelectByHandleActsAsAClickAndIgnoresWhatHasNoRow) {
    Show();
    const QSignalSpy cameraUpdated(m_list.get(), &wDeviceList::CameraUpdated);
    const QSignalSpy interfaceUpdated(m_list.get(), &wDeviceList::InterfaceUpdated);
    m_list->SelectDevice(HandleOf(m_second));
    m_list->SelectInterface(HandleOf(m_usb));
    EXPECT_EQ(cameraUpdated.count(), 1);
    EXPECT_EQ(interfaceUpdated.count(), 1);
    EXPECT_EQ(CurrentRow()[0], "Host Controller");
    m_list->SelectDevice({});
    m_list->SelectDevice(HandleOf(std::make_shared<FakeCamera>(FakeCameraSetup{99})));
    m_list->SelectInterface(HandleOf(std::make_shared<FakeInterface>("gone", "Gone")));
    EXPECT_EQ(cameraUpdated.count() + interfaceUpdated.count(), 2);
}

// An event that comes while the receiver of a click works, for example in a dialog's event loop, refreshes
// the list under the click.
TEST_F(DeviceListTest, RefreshInsideASelectionIsSafe) {
    Show();
    const QSignalSpy display(m_list.get(), &wDeviceList::notifyCreateImageDisplay);
    QObject::connect(m_list.get(), &wDeviceList::CameraUpdated, m_list.get(),
                     &wDeviceList::OnRefreshDeviceList);
    QObject::connect(m_list.get(), &wDeviceList::InterfaceUpdated, m_list.get(),
                     &wDeviceList::OnRefreshDeviceList);
    Click(Row(0, 1));
    Click(Row(0));
    ASSERT_EQ(display.count(), 1);
    EXPECT_EQ(display[0][1].value<Norvane::CameraPtr>(), HandleOf(m_second));
}

} // namespace
