#include "Hands.h"

#include "FeatureTreeView.h"
#include "norsimplegui_qt.h"
#include "norvane/genapi/GenApi.h"
#include "wDeviceList.h"
#include "wFeaturesTabController.h"
#include "wGLImageDisplay.h"
#include "wImageDisplay.h"
#include "wRecordingDialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>
#include <QWheelEvent>

#include <array>
#include <numeric>

using namespace Norvane::GenApi;

const std::vector<Hands::Action> Hands::kActions{
    {"cameras changed", 12, [](Hands& h) { return h.m_stock.Change(), true; }},
    {"list refreshed", 8,
     [](Hands& h) { return h.Press(h.m_list, h.m_random.OneIn(6) ? "actionAdapters" : "actionRefresh"); }},
    {"camera opened", 14, [](Hands& h) { return h.ClickRow(h.Row(true), false); }},
    {"stream by double click", 8, [](Hands& h) { return h.ClickRow(h.Row(true), true); }},
    {"interface selected", 2, [](Hands& h) { return h.ClickRow(h.Row(false), false); }},
    {"device list menu", 1, &Hands::DeviceListMenu},
    {"camera disconnected", 2, [](Hands& h) { return h.Press(h.m_list, "actionDisconnectDevice"); }},
    {"properties shown", 2,
     [](Hands& h) {
         return h.Press(h.m_list, h.m_random.OneIn(2) ? "actionShowProperties" : "actionCopyToClipboard");
     }},
    {"firmware dialog shown", 1, [](Hands& h) { return h.Press(h.m_list, "actionUpdateFirmware"); }},
    {"display button pressed", 12, &Hands::PressDisplayButton},
    {"still saved", 4, [](Hands& h) { return h.Press(h.AnyDisplay(), "actionSave"); }},
    {"single image asked for", 3, [](Hands& h) { return h.Press(h.AnyDisplay(), "actionSingleImage"); }},
    {"recording started", 6, &Hands::StartRecording},
    {"recording stopped", 4, &Hands::StopRecording},
    {"display menu used", 6, &Hands::DisplayMenu},
    {"wheel turned", 4, &Hands::TurnWheel},
    {"display floated or docked", 2, &Hands::FloatOrDock},
    {"inference switched on", 3, &Hands::SwitchInferenceOn},
    {"display closed", 3, &Hands::CloseDisplay},
    {"dialog closed", 5, &Hands::CloseDialog},
    {"search typed", 8, &Hands::TypeSearch},
    {"tree sorted", 3, &Hands::SortTree},
    {"tree expanded", 2, &Hands::ExpandTree},
    {"feature changed", 16, &Hands::ChangeFeature},
    {"node information shown", 2, &Hands::ShowNodeInformation},
    {"file moved", 4, &Hands::MoveFile},
    {"help shown", 1, &Hands::ShowHelp},
    {"window resized", 2, &Hands::ResizeWindow},
};

namespace {

/// A dialog that is no modal one; those are answered by others.
QDialog* openDialog() {
    for (QWidget* top : QApplication::topLevelWidgets()) {
        auto* dialog = qobject_cast<QDialog*>(top);
        if (dialog && dialog->isVisible() && !dialog->isModal()) {
            return dialog;
        }
    }
    return nullptr;
}

bool press(QWidget* button) {
    if (!button || !button->isEnabled() || !button->isVisible()) {
        return false;
    }
    QTest::mouseClick(button, Qt::LeftButton);
    return true;
}

/// Radio buttons and check boxes react to their mark only, not to the text's empty space.
void mark(QAbstractButton* button) {
    if (button && button->isEnabled()) {
        button->click();
    }
}

void type(QLineEdit* edit, const QString& text) {
    edit->selectAll();
    QTest::keyClicks(edit, text);
    QTest::keyClick(edit, Qt::Key_Return);
}

} // namespace

Hands::Hands(NorSimpleGUI_QT& window, CameraStock& stock, Random& random, QString folder)
    : m_window(window), m_stock(stock), m_random(random), m_folder(std::move(folder)),
      m_list(window.findChild<wDeviceList*>()), m_tabs(window.findChild<wFeaturesTabController*>()),
      m_tree(m_list->findChild<QTreeWidget*>()) {
    m_weights = std::accumulate(kActions.begin(), kActions.end(), 0,
                                [](int sum, const Action& action) { return sum + action.weight; });
}

