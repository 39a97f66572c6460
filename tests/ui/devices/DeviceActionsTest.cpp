#include "EmulatorFixture.h"
#include "Handles.h"

#include "SettingsFile.h"
#include "wCameraInfoDialog.h"
#include "wDeviceList.h"
#include "wFirmwareDialog.h"
#include "wPropertyDialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QContextMenuEvent>
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

using Norvane::Test::TextOf;

class DeviceActionsTest : public Norvane::Test::EmulatorFixture {
protected:
    void SetUp() override {
        QFile::remove(SettingsFilePath());
        AddInterface("GigE-0", "name=Adapter <one>");
    }

    void Show(bool visible = true) {
        m_list = std::make_unique<wDeviceList>(m_system->GetInterfaces(false), m_system, nullptr);
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

    /// Opens the context menu of a row, by the pointer or by key, and triggers its only action; the texts of
    /// its actions.
    QStringList UseContextMenu(QTreeWidgetItem* row, bool byKey = false) {
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
        if (byKey) {
            m_tree->setCurrentItem(row);
            QContextMenuEvent event(QContextMenuEvent::Keyboard, m_tree->rect().center());
            QApplication::sendEvent(m_tree, &event);
        } else {
            m_list->OnCustomContextMenu(m_tree->visualItemRect(row).center());
        }
        return texts;
    }

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
        m_list.reset();
        m_system = nullptr;
        AddCamera("1", std::string("model=") + c.model);
        AddCamera("2", std::string("model=") + c.model);
        Start();
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
    AddCamera("1", "model=TRS-10G");
    Start();
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
    AddCamera("1", "model=TRS-10G");
    Start();

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
    AddCamera("1", "address=10.1.1.1");
    AddCamera("2", "address=10.1.1.2");
    AddCamera("3", "address=10.1.1.3");
    AddInterface("usb", "type=U3V");
    AddCamera("4", "interface=usb");
    Start();
    Show();
    const auto fits = [&](const char* serial) {
        return TextOf(Find(serial)->GetTLDeviceNodeMap(), "GevDeviceIsWrongSubnet") == "0";
    };
    // Nothing happens and nothing opens where there is no address to force.
    m_list->OnCustomContextMenu(m_tree->visualItemRect(m_tree->topLevelItem(1)).center());
    m_list->OnCustomContextMenu(m_tree->visualItemRect(m_tree->topLevelItem(1)->child(0)).center());
    m_list->OnCustomContextMenu(QPoint(5, 490));
    m_list->OnAutoForceIP();

    EXPECT_EQ(UseContextMenu(m_tree->topLevelItem(0)->child(1)), QStringList{"Auto Force IP"});
    EXPECT_TRUE(QTest::qWaitFor([&] { return fits("2"); }));
    EXPECT_FALSE(fits("1") || fits("3"));
    EXPECT_EQ(UseContextMenu(m_tree->topLevelItem(0)->child(2), true), QStringList{"Auto Force IP"});
    EXPECT_TRUE(QTest::qWaitFor([&] { return fits("3"); }));
    EXPECT_FALSE(fits("1"));
    EXPECT_EQ(UseContextMenu(m_tree->topLevelItem(0)), QStringList{"Auto Force IP"});
    EXPECT_TRUE(QTest::qWaitFor([&] { return fits("1"); })) << "every camera of the interface";
}

TEST_F(DeviceActionsTest, CopyTakesTheSelectionOfTheMoment) {
    AddCamera("21034567", "model=100%1 <b>");
    Start();
    Show();
    QClipboard* clipboard = QGuiApplication::clipboard();

    m_list->OnItemClicked(m_tree->topLevelItem(0)->child(0), 0);
    Press("actionCopyToClipboard");
    const QString driver =
        QString::fromStdString(TextOf(Find("21034567")->GetTLDeviceNodeMap(), "DeviceDriverVersion"));
    EXPECT_EQ(clipboard->text(), "Device Name : Altrona 100%1 <b>\nDevice Model: 100%1 <b>\n"
                                 "Device ID :  21034567\nDevice Vendor Name :  Altrona\n"
                                 "Device Instance ID :  21034567\nDevice Current Speed :  Gigabit\n"
                                 "Device Access Status :  ReadWrite\nDevice Version :  1.0\n"
                                 "Device Driver Version :  " +
                                     driver);
    auto* dialog = m_list->findChild<wPropertyDialog*>("wPropertyDialog");
    auto* label = dialog->findChild<QLabel*>("prmPropertyLabel");
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_TRUE(
        label->text().startsWith("<font size=5><b>Device Name: </b>Altrona 100%1 &lt;b&gt;</font><br><br>"
                                 "<font size=5><b>Device Model: </b>100%1 &lt;b&gt;</font><br><br>"));
    EXPECT_TRUE(label->text().endsWith("<font size=5><b>Device Driver Version: </b>" + driver + "</font>"));

    m_list->OnItemClicked(m_tree->topLevelItem(0), 0);
    Press("actionShowProperties");
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(dialog->windowTitle(), "Interface Property");
    EXPECT_EQ(label->text(), "<font size=5><b>Interface Display Name: </b>Adapter &lt;one&gt;</font><br><br>"
                             "<font size=5><b>Interface Type: </b>GigEVision</font><br><br>"
                             "<font size=5><b>Interface ID: </b>GigE-0</font>");
    Press("actionCopyToClipboard");
    EXPECT_EQ(clipboard->text(),
              "Interface Display Name: Adapter <one>\nInterface Type: GigEVision\nInterface ID :  GigE-0");
}

TEST_F(DeviceActionsTest, FirmwareDialogOpensForTheSelectedCameraAfterADisconnect) {
    AddCamera("5");
    AddInterface("eth1");
    AddCamera("6", "interface=eth1");
    Start();
    Show();
    const QSignalSpy disconnect(m_list.get(), &wDeviceList::notifyDisconnectDevice);
    m_list->OnItemClicked(m_tree->topLevelItem(1)->child(0), 0);
    Press("actionUpdateFirmware");
    ASSERT_EQ(disconnect.count(), 1);
    EXPECT_EQ(disconnect[0][0].value<Norvane::CameraPtr>(), Find("6"));
    auto* dialog = m_list->findChild<wFirmwareDialog*>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_TRUE(dialog->isModal());
    emit dialog->updateFirmware("file", "6");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !m_tree->isVisible(); }));
}

} // namespace
