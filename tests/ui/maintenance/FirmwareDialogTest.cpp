#include "EmulatorFixture.h"

#include "FirmwareUpdater.h"
#include "wFirmwareDialog.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QGroupBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

/// What the firmware dialog needs of the device list.
class ProgressOwner : public QWidget {
    Q_OBJECT

public slots:
    void ToggleProgressBarView(bool show) { shown = show; }

public:
    bool shown = false;
};

class FirmwareDialogTest : public Norvane::Test::EmulatorFixture {
protected:
    /// Presses a button of the dialog and answers the box or the file dialog that opens.
    void Press(QAbstractButton* button, QMessageBox::StandardButton answer, const QString& path = {}) {
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, [&] {
            QWidget* modal = QApplication::activeModalWidget();
            if (auto* box = qobject_cast<QMessageBox*>(modal)) {
                m_boxTitle = box->windowTitle();
                m_boxText = box->text();
                m_defaultButton = box->standardButton(box->defaultButton());
                box->button(answer)->click();
            } else if (auto* chooser = qobject_cast<QFileDialog*>(modal)) {
                m_boxTitle = chooser->windowTitle();
                chooser->findChild<QLineEdit*>("fileNameEdit")->setText(path);
                QMetaObject::invokeMethod(chooser, "accept", Qt::QueuedConnection);
            }
        });
        watch.start(20);
        QTest::mouseClick(button, Qt::LeftButton);
    }

    QPushButton* Ok() {
        return m_dialog.findChild<QDialogButtonBox*>("prmFwUpdateButtonBox")->button(QDialogButtonBox::Ok);
    }

    QStringList Row() {
        const auto* table = m_dialog.findChild<QTableWidget*>("prmDeviceTable");
        QStringList texts;
        for (int column = 0; column < 4; ++column) {
            texts << table->item(0, column)->text();
        }
        return texts;
    }

    void ChooseFile() {
        QFile file(m_folder.filePath("camera.ez2"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        Press(m_dialog.findChild<QPushButton*>("prmBrowseButton"), QMessageBox::Ok, file.fileName());
        EXPECT_EQ(m_boxTitle, "Open Firmware File");
        EXPECT_EQ(m_dialog.findChild<QLineEdit*>("prmFilePathEdit")->text(), file.fileName());
    }

    void SetUp() override {
        AddInterface();
        AddCamera("55");
        AddInterface("usb", "type=U3V");
        AddCamera("7", "interface=usb\nmodel=Duskwing U");
        Start();
    }

    void Open(const std::string& serial) {
        m_dialog.SetCamera(Find(serial));
        m_dialog.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_dialog));
    }

    QTemporaryDir m_folder;
    ProgressOwner m_owner;
    wFirmwareDialog m_dialog{&m_owner};
    QSignalSpy m_update{&m_dialog, &wFirmwareDialog::updateFirmware};
    QString m_boxTitle, m_boxText;
    QMessageBox::StandardButton m_defaultButton = QMessageBox::NoButton;
};

TEST_F(FirmwareDialogTest, ShowsTheCamerasIdentity) {
    Open("55");
    EXPECT_EQ(m_dialog.windowTitle(), "Firmware Update");
    EXPECT_EQ(m_dialog.findChild<QGroupBox*>("prmDeviceGroupBox")->title(), "Device Information");
    EXPECT_EQ(Row(), (QStringList{"Duskwing S", "Altrona", "169.254.10.20", "1.0.0"}));
    m_dialog.SetCamera(Find("7"));
    EXPECT_EQ(Row(), (QStringList{"Duskwing U", "Altrona", "", "1.0.0"}));
    m_dialog.SetCamera({});
    EXPECT_EQ(Row(), (QStringList{"", "", "", ""}));
}

TEST_F(FirmwareDialogTest, OnlyYesStartsTheUpdate) {
    Open("7");
    ChooseFile();
    Press(Ok(), QMessageBox::No);
    EXPECT_EQ(m_boxTitle, "Firmware Update");
    EXPECT_EQ(m_boxText, "WARNING!\n\nDo not connect or disconnect ANY cameras while updating firmware.\n Do "
                         "you wish to Continue?");
    EXPECT_EQ(m_defaultButton, QMessageBox::No);
    EXPECT_FALSE(m_dialog.isVisible());
    EXPECT_EQ(m_update.count(), 0);

    // A file chosen for one camera does not serve the next one.
    Open("55");
    Press(Ok(), QMessageBox::Ok);
    EXPECT_EQ(m_boxTitle, "No firmware file selected!");

    ChooseFile();
    Press(Ok(), QMessageBox::Yes);
    EXPECT_FALSE(m_dialog.isVisible());
    ASSERT_EQ(m_update.count(), 1);
    EXPECT_EQ(m_update[0][0].toString(), m_folder.filePath("camera.ez2"));
    EXPECT_EQ(m_update[0][1].toString(), "55");
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_owner.shown; }));
}

TEST(ProgressCallbackTest, KeepsTheActionAndPassesEverythingOn) {
    static QStringList calls;
    EXPECT_EQ(ProgressCallbackFcn("Erasing", 1, 2, 3), 1);
    EXPECT_EQ(LastFirmwareAction(), "Erasing");
    // Only the first character is looked for.
    EXPECT_EQ(ProgressCallbackFcn("rewriting", 1, 2, 3), 1);
    EXPECT_EQ(LastFirmwareAction(), "Erasing");
    SetShowProgressFunction([](const char* action, unsigned int percent, int a, int b) {
        calls << QString("%1 %2 %3 %4").arg(action).arg(percent).arg(a).arg(b);
    });
    EXPECT_EQ(ProgressCallbackFcn("Writing", 50, 4, 5), 1);
    EXPECT_EQ(ProgressCallbackFcn(nullptr, 60, 4, 5), 1);
    SetShowProgressFunction(nullptr);
    EXPECT_EQ(LastFirmwareAction(), "Writing");
    EXPECT_EQ(calls, (QStringList{"Writing 50 4 5", " 60 4 5"}));
}

} // namespace

#include "FirmwareDialogTest.moc"