void Hands::ActOnce(const std::function<void(const char*)>& announce) {
    int roll = m_random.Below(m_weights);
    for (const Action& action : kActions) {
        roll -= action.weight;
        if (roll < 0) {
            announce(action.name);
            if (action.act(*this)) {
                ++m_counts[action.name];
            }
            return;
        }
    }
}

QList<wImageDisplay*> Hands::OpenDisplays() const {
    QList<wImageDisplay*> open;
    for (wImageDisplay* display : m_window.findChildren<wImageDisplay*>()) {
        if (!display->isHidden()) {
            open.append(display);
        }
    }
    return open;
}

void Hands::OpenAll() {
    Press(m_list, "actionRefresh");
    for (int i = 0; i < m_tree->topLevelItemCount(); ++i) {
        for (int j = 0; j < m_tree->topLevelItem(i)->childCount(); ++j) {
            ClickRow(m_tree->topLevelItem(i)->child(j), true);
        }
    }
}

bool Hands::CloseOne() {
    return CloseDialog() || CloseDisplay();
}

// --- device list

QTreeWidgetItem* Hands::Row(bool camera) {
    std::vector<QTreeWidgetItem*> rows;
    for (int i = 0; i < m_tree->topLevelItemCount(); ++i) {
        QTreeWidgetItem* interface = m_tree->topLevelItem(i);
        if (!camera) {
            rows.push_back(interface);
        }
        for (int j = 0; camera && j < interface->childCount(); ++j) {
            rows.push_back(interface->child(j));
        }
    }
    if (rows.empty()) {
        return nullptr;
    }
    QTreeWidgetItem* row = m_random.Pick(rows);
    m_tree->scrollToItem(row);
    return row;
}

bool Hands::ClickRow(const QTreeWidgetItem* row, bool twice) {
    if (row) {
        m_tree->scrollToItem(row);
        // The first click may refresh the list, and the row with it.
        const QPoint place = m_tree->visualItemRect(row).center();
        QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, {}, place);
        if (twice) {
            QTest::mouseDClick(m_tree->viewport(), Qt::LeftButton, {}, place);
        }
    }
    return row;
}

bool Hands::DeviceListMenu() {
    const QTreeWidgetItem* row = Row(m_random.OneIn(2));
    if (row) {
        const QPoint place = m_tree->visualItemRect(row).center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, m_tree->viewport()->mapToGlobal(place));
        QApplication::sendEvent(m_tree->viewport(), &event);
    }
    return row;
}

bool Hands::Press(QWidget* parent, const char* button) {
    return parent && press(parent->findChild<QToolButton*>(button));
}

// --- displays

wImageDisplay* Hands::AnyDisplay() {
    const QList<wImageDisplay*> open = OpenDisplays();
    return open.isEmpty() ? nullptr : m_random.Pick(open);
}

bool Hands::PressDisplayButton() {
    constexpr std::array kButtons{"actionStartStream", "actionStartStream", "actionStartStream",
                                  "actionStopStream",  "actionZoomIn",      "actionZoomOut",
                                  "actionImCopy"};
    return Press(AnyDisplay(), m_random.Pick(kButtons));
}

