#include "FakeLibrary.h"

#include "SettingsFile.h"
#include "wCameraInfoDialog.h"
#include "wDeviceList.h"
#include "wFirmwareDialog.h"
#include "wPropertyDialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>

#include <gtest/gtest.h>

namespace {

class DeviceActionsTest : public testing::Test {
protected:
    void SetUp() override { QFile::remove(SettingsFilePath()); }

    void Show(bool visible = true) {
        m_list = std::make_unique<wDeviceList>(m_system->GetInterfaces(false), Norvane::SystemPtr(m_system),
                                               nullptr);
        m_list->resize(400, 500);
        m_tree = m_list->findChild<QTreeWidget*>("treeWidget");
        if (visible) {
            m_list->show();
            ASSERT_TRUE(QTest::qWaitForWindowExposed(m_list.get()));
        }
    }

    QList<wCameraInfoDialog*> Notices() const { return m_list->findChildren<wCameraInfoDialog*>(); }

    void Press(const char* button) {
        QTest::mouseClick(m_list->findChild<QToolButton*>(button), Qt::LeftButton);
    }

    /// Opens the context menu of a row and triggers its only action; the texts of its actions.
    QStringList UseContextMenu(QTreeWidgetItem* row) {
        QStringList texts;
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, [&] {
            if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
                watch.stop();
                for (const QAction* action : menu->actions()) {
                    texts << action->text();
                }
                QTest::mouseClick(menu, Qt::LeftButton, {},
                                  menu->actionGeometry(menu->actions()[0]).center());
            }
        });
        watch.start(10);
        m_list->OnCustomContextMenu(m_tree->visualItemRect(row).center());
        return texts;
    }

    static std::vector<std::pair<std::int64_t, std::int64_t>> Writes(const RecordingPort& port) {
        std::vector<std::pair<std::int64_t, std::int64_t>> result;
        for (const auto& write : port.writes) {
            result.emplace_back(write.address, write.value);
        }
        return result;
    }

    std::shared_ptr<FakeSystem> m_system = std::make_shared<FakeSystem>();
    std::unique_ptr<wDeviceList> m_list;
    QTreeWidget* m_tree = nullptr;
};

TEST_F(DeviceActionsTest, NoticesComeOncePerFamilyByModelName) {
    struct Case {
        const char* model;
        const char* title; ///< null for no notice
    };
    for (const Case& c : {Case{"EML-U3-DL2", "A Emberlyn Deep Learning camera has been detected."},
                          Case{"TRS-10G", "An Tarsel camera has been detected."}, Case{"EML-U3", nullptr},
                          Case{"Duskwing DL", nullptr}, Case{"eml dl trs", nullptr}}) {
        SCOPED_TRACE(c.model);
        m_system = std::make_shared<FakeSystem>();
        auto interface = m_system->Add("eth0", "Adapter");
        interface->Add({1, c.model});
        interface->Add({2, c.model});
        Show();
        m_list->OnRefreshDeviceList();
        ASSERT_EQ(Notices().size(), c.title ? 1 : 0);
        if (c.title) {
            EXPECT_EQ(Notices()[0]->windowTitle(), c.title);
            EXPECT_TRUE(QTest::qWaitForWindowExposed(Notices()[0]));
            EXPECT_EQ(Notices()[0]->width(), 530);
        }
    }
}

TEST_F(DeviceActionsTest, NoticeWaitsUntilTheListIsSeen) {
    m_system->Add("eth0", "Adapter")->Add({1, "TRS-10G"});
    Show(false);
    ASSERT_EQ(Notices().size(), 1);
    EXPECT_FALSE(Notices()[0]->isVisible());
    m_list->show();
    EXPECT_TRUE(QTest::qWaitFor([&] { return Notices()[0]->isVisible(); }));
    Notices()[0]->close();
    m_list->hide();
    m_list->show();
    QCoreApplication::processEvents();
    EXPECT_FALSE(Notices()[0]->isVisible());
}

TEST_F(DeviceActionsTest, OnlyATickedBoxAndOkSilenceANotice) {
    const QString key = "DoNotShowInfoDialog_TRS";
    const auto stored = [&] { return QSettings(SettingsFilePath(), QSettings::IniFormat).value(key); };
    m_system->Add("eth0", "Adapter")->Add({1, "TRS-10G"});

    Show();
    Notices()[0]->findChild<QCheckBox*>()->setChecked(true);
    Notices()[0]->close();
    EXPECT_EQ(stored().toBool(), false);
    EXPECT_TRUE(stored().isValid());

    Show();
    ASSERT_EQ(Notices().size(), 1);
    QTest::mouseClick(Notices()[0]->findChild<QCheckBox*>(), Qt::LeftButton, {}, QPoint(8, 10));
    QTest::mouseClick(Notices()[0]->findChild<QPushButton*>(), Qt::LeftButton);
    EXPECT_FALSE(Notices()[0]->isVisible());
    EXPECT_EQ(stored().toBool(), true);

    Show();
    EXPECT_EQ(Notices().size(), 0);
}

