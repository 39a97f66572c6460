#include "EmulatorFixture.h"
#include "Modal.h"

#include "SettingsFile.h"
#include "StartUp.h"
#include "norsimplegui_qt.h"
#include "wDeviceList.h"
#include "wFeaturesTabController.h"
#include "wImageDisplay.h"
#include "wSurveyDialog.h"

#include "norvane/Norvane.h"

#include <QAction>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

#include <gtest/gtest.h>

namespace {

constexpr int kWaitMs = 10000;

class MainWindowTest : public Norvane::Test::EmulatorFixture {
protected:
    void SetUp() override {
        static const bool once = (initTavorinResources(), true);
        Q_UNUSED(once);
        QFile::remove(SettingsFilePath());
        SetCameras({11, 22, 33});
    }

    void SetCameras(const QList<int>& serials) {
        AddInterface("one", "name=Adapter one");
        AddInterface("two");
        for (const int serial : {11, 22, 33}) {
            const std::string name = std::to_string(serial);
            serials.contains(serial) ? AddCamera(name, serial == 33 ? "interface=two" : "interface=one")
                                     : Unplug(name);
        }
    }

    void Open() {
        m_window = std::make_unique<NorSimpleGUI_QT>(nullptr);
        m_window->Initialize();
        m_window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_window.get()));
        m_list = m_window->findChild<wDeviceList*>();
        m_tabs = m_window->findChild<wFeaturesTabController*>();
        ASSERT_TRUE(m_list && m_tabs);
        m_tree = m_list->findChild<QTreeWidget*>("treeWidget");
        ASSERT_TRUE(WaitForRow(22));
    }

    bool WaitForRow(int serial) {
        return QTest::qWaitFor(
            [&] {
                if (!Row(serial)) {
                    m_list->OnRefreshDeviceList();
                }
                return Row(serial) != nullptr;
            },
            kWaitMs);
    }

    QTreeWidgetItem* Row(int serial) const {
        return m_tree->findItems(QString::number(serial), Qt::MatchExactly | Qt::MatchRecursive, 1).value(0);
    }

    void Click(int serial) {
        m_tree->scrollToItem(Row(serial));
        QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, {},
                          m_tree->visualItemRect(Row(serial)).center());
    }

    wImageDisplay* Display(int serial) const {
        for (auto* display : m_window->findChildren<wImageDisplay*>()) {
            int own = -1;
            display->getDeviceSerial(own);
            if (own == serial) {
                return display;
            }
        }
        return nullptr;
    }

    /// The displays that can be seen, by their cameras' numbers.
    QList<int> Displays() const {
        QList<int> serials;
        for (const auto* display : m_window->findChildren<wImageDisplay*>()) {
            int serial = -1;
            display->getDeviceSerial(serial);
            if (display->isVisible()) {
                serials << serial;
            }
        }
        std::sort(serials.begin(), serials.end());
        return serials;
    }

    static Norvane::CameraPtr Camera(int serial) {
        const Norvane::CameraList cameras = Norvane::System::GetInstance()->GetCameras(false);
        for (unsigned int i = 0; i < cameras.GetSize(); ++i) {
            if (cameras.GetByIndex(i)->GetDeviceNumber() == static_cast<unsigned int>(serial)) {
                return cameras.GetByIndex(i);
            }
        }
        return {};
    }

    QStringList Selected() const {
        const QTreeWidgetItem* row = m_tree->currentItem();
        return row ? QStringList{row->text(0), row->text(1)} : QStringList();
    }

    static QVariant Stored(const QString& key) {
        return QSettings(SettingsFilePath(), QSettings::IniFormat).value(key);
    }

    std::unique_ptr<NorSimpleGUI_QT> m_window;
    wDeviceList* m_list = nullptr;
    wFeaturesTabController* m_tabs = nullptr;
    QTreeWidget* m_tree = nullptr;
};

TEST_F(MainWindowTest, MenusDocksAndTitle) {
    Open();
    const Norvane::LibraryVersion version = Norvane::System::GetInstance()->GetLibraryVersion();
    EXPECT_EQ(m_window->windowTitle(), QString("Tavorin %1.%2.%3.%4")
                                           .arg(version.major)
                                           .arg(version.minor)
                                           .arg(version.type)
                                           .arg(version.build));
    EXPECT_EQ(m_window->dockWidgetArea(m_list), Qt::LeftDockWidgetArea);
    EXPECT_EQ(m_window->dockWidgetArea(m_tabs), Qt::LeftDockWidgetArea);
    EXPECT_FALSE(m_window->windowIcon().isNull());

    const auto texts = [](const QMenu* menu) {
        QStringList result;
        for (const QAction* action : menu->actions()) {
            result << action->text();
            EXPECT_FALSE(action->menu() ? false : action->toolTip().isEmpty());
            EXPECT_TRUE(action->shortcut().isEmpty());
        }
        return result;
    };
    EXPECT_EQ(texts(m_window->findChild<QMenu*>("menuFile")),
              (QStringList{"&Reset Application Settings", "&Exit"}));
    const QMenu* help = m_window->findChild<QMenu*>("menuHelp");
    EXPECT_TRUE(help->toolTipsVisible());
    EXPECT_EQ(texts(help),
              (QStringList{"Documentation", "&Give Feedback", "&Contact Support", "&About", "&License"}));
    ASSERT_NE(help->actions()[0]->menu(), nullptr);

    const std::unique_ptr<QMenu> popup(m_window->createPopupMenu());
    EXPECT_EQ(texts(popup.get()), (QStringList{"Device List", "Tree View"}));
    popup->actions()[0]->trigger();
    EXPECT_FALSE(m_list->isVisible());
}

