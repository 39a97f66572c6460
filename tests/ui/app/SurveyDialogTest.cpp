#include "SettingsFile.h"
#include "wSurveyDialog.h"

#include <QCheckBox>
#include <QDesktopServices>
#include <QFile>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <QUrl>

#include <gtest/gtest.h>

namespace {

/// Takes the place of the browser.
class Browser : public QObject {
    Q_OBJECT

public:
    Browser() { QDesktopServices::setUrlHandler("https", this, "Open"); }
    ~Browser() override { QDesktopServices::unsetUrlHandler("https"); }
    Q_INVOKABLE void Open(const QUrl& url) { pages << url; }

    QList<QUrl> pages;
};

class SurveyDialogTest : public testing::Test {
protected:
    SurveyDialogTest() {
        QFile::remove(SettingsFilePath());
        Settings().setValue("AppOpensSinceReset", 9);
    }

    static QSettings& Settings() {
        static QSettings settings(SettingsFilePath(), QSettings::IniFormat);
        settings.sync();
        return settings;
    }

    void Press(wSurveyDialog& dialog, const QString& text) {
        for (auto* button : dialog.findChildren<QPushButton*>()) {
            if (button->text() == text) {
                QTest::mouseClick(button, Qt::LeftButton);
                return;
            }
        }
        FAIL() << "no button " << text.toStdString();
    }

    Browser m_browser;
};

TEST_F(SurveyDialogTest, SureOpensTheSurveyAndStartsTheCountAgain) {
    wSurveyDialog dialog(nullptr);
    EXPECT_EQ(dialog.windowTitle(), "Altrona Software Survey");
    EXPECT_EQ(dialog.windowModality(), Qt::ApplicationModal);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    Press(dialog, "&Sure");
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(m_browser.pages.size(), 1);
    EXPECT_EQ(Settings().value("AppOpensSinceReset").toUInt(), 0U);
    EXPECT_FALSE(dialog.PreferNoPopup());
    EXPECT_FALSE(Settings().contains("NoFutureSurveyPopup"));
}

TEST_F(SurveyDialogTest, NotNowWithTheBoxTickedIsRememberedAndKeepsTheCount) {
    {
        wSurveyDialog dialog(nullptr);
        dialog.SetDoNotAskCheckBoxVisible(true);
        dialog.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
        dialog.findChild<QCheckBox*>()->setChecked(true);
        Press(dialog, "&Not now");
        EXPECT_TRUE(dialog.PreferNoPopup());
    }
    EXPECT_TRUE(m_browser.pages.isEmpty());
    EXPECT_EQ(Settings().value("AppOpensSinceReset").toUInt(), 9U);
    EXPECT_TRUE(wSurveyDialog(nullptr).PreferNoPopup());
}

TEST_F(SurveyDialogTest, BoxIsUntickedEachTimeItIsShownOrHidden) {
    wSurveyDialog dialog(nullptr);
    auto* box = dialog.findChild<QCheckBox*>();
    for (const bool visible : {true, false}) {
        box->setChecked(true);
        dialog.SetDoNotAskCheckBoxVisible(visible);
        dialog.show();
        EXPECT_EQ(box->isVisible(), visible);
        EXPECT_FALSE(box->isChecked());
    }
}

} // namespace

#include "SurveyDialogTest.moc"