TEST_F(DeviceActionsTest, ForceIpReachesTheRowUnderThePointer) {
    auto gigE = m_system->Add("eth0", "Adapter");
    gigE->Add({1});
    auto second = gigE->Add({2});
    auto usb = m_system->Add("usb", "Controller", false);
    usb->Add({3, "Duskwing U", false});
    Show();

    EXPECT_EQ(UseContextMenu(m_tree->topLevelItem(0)), QStringList{"Auto Force IP"});
    using Write = std::pair<std::int64_t, std::int64_t>;
    EXPECT_EQ(Writes(*gigE->port), (std::vector<Write>{{kDeviceSelectorAddress, 0},
                                                       {kForceIpAddress, 1},
                                                       {kDeviceSelectorAddress, 1},
                                                       {kForceIpAddress, 1}}));
    EXPECT_TRUE(second->port->writes.empty());

    EXPECT_EQ(UseContextMenu(m_tree->topLevelItem(0)->child(1)), QStringList{"Auto Force IP"});
    EXPECT_EQ(Writes(*second->port), (std::vector<Write>{{kForceIpAddress, 1}}));

    m_list->OnCustomContextMenu(m_tree->visualItemRect(m_tree->topLevelItem(1)).center());
    m_list->OnCustomContextMenu(m_tree->visualItemRect(m_tree->topLevelItem(1)->child(0)).center());
    m_list->OnCustomContextMenu(QPoint(5, 490));
    m_list->OnAutoForceIP();
    EXPECT_EQ(gigE->port->writes.size(), 4U);
    EXPECT_EQ(second->port->writes.size(), 1U);
}

TEST_F(DeviceActionsTest, CopyTakesTheSelectionOfTheMoment) {
    auto interface = m_system->Add("eth0", "Adapter <one>");
    interface->Add({21034567, "100%1 <b>"});
    Show();
    QClipboard* clipboard = QGuiApplication::clipboard();

    m_list->OnItemClicked(m_tree->topLevelItem(0)->child(0), 0);
    Press("actionCopyToClipboard");
    EXPECT_EQ(clipboard->text(), "Device Name : 100%1 <b> (21034567)\nDevice Model: 100%1 <b>\n"
                                 "Device ID :  ID-21034567\nDevice Vendor Name :  Altrona\n"
                                 "Device Instance ID :  instance\nDevice Current Speed :  Gigabit\n"
                                 "Device Access Status :  OpenReadWrite\nDevice Version :  1.5\n"
                                 "Device Driver Version :  none");
    auto* dialog = m_list->findChild<wPropertyDialog*>("wPropertyDialog");
    auto* label = dialog->findChild<QLabel*>("prmPropertyLabel");
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_TRUE(
        label->text().startsWith("<font size=5><b>Device Name: </b>100%1 &lt;b&gt; (21034567)</font><br><br>"
                                 "<font size=5><b>Device Model: </b>100%1 &lt;b&gt;</font><br><br>"));
    EXPECT_TRUE(label->text().endsWith("<font size=5><b>Device Driver Version: </b>none</font>"));

    m_list->OnItemClicked(m_tree->topLevelItem(0), 0);
    Press("actionShowProperties");
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(dialog->windowTitle(), "Interface Property");
    EXPECT_EQ(label->text(), "<font size=5><b>Interface Display Name: </b>Adapter &lt;one&gt;</font><br><br>"
                             "<font size=5><b>Interface Type: </b>GigEVision</font><br><br>"
                             "<font size=5><b>Interface ID: </b>eth0</font>");
    Press("actionCopyToClipboard");
    EXPECT_EQ(clipboard->text(),
              "Interface Display Name: Adapter <one>\nInterface Type: GigEVision\nInterface ID :  eth0");
}

TEST_F(DeviceActionsTest, FirmwareDialogOpensForTheSelectedCameraAfterADisconnect) {
    m_system->Add("eth0", "Adapter")->Add({5});
    auto camera = m_system->Add("eth1", "Other")->Add({6});
    Show();
    const QSignalSpy disconnect(m_list.get(), &wDeviceList::notifyDisconnectDevice);
    m_list->OnItemClicked(m_tree->topLevelItem(1)->child(0), 0);
    Press("actionUpdateFirmware");
    ASSERT_EQ(disconnect.count(), 1);
    EXPECT_EQ(disconnect[0][0].value<Norvane::CameraPtr>(), HandleOf(camera));
    auto* dialog = m_list->findChild<wFirmwareDialog*>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_TRUE(dialog->isModal());
    emit dialog->updateFirmware("file", "6");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !m_tree->isVisible(); }));
}

} // namespace