TEST_F(MainWindowTest, BoxesOfTheHelpMenu) {
    Open();
    QStringList boxes;
    WhenModal<QMessageBox> close([&](QMessageBox* box) {
        boxes << box->windowTitle() << box->text();
        box->close();
        return true;
    });
    m_window->About();
    m_window->License();
    ASSERT_EQ(boxes.size(), 4);
    EXPECT_EQ(boxes[0], "About Tavorin");
    EXPECT_TRUE(boxes[1].startsWith("Norvane 2.6.0.160\n\nViewer application for Norvane Library.\n\n"));
    const QString year = QString::number(QDate::currentDate().year());
    EXPECT_TRUE(boxes[1].contains(year));
    EXPECT_EQ(boxes[2], "License");
    EXPECT_TRUE(boxes[3].contains("Permission is hereby granted"));
    EXPECT_TRUE(boxes[3].endsWith(boxes[1].section('\n', -1)));

    m_window->Survey();
    auto* survey = m_window->findChild<wSurveyDialog*>();
    EXPECT_TRUE(survey->isVisible());
    survey->reject();
}

TEST_F(MainWindowTest, StartsAreCountedAndResetEmptiesTheFile) {
    for (unsigned int start = 1; start <= 2; ++start) {
        NorSimpleGUI_QT window(nullptr);
        EXPECT_EQ(Stored("AppOpensSinceReset").toUInt(), start);
    }
    NorSimpleGUI_QT window(nullptr);
    QSettings(SettingsFilePath(), QSettings::IniFormat).setValue("DoNotShowInfoDialog_TRS", true);
    window.ResetApplicationSettings();
    EXPECT_TRUE(QSettings(SettingsFilePath(), QSettings::IniFormat).allKeys().isEmpty());
}

TEST_F(MainWindowTest, ACameraIsShownOnceAndADoubleClickStreams) {
    Open();
    Click(11);
    ASSERT_EQ(Displays(), QList<int>{11});
    const wImageDisplay* display = Display(11);
    EXPECT_EQ(m_window->dockWidgetArea(Display(11)), Qt::RightDockWidgetArea);
    EXPECT_EQ(m_tabs->GetCurrentDeviceSerialNumber(), 11);
    Click(11);
    EXPECT_EQ(Display(11), display);
    EXPECT_EQ(m_window->findChildren<wImageDisplay*>().size(), 1);

    QTest::mouseDClick(m_tree->viewport(), Qt::LeftButton, {}, m_tree->visualItemRect(Row(11)).center());
    EXPECT_TRUE(QTest::qWaitFor([&] { return Camera(11)->IsStreaming(); }, kWaitMs));

    Display(11)->close();
    EXPECT_FALSE(Camera(11)->IsStreaming());
    EXPECT_FALSE(Camera(11)->IsInitialized());
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_window->findChildren<wImageDisplay*>().isEmpty(); }, kWaitMs));
}

TEST_F(MainWindowTest, DisconnectRetiresTheDisplayAndSelectsTheNextTheLastOrTheInterface) {
    Open();
    auto* disconnect = m_list->findChild<QToolButton*>("actionDisconnectDevice");
    for (const int serial : {11, 22, 33}) {
        Click(serial);
    }
    ASSERT_EQ(Displays(), (QList<int>{11, 22, 33}));

    Click(22);
    QTest::mouseClick(disconnect, Qt::LeftButton);
    EXPECT_FALSE(Camera(22)->IsInitialized());
    EXPECT_EQ(Displays(), (QList<int>{11, 33}));
    EXPECT_EQ(Selected()[1], "33");
    EXPECT_EQ(m_tabs->GetCurrentDeviceSerialNumber(), 33);

    QTest::mouseClick(disconnect, Qt::LeftButton);
    EXPECT_EQ(Selected()[1], "11");
    QTest::mouseClick(disconnect, Qt::LeftButton);
    EXPECT_EQ(Selected(), (QStringList{"Adapter one", ""}));
    EXPECT_TRUE(Displays().isEmpty());
    EXPECT_EQ(m_tabs->GetCurrentDeviceSerialNumber(), -1);

    // A retired display is no obstacle to opening the camera anew.
    Click(22);
    EXPECT_EQ(Displays(), QList<int>{22});
}

