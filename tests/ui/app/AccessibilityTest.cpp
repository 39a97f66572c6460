#include "EmulatorFixture.h"

#include "FeatureTreeView.h"
#include "SettingsFile.h"
#include "StartUp.h"
#include "norsimplegui_qt.h"
#include "wDeviceList.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QFontDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QSlider>
#include <QTabBar>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

#include <gtest/gtest.h>

namespace {

constexpr int kWaitMs = 10000;

/// Whether a person uses the widget itself, rather than a part that Qt built into another control.
bool isControl(const QWidget* widget) {
    const bool partOfAnother =
        qobject_cast<QAbstractSpinBox*>(widget->parentWidget()) ||
        qobject_cast<QComboBox*>(widget->parentWidget()) || qobject_cast<QTabBar*>(widget->parentWidget()) ||
        widget->objectName().endsWith("_ext_button") || widget->inherits("QComboBoxListView") ||
        widget->inherits("QLineEditIconButton") || widget->inherits("QTableCornerButton") ||
        qobject_cast<const QHeaderView*>(widget);
    return !partOfAnother &&
           (qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QComboBox*>(widget) ||
            qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QAbstractSpinBox*>(widget) ||
            qobject_cast<const QAbstractItemView*>(widget) || qobject_cast<const QSlider*>(widget) ||
            qobject_cast<const QProgressBar*>(widget) ||
            ((widget->focusPolicy() & Qt::TabFocus) && !widget->focusProxy()));
}

/// The controls of our windows; Qt's own dialogs are Qt's matter.
QList<QWidget*> controls(const QWidget& window) {
    QList<QWidget*> found;
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        bool ofQtsDialog = false;
        for (const QWidget* step = widget; step; step = step->parentWidget()) {
            ofQtsDialog = ofQtsDialog || qobject_cast<const QFontDialog*>(step);
        }
        if (isControl(widget) && !ofQtsDialog) {
            found << widget;
        }
    }
    return found;
}

QString describe(const QWidget* widget) {
    QStringList path;
    for (const QWidget* step = widget; step; step = step->parentWidget()) {
        path.prepend(QString("%1:%2").arg(step->metaObject()->className(), step->objectName()));
    }
    return path.join(" / ");
}

/// The controls that a screen reader could only call "button" or "edit field".
QStringList namelessControls(const QWidget& window) {
    QStringList nameless;
    for (QWidget* widget : controls(window)) {
        QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(widget);
        if (!spoken || spoken->text(QAccessible::Name).trimmed().isEmpty()) {
            nameless << describe(widget);
        }
    }
    return nameless;
}

/// Icons that do not explain themselves under the pointer, and buttons that no key reaches.
QStringList muteOrUnreachableButtons(const QWidget& window) {
    QStringList wrong;
    for (const QWidget* widget : controls(window)) {
        const auto* button = qobject_cast<const QAbstractButton*>(widget);
        if (!button || widget->inherits("QDockWidgetTitleButton")) {
            continue;
        }
        const auto* tool = qobject_cast<const QToolButton*>(widget);
        if (tool && tool->toolButtonStyle() == Qt::ToolButtonIconOnly && tool->toolTip().isEmpty()) {
            wrong << "no tool tip: " + describe(widget);
        }
        if (!(button->focusPolicy() & Qt::TabFocus)) {
            wrong << "no key reaches: " + describe(widget);
        }
    }
    return wrong;
}

using AccessibilityTest = Norvane::Test::EmulatorFixture;

TEST_F(AccessibilityTest, EveryControlHasANameAndAKeyboard) {
    initTavorinResources();
    QFile::remove(SettingsFilePath());
    AddInterface();
    AddCamera("11");
    NorSimpleGUI_QT window(nullptr);
    window.Initialize();
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    // Docks that were closed come back without a pointer, and on keyboards without a Menu key.
    window.activateWindow();
    auto* refresh = window.findChild<QToolButton*>("actionRefresh");
    refresh->setFocus();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(refresh, Qt::Key_F10, Qt::ShiftModifier);
    const auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->actions().value(0)->text(), "Device List");
    QApplication::activePopupWidget()->close();

    auto* list = window.findChild<wDeviceList*>();
    auto* tree = list->findChild<QTreeWidget*>("treeWidget");
    const auto row = [&] { return tree->findItems("11", Qt::MatchExactly | Qt::MatchRecursive, 1).value(0); };
    ASSERT_TRUE(QTest::qWaitFor([&] { return list->OnRefreshDeviceList(), row() != nullptr; }, kWaitMs));
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(row()).center());
    for (const char* name : {"actionShowProperties", "actionUpdateFirmware", "actionRecord"}) {
        auto* button = window.findChild<QToolButton*>(name);
        ASSERT_NE(button, nullptr) << name;
        button->click();
        QCoreApplication::processEvents();
    }
    auto* features = window.findChild<FeatureTreeView*>();
    features->setFocus();
    QTest::keyClick(features, Qt::Key_Home);
    QTest::keyClick(features, Qt::Key_Return, Qt::AltModifier);
    EXPECT_EQ(namelessControls(window).join('\n').toStdString(), "");
    EXPECT_EQ(muteOrUnreachableButtons(window).join('\n').toStdString(), "");
}

} // namespace
