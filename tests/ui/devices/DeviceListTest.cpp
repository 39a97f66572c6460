#include "EmulatorFixture.h"
#include "Handles.h"

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

class DeviceListTest : public Norvane::Test::EmulatorFixture {
protected:
    void SetUp() override {
        AddInterface("eth0", "name=First Adapter");
        AddCamera("21034567", "interface=eth0\nmodel=Duskwing S DWS-50S5C");
        AddCamera("44", "interface=eth0\naddress=10.0.0.5");
        AddInterface("eth1", "name=Empty Adapter");
        AddInterface("eth2", "name=Unusable Adapter\nusable=false");
        AddInterface("usb-0", "name=Host Controller\ntype=U3V");
        AddCamera("77", "interface=usb-0\nmodel=Duskwing U");
        Start();
        m_camera = Find("21034567");
        m_second = Find("44");
        m_usbCamera = Find("77");
        const Norvane::InterfaceList interfaces = m_system->GetInterfaces(false);
        m_gigE = interfaces.GetByIndex(0);
        m_usb = interfaces.GetByIndex(3);
    }

    void Show() {
        m_list = std::make_unique<wDeviceList>(m_system->GetInterfaces(false), m_system, nullptr);
        m_list->resize(400, 600);
        m_list->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_list.get()));
        m_tree = m_list->findChild<QTreeWidget*>("treeWidget");
        ASSERT_NE(m_tree, nullptr);
    }

    void WaitForCameras(unsigned int count) {
        ASSERT_TRUE(
            Norvane::Test::Eventually([&] { return m_system->GetCameras(false).GetSize() == count; }));
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

    Norvane::InterfacePtr m_gigE, m_usb;
    Norvane::CameraPtr m_camera, m_second, m_usbCamera;
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
    AddCamera("5", "interface=eth1");
    WaitForCameras(4);
    QTest::mouseClick(Button("actionRefresh"), Qt::LeftButton);
    EXPECT_EQ(TopLevelNames(), (QStringList{"First Adapter", "Empty Adapter", "Host Controller"}));
    Unplug("5");
    WaitForCameras(3);
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
    EXPECT_EQ(interfaceUpdated[0][0].value<Norvane::InterfacePtr>(), m_gigE);
    EXPECT_FALSE(Button("actionDisconnectDevice")->isEnabled());
    EXPECT_FALSE(Button("actionUpdateFirmware")->isEnabled());
    EXPECT_TRUE(Button("actionShowProperties")->isEnabled());

    Click(Row(2, 0));
    ASSERT_EQ(cameraUpdated.count(), 1);
    EXPECT_EQ(cameraUpdated[0][0].value<Norvane::CameraPtr>(), m_usbCamera);
    ASSERT_EQ(display.count(), 1);
    EXPECT_EQ(display[0][0].value<Norvane::InterfacePtr>(), m_usb);
    EXPECT_EQ(display[0][1].value<Norvane::CameraPtr>(), m_usbCamera);
    const QSignalSpy disconnect(m_list.get(), &wDeviceList::notifyDisconnectDevice);
    QTest::mouseClick(Button("actionDisconnectDevice"), Qt::LeftButton);
    QTest::mouseClick(Button("actionDisconnectDevice"), Qt::LeftButton);
    ASSERT_EQ(disconnect.count(), 1) << "asked for once";
    EXPECT_EQ(disconnect[0][0].value<Norvane::CameraPtr>(), m_usbCamera);

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
    EXPECT_EQ(cameraUpdated[0][0].value<Norvane::CameraPtr>(), m_camera);
}

TEST_F(DeviceListTest, SelectionOutlivesARefreshOnlyWithItsInterface) {
    Show();
    const QSignalSpy nothing(m_list.get(), &wDeviceList::NothingSelected);
    Click(Row(2, 0));
    m_list->OnDeviceRemoval(21034567);
    EXPECT_EQ(nothing.count(), 0);
    EXPECT_EQ(CurrentRow(), (QStringList{"Duskwing U", "77"}));

    Unplug("77");
    WaitForCameras(2);
    m_list->OnDeviceRemoval(77);
    EXPECT_EQ(nothing.count(), 1);
    EXPECT_FALSE(Button("actionDisconnectDevice")->isEnabled());

    Click(Row(0, 0));
    m_list->OnInterfaceRemoval("eth1");
    EXPECT_EQ(nothing.count(), 1);
    m_list->OnInterfaceRemoval("eth0");
    EXPECT_EQ(nothing.count(), 2) << "it may have come back before its removal is told";
    EXPECT_FALSE(Button("actionShowProperties")->isEnabled());

    Click(Row(0, 0));
    RemoveInterface("eth0");
    WaitForCameras(0);
    m_list->OnInterfaceRemoval("eth0");
    EXPECT_GE(nothing.count(), 3);
    EXPECT_FALSE(Button("actionShowProperties")->isEnabled());
    EXPECT_EQ(TopLevelNames(), (QStringList{"Empty Adapter", "Host Controller"}));
}

TEST_F(DeviceListTest, SelectByHandleActsAsAClickAndIgnoresWhatHasNoRow) {
    Show();
    const QSignalSpy cameraUpdated(m_list.get(), &wDeviceList::CameraUpdated);
    const QSignalSpy interfaceUpdated(m_list.get(), &wDeviceList::InterfaceUpdated);
    m_list->SelectDevice(m_second);
    m_list->SelectInterface(m_usb);
    EXPECT_EQ(cameraUpdated.count(), 1);
    EXPECT_EQ(interfaceUpdated.count(), 1);
    EXPECT_EQ(CurrentRow()[0], "Host Controller");
    m_list->SelectDevice({});
    AddInterface("new");
    AddCamera("99", "interface=new");
    m_list->SelectDevice(Find("99"));
    m_list->SelectInterface(m_system->GetInterfaces(false).GetByIndex(3));
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
    EXPECT_EQ(display[0][1].value<Norvane::CameraPtr>(), m_second);
}

} // namespace