// The retired display is deleted with the next removal of any camera, long after its camera was opened anew.
TEST_F(MainWindowTest, ARetiredDisplayLeavesItsCamerasNewStreamAlone) {
    Open();
    Click(22);
    Click(11);
    m_window->OnDoubleClickStream(11);
    m_window->OnDeviceDisconnect(Camera(11));
    Click(11);
    m_window->OnDoubleClickStream(11);
    ASSERT_TRUE(QTest::qWaitFor([&] { return Camera(11)->IsStreaming(); }, kWaitMs));
    SetCameras({11, 33});
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return m_window->findChildren<wImageDisplay*>().size() == 1; }, kWaitMs));
    EXPECT_TRUE(Camera(11)->IsStreaming());
}

TEST_F(MainWindowTest, UnpluggedCamerasLeaveEvenWhileTheyStream) {
    Open();
    Click(11);
    Click(33);
    Click(22);
    for (const int serial : {11, 22}) {
        m_window->OnDoubleClickStream(serial);
        ASSERT_TRUE(QTest::qWaitFor([&] { return Camera(serial)->IsStreaming(); }, kWaitMs));
    }
    SetCameras({11});
    EXPECT_TRUE(QTest::qWaitFor([&] { return Displays() == QList<int>{11}; }, kWaitMs));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !Row(22) && !Row(33) && Row(11); }, kWaitMs));
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return m_window->findChildren<wImageDisplay*>().size() == 1; }, kWaitMs));
    EXPECT_TRUE(Camera(11)->IsStreaming());

    // The one that comes back is the same camera again.
    SetCameras({11, 22});
    ASSERT_TRUE(WaitForRow(22));
    Click(22);
    EXPECT_EQ(Displays(), (QList<int>{11, 22}));
    ASSERT_EQ(m_tabs->GetCurrentDeviceSerialNumber(), 22);

    RemoveInterface("one");
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_tabs->GetCurrentDeviceSerialNumber() == -1; }, kWaitMs));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !Row(22) && Displays().isEmpty(); }, kWaitMs));
    EXPECT_EQ(m_tabs->windowTitle(), "Features");
}

TEST_F(MainWindowTest, ClosingTheWindowDisconnectsEveryCamera) {
    Open();
    for (const int serial : {11, 33, 22}) {
        Click(serial);
        m_window->OnDoubleClickStream(serial);
    }
    Display(33)->setFloating(true);
    const Norvane::SystemPtr system = Norvane::System::GetInstance(); // outlives the handles
    const QList<Norvane::CameraPtr> cameras{Camera(11), Camera(22), Camera(33)};
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return cameras[0]->IsStreaming() && cameras[2]->IsStreaming(); }, kWaitMs));
    EXPECT_TRUE(m_window->close());
    for (const auto& camera : cameras) {
        EXPECT_FALSE(camera->IsStreaming());
        EXPECT_FALSE(camera->IsInitialized());
    }
    m_window.reset();
}

TEST_F(MainWindowTest, SurveyIsOfferedOncePerRunFromTheSeventhStart) {
    struct Case {
        int startsBefore;
        bool unwanted;
        int offers;
    };
    for (const Case& c : {Case{5, false, 0}, Case{6, false, 1}, Case{6, true, 0}}) {
        SCOPED_TRACE(testing::Message() << c.startsBefore << (c.unwanted ? ", unwanted" : ""));
        QSettings settings(SettingsFilePath(), QSettings::IniFormat);
        settings.setValue("AppOpensSinceReset", c.startsBefore);
        settings.setValue("NoFutureSurveyPopup", c.unwanted);
        settings.sync();
        Open();
        WhenModal<wSurveyDialog> survey([](wSurveyDialog* dialog) {
            dialog->reject();
            return true;
        });
        Click(11);
        Click(22);
        m_window->OnDeviceDisconnect(Camera(11));
        EXPECT_EQ(survey.taken, 0) << "two displays were open";
        m_window->OnDeviceDisconnect(Camera(22));
        EXPECT_EQ(survey.taken, c.offers);
        Click(11);
        m_window->OnDeviceDisconnect(Camera(11));
        EXPECT_EQ(survey.taken, c.offers);
        m_window.reset();
    }
}

TEST_F(MainWindowTest, FileTransfersLockTheWindow) {
    Open();
    CustomTabInterface* fileAccess = m_tabs->GetWidget(wFeaturesTabController::FileAccessTabIndex);
    ASSERT_NE(fileAccess, nullptr);
    QMetaObject::invokeMethod(fileAccess, "FileOperationStatusChanged", Q_ARG(bool, true));
    EXPECT_FALSE(m_window->isEnabled());
    QMetaObject::invokeMethod(fileAccess, "FileOperationStatusChanged", Q_ARG(bool, false));
    EXPECT_TRUE(m_window->isEnabled());
}

TEST_F(MainWindowTest, NewDisplayTakesTheWidthThatTheDocksLeave) {
    Open();
    m_window->resize(1400, 800);
    Click(11);
    QCoreApplication::processEvents();
    EXPECT_GT(Display(11)->width(), 1400 - m_list->width() - 60);
    m_tabs->setFloating(true);
    m_list->setFloating(true);
    Click(22);
    QCoreApplication::processEvents();
    EXPECT_GT(Display(22)->width(), 1300);
}

} // namespace