bool Hands::StartRecording() {
    wImageDisplay* display = AnyDisplay();
    if (!display || !Press(display, "actionRecord")) {
        return false;
    }
    const QPointer<wRecordingDialog> dialog = display->findChild<wRecordingDialog*>();
    if (!dialog || !dialog->findChild<QPushButton*>("button_StartRecord")->isEnabled()) {
        return false;
    }
    type(dialog->findChild<QLineEdit*>("editBox_Filename"), m_folder);
    auto* kind = dialog->findChild<QTabWidget*>("tabWidget_RecordType");
    kind->setCurrentIndex(m_random.Below(kind->count()));
    for (const char* format : {"comboBox_ImageFormat", "comboBox_VideoType"}) {
        auto* box = dialog->findChild<QComboBox*>(format);
        box->setCurrentIndex(m_random.Below(box->count()));
    }
    constexpr std::array kUntil{"radio_FramesToGrab", "radio_FramesToGrab", "radio_StopTime", "radio_OneOfN",
                                "radio_TimeLapse"};
    mark(dialog->findChild<QRadioButton*>(m_random.Pick(kUntil)));
    mark(dialog->findChild<QRadioButton*>(m_random.OneIn(2) ? "radio_Buffered" : "radio_Streaming"));
    const std::pair<const char*, int> numbers[] = {{"editBox_FramesToGrab", m_random.Below(60)},
                                                   {"editBox_StopTime", m_random.Below(4)},
                                                   {"editBox_EveryN", 1 + m_random.Below(4)},
                                                   {"editBox_RunFrames", 1 + m_random.Below(60)},
                                                   {"editBox_Interval", 1},
                                                   {"editBox_RunTime", 1 + m_random.Below(4)}};
    for (const auto& [name, number] : numbers) {
        auto* edit = dialog->findChild<QLineEdit*>(name);
        if (edit->isEnabled()) {
            type(edit, QString::number(number));
        }
    }
    display->findChild<wGLImageDisplay*>()->setFocus();
    Press(display, "actionStartStream");
    return dialog && press(dialog->findChild<QPushButton*>("button_StartRecord"));
}

bool Hands::StopRecording() {
    wImageDisplay* display = AnyDisplay();
    auto* dialog = display ? display->findChild<wRecordingDialog*>() : nullptr;
    return dialog && press(dialog->findChild<QPushButton*>("button_StopRecord"));
}

void Hands::StopRecordings() {
    for (wImageDisplay* display : OpenDisplays()) {
        if (auto* dialog = display->findChild<wRecordingDialog*>()) {
            mark(dialog->findChild<QPushButton*>("button_StopRecord"));
        }
    }
}

bool Hands::DisplayMenu() {
    wImageDisplay* display = AnyDisplay();
    if (!display) {
        return false;
    }
    const QPoint place = display->rect().center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, display->mapToGlobal(place));
    QApplication::sendEvent(display, &event);
    return true;
}

