#include "TreeFixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPixmap>
#include <QWheelEvent>

using namespace Norvane::GenApi;

namespace {

// Registers of the camera under test.
constexpr std::int64_t kReset = 0;
constexpr std::int64_t kFlag = 4;
constexpr std::int64_t kMode = 8;
constexpr std::int64_t kWidth = 12;
constexpr std::int64_t kLock = 16;
constexpr std::int64_t kLevel = 20;

const std::string kNodes =
    category("Root", "Control") + category("Control", "Reset Flag Mode Width Fixed Lockable Level Raw") +
    "<Command Name=\"Reset\"><pValue>ResetReg</pValue><CommandValue>3</CommandValue></Command>"
    "<Boolean Name=\"Flag\"><pIsLocked>Lock</pIsLocked><pValue>FlagReg</pValue></Boolean>"
    "<Enumeration Name=\"Mode\">"
    "<EnumEntry Name=\"EnumEntry_Mode_Off\"><Value>0</Value><Symbolic>Off</Symbolic></EnumEntry>"
    "<EnumEntry Name=\"EnumEntry_Mode_Once\"><Value>1</Value><Symbolic>Once</Symbolic></EnumEntry>"
    "<EnumEntry Name=\"EnumEntry_Mode_Auto\"><Value>2</Value><Symbolic>Auto</Symbolic></EnumEntry>"
    "<pValue>ModeReg</pValue></Enumeration>" +
    integer("ResetReal", kReset) + integer("FlagReal", kFlag) + integer("ModeReal", kMode) +
    integer("Width", kWidth, "<Min>2</Min><Max>200</Max><Inc>4</Inc>") + integer("Lock", kLock) +
    integer("Level", kLevel, "<Min>0</Min><Max>100</Max><Representation>Logarithmic</Representation>") +
    "<Integer Name=\"ResetReg\"><pValue>ResetReal</pValue></Integer>"
    "<Integer Name=\"FlagReg\"><pValue>FlagReal</pValue></Integer>"
    "<Integer Name=\"ModeReg\"><pValue>ModeReal</pValue></Integer>" +
    "<Integer Name=\"Lockable\"><pIsLocked>Lock</pIsLocked><Value>5</Value></Integer>" +
    integer("Fixed", 24, {}, "RO") +
    "<Register Name=\"Raw\"><Address>28</Address><Length>8</Length><AccessMode>RW</AccessMode>"
    "<pPort>Device</pPort></Register>";

class EditorTest : public TreeFixture {
protected:
    EditorTest() {
        auto camera = std::make_shared<TestCamera>(kNodes, category("Root", ""), category("Root", ""));
        camera->port->setValue(kWidth, 10);
        show(camera);
    }
    int writes(std::int64_t address) const { return m_camera->port->writes(address); }
    std::uint32_t value(std::int64_t address) const { return m_camera->port->value(address); }
    void setLock(bool locked) { CIntegerPtr(m_camera->deviceMap->GetNode("Lock"))->SetValue(locked ? 1 : 0); }
};

TEST_F(EditorTest, AClickRunsACommandOnce) {
    click(cell("Reset"));
    EXPECT_EQ(writes(kReset), 1);
    EXPECT_EQ(value(kReset), 3U);
    EXPECT_EQ(view()->viewport()->findChildren<QWidget*>().size(), 0) << "a command has no editor";

    // A view opens the editor of a selected cell only when no double click can follow any more.
    QApplication::setDoubleClickInterval(30);
    const auto passDoubleClickTime = [] { QTest::qWait(QApplication::doubleClickInterval() + 50); };

    // The row is selected already, the other cell is current: the click must not count twice.
    passDoubleClickTime();
    click(cell("Reset").sibling(cell("Reset").row(), 0));
    passDoubleClickTime();
    click(cell("Reset"));
    EXPECT_EQ(writes(kReset), 2);
    passDoubleClickTime();
    EXPECT_EQ(writes(kReset), 2);
    click(cell("Reset"));
    EXPECT_EQ(writes(kReset), 3) << "a click on the current command runs it again, at once";
}

TEST_F(EditorTest, TheKeyboardWalksPastCommandsAndRunsThemOnRequest) {
    view()->setFocus();
    view()->setCurrentIndex(cell("Reset").parent().sibling(0, 0));
    for (int i = 0; i < 12; ++i) {
        QTest::keyClick(view(), Qt::Key_Down);
    }
    view()->setCurrentIndex(cell("Reset").sibling(cell("Reset").row(), 0));
    QTest::keyClick(view(), Qt::Key_Right);
    EXPECT_EQ(view()->currentIndex(), cell("Reset"));
    QTest::keyClick(view(), Qt::Key_A);
    EXPECT_EQ(writes(kReset), 0);
    QTest::keyClick(view(), Qt::Key_Space);
    EXPECT_EQ(writes(kReset), 1);
    QTest::keyClick(view(), Qt::Key_Return);
    EXPECT_EQ(writes(kReset), 2);
    QTest::keyClick(view(), Qt::Key_Left);
    QTest::keyClick(view(), Qt::Key_F2);
    EXPECT_EQ(writes(kReset), 3) << "from the name, a key edits the value";
}

TEST_F(EditorTest, TheClickThatOpensACheckBoxFlipsIt) {
    click(cell("Flag"));
    ASSERT_TRUE(editor<QCheckBox>());
    EXPECT_EQ(value(kFlag), 1U);
    EXPECT_EQ(writes(kFlag), 1);
    EXPECT_TRUE(cell("Flag").data(Qt::EditRole).toBool());
    EXPECT_TRUE(editor<QCheckBox>()->isChecked());

    // A change by the camera reaches the open editor and is not written back.
    CBooleanPtr(m_camera->deviceMap->GetNode("Flag"))->SetValue(false);
    EXPECT_FALSE(editor<QCheckBox>()->isChecked());
    EXPECT_EQ(writes(kFlag), 2);
}

TEST_F(EditorTest, AKeyThatReachesACheckBoxDoesNotFlipIt) {
    view()->setFocus();
    view()->scrollTo(cell("Flag"));
    QCursor::setPos(view()->viewport()->mapToGlobal(view()->visualRect(cell("Flag")).center()));
    view()->setCurrentIndex(cell("Flag").sibling(cell("Flag").row(), 0));
    QTest::keyClick(view(), Qt::Key_Right);
    ASSERT_TRUE(editor<QCheckBox>());
    EXPECT_EQ(writes(kFlag), 0);
    QTest::keyClick(editor<QCheckBox>(), Qt::Key_Space);
    EXPECT_EQ(value(kFlag), 1U);
}

TEST_F(EditorTest, WhatHasNoControlCannotBeTypedInto) {
    click(cell("Raw"));
    ASSERT_TRUE(editor<QLineEdit>());
    EXPECT_FALSE(editor<QLineEdit>()->isEnabled());
    m_camera->deviceMap->InvalidateNodes();
    QCoreApplication::processEvents();
    EXPECT_FALSE(!editor<QLineEdit>() || editor<QLineEdit>()->isEnabled());
}

TEST_F(EditorTest, ATypedNumberIsSnappedAndShownAsTheCameraHoldsIt) {
    click(cell("Width"));
    ASSERT_TRUE(editor<QLineEdit>());
    QTest::keyClicks(editor<QLineEdit>(), "105");
    QTest::keyClick(editor<QLineEdit>(), Qt::Key_Return);
    EXPECT_EQ(value(kWidth), 102U);
    EXPECT_EQ(shown("Width"), "102");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !editor<QLineEdit>(); }));
    EXPECT_EQ(writes(kWidth), 1) << "closing the editor must not write again";
}