bool Hands::TurnWheel() {
    wImageDisplay* display = AnyDisplay();
    QWidget* image = display ? display->findChild<wGLImageDisplay*>() : nullptr;
    if (!image) {
        return false;
    }
    const QPoint place = image->rect().center();
    const int delta = m_random.OneIn(2) ? 120 : -120;
    QWheelEvent event(place, image->mapToGlobal(place), QPoint(), QPoint(0, delta), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    // Only a user's wheel goes on to the widgets around, and sendEvent() makes every event the program's.
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(image, &event);
    return true;
}

bool Hands::FloatOrDock() {
    wImageDisplay* display = AnyDisplay();
    if (display) {
        display->setFloating(!display->isFloating());
    }
    return display;
}

bool Hands::SwitchInferenceOn() {
    wImageDisplay* display = AnyDisplay();
    if (!display) {
        return false;
    }
    try {
        INodeMap& map = display->getCamera()->GetNodeMap();
        const CBooleanPtr active = map.GetNode("ChunkModeActive");
        const CEnumerationPtr selector = map.GetNode("ChunkSelector");
        const CBooleanPtr enable = map.GetNode("ChunkEnable");
        if (!IsWritable(active.Get())) {
            return false;
        }
        active->SetValue(true);
        node_vector entries;
        selector->GetEntries(entries);
        for (INode* node : entries) {
            const CEnumEntryPtr entry = node;
            if (IsAvailable(entry.Get())) {
                selector->SetIntValue(entry->GetValue());
                if (IsWritable(enable.Get())) {
                    enable->SetValue(true);
                }
            }
        }
        return true;
    } catch (const Norvane::Exception&) {
        return false; // the camera left meanwhile
    }
}

bool Hands::CloseDisplay() {
    wImageDisplay* display = AnyDisplay();
    return display && display->close();
}

bool Hands::CloseDialog() {
    QDialog* dialog = openDialog();
    return dialog && dialog->close();
}

// --- features

void Hands::ShowTab(int index) {
    auto* tabs = m_tabs->findChild<QTabWidget*>();
    QTest::mouseClick(tabs->tabBar(), Qt::LeftButton, {}, tabs->tabBar()->tabRect(index).center());
}

bool Hands::TypeSearch() {
    constexpr std::array kWords{"", "", "exp", "image", "(", "^gain", "file", "e", "[", "zzz", "(a+)+$"};
    ShowTab(0);
    auto* box = m_tabs->GetWidget(0)->findChild<QLineEdit*>();
    if (!box->isVisible() || !box->isEnabled()) {
        return false;
    }
    box->selectAll();
    QTest::keyClick(box, Qt::Key_Delete);
    QTest::keyClicks(box, m_random.Pick(kWords));
    return true;
}

bool Hands::SortTree() {
    constexpr std::array kOrders{"actionSortXML", "actionSortCategory", "actionSortAlpha"};
    ShowTab(0);
    return Press(m_tabs, m_random.Pick(kOrders));
}

bool Hands::ExpandTree() {
    ShowTab(0);
    return Press(m_tabs, "actionExpandTree");
}

QModelIndex Hands::AnyFeature() {
    ShowTab(0);
    auto* view = m_tabs->findChild<FeatureTreeView*>();
    QModelIndex index;
    for (int depth = 0; depth < 5; ++depth) {
        const int rows = view->model()->rowCount(index);
        if (rows == 0) {
            break;
        }
        view->expand(index);
        index = view->model()->index(m_random.Below(rows), 0, index);
    }
    if (index.isValid()) {
        view->scrollTo(index, QAbstractItemView::PositionAtCenter);
    }
    return index;
}

bool Hands::ChangeFeature() {
    auto* view = m_tabs->findChild<FeatureTreeView*>();
    const QModelIndex row = AnyFeature();
    if (!row.isValid() || !view->isEnabled()) {
        return false;
    }
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                      view->visualRect(row.sibling(row.row(), 1)).center());
    // What the click opened, if anything: check boxes and commands have acted already.
    const QPointer<QWidget> editor = view->indexWidget(view->currentIndex());
    QWidget* focused = editor ? editor.data() : QApplication::focusWidget();
    if (!focused || !view->viewport()->isAncestorOf(focused) || !focused->isEnabled()) {
        return true;
    }
    if (auto* box = qobject_cast<QComboBox*>(focused)) {
        for (int steps = m_random.Below(3); steps >= 0; --steps) {
            QTest::keyClick(box, m_random.OneIn(2) ? Qt::Key_Down : Qt::Key_Up);
        }
    } else if (auto* edit = qobject_cast<QLineEdit*>(focused)) {
        constexpr std::array kTexts{"64", "320",  "480",  "640",      "1", "0",
                                    "-1", "10.5", "5000", "nonsense", ""};
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Delete);
        QTest::keyClicks(edit, m_random.Pick(kTexts));
        QTest::keyClick(edit, m_random.OneIn(8) ? Qt::Key_Escape : Qt::Key_Return);
    } else if (auto* slider = qobject_cast<QSlider*>(focused)) {
        slider->setValue(m_random.Below(101));
    }
    return true;
}

bool Hands::ShowNodeInformation() {
    auto* view = m_tabs->findChild<FeatureTreeView*>();
    const QModelIndex row = AnyFeature();
    if (row.isValid()) {
        const QPoint place = view->visualRect(row).center();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, place);
    }
    return row.isValid();
}

bool Hands::MoveFile() {
    if (m_tabs->findChild<QTabWidget*>()->count() < 2) {
        return false;
    }
    ShowTab(1);
    return press(m_tabs->findChild<QPushButton*>(m_random.OneIn(2) ? "m_buttonUpload" : "m_buttonDownload"));
}

// --- the window

bool Hands::ShowHelp() {
    if (m_random.OneIn(2)) {
        m_window.About();
    } else {
        m_window.License();
    }
    return true;
}

bool Hands::ResizeWindow() {
    m_window.resize(700 + m_random.Below(800), 500 + m_random.Below(450));
    return true;
}