TEST_F(EditorTest, ARejectedNumberLeavesTheCameraAndTheCell) {
    for (const char* text : {"5000", "abc", ""}) {
        click(cell("Width"));
        ASSERT_TRUE(editor<QLineEdit>());
        editor<QLineEdit>()->setText(text);
        QTest::keyClick(editor<QLineEdit>(), Qt::Key_Return);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !editor<QLineEdit>(); }));
        EXPECT_EQ(value(kWidth), 10U) << text;
        EXPECT_EQ(shown("Width"), "10") << text;
        view()->setCurrentIndex({});
    }
}

TEST_F(EditorTest, EscapeAndMereLeavingWriteNothing) {
    click(cell("Width"));
    QTest::keyClicks(editor<QLineEdit>(), "50");
    QTest::keyClick(editor<QLineEdit>(), Qt::Key_Escape);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !editor<QLineEdit>(); }));
    EXPECT_EQ(writes(kWidth), 0);

    view()->setCurrentIndex({});
    click(cell("Width"));
    ASSERT_TRUE(editor<QLineEdit>());
    searchBox()->setFocus();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !editor<QLineEdit>(); }));
    EXPECT_EQ(writes(kWidth), 0);
}

TEST_F(EditorTest, AComboBoxOffersTheEntriesAndWritesTheChosenOne) {
    click(cell("Mode"));
    auto* box = editor<QComboBox>();
    ASSERT_TRUE(box);
    EXPECT_EQ(box->count(), 3);
    EXPECT_EQ(box->currentText(), "Off");
    QWheelEvent wheel(QPointF(5, 5), box->mapToGlobal(QPointF(5, 5).toPoint()), {}, QPoint(0, -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(box, &wheel);
    EXPECT_EQ(writes(kMode), 0) << "the wheel scrolls, it does not set the camera";
    QTest::keyClick(box, Qt::Key_Down);
    EXPECT_EQ(value(kMode), 1U);
    EXPECT_EQ(cell("Mode").data(Qt::EditRole).value<ComboBoxValues>().currentText, "Once");
}

TEST_F(EditorTest, WhatIsLockedCannotBeEditedAndShowsALock) {
    setLock(true);
    click(cell("Lockable"));
    EXPECT_TRUE(editor<QLabel>());
    EXPECT_FALSE(editor<QLineEdit>());
    click(cell("Flag"));
    ASSERT_TRUE(editor<QCheckBox>());
    EXPECT_FALSE(editor<QCheckBox>()->isEnabled());
    EXPECT_EQ(writes(kFlag), 0);

    // The lock is the only dark thing at the right edge of a cell.
    view()->setCurrentIndex({});
    view()->clearSelection();
    const auto darkest = [&](const QString& name) {
        const QRect rect = view()->visualRect(cell(name));
        const QImage image =
            view()->viewport()->grab(QRect(rect.right() - 13, rect.top(), 14, rect.height())).toImage();
        int dark = 255;
        for (int y = 1; y < image.height() - 2; ++y) {
            for (int x = 0; x < image.width(); ++x) {
                dark = std::min(dark, qGray(image.pixel(x, y)));
            }
        }
        return dark;
    };
    EXPECT_LT(darkest("Lockable"), 150);
    EXPECT_LT(darkest("Fixed"), 150);
    setLock(false);
    EXPECT_GT(darkest("Lockable"), 200) << "the lock goes when the camera takes values again";
    click(cell("Lockable"));
    EXPECT_TRUE(editor<QLineEdit>());
}

TEST_F(EditorTest, ASliderWritesItsPosition) {
    click(cell("Level"));
    auto* slider = view()->viewport()->findChild<QSlider*>();
    ASSERT_TRUE(slider);
    EXPECT_EQ(slider->minimum(), 0);
    EXPECT_EQ(slider->maximum(), 100);
    slider->setValue(40);
    EXPECT_EQ(value(kLevel), 40U);
    EXPECT_EQ(shown("Level"), "40");
}

TEST_F(EditorTest, PaintingAsksNoCamera) {
    m_camera->deviceMap->InvalidateNodes();
    m_camera->port->forgetCounts();
    view()->viewport()->grab();
    EXPECT_EQ(m_camera->port->mostReads(), 0);
}

} // namespace
