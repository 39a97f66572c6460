#include "DisplayToolBar.h"

#include "AcquisitionModeBox.h"

#include <QCoreApplication>
#include <QToolButton>

DisplayToolBar::DisplayToolBar(QWidget* parent) : QToolBar(parent) {
    setObjectName(QStringLiteral("toolBarDevice"));
    setMovable(false);
    startButton =
        addButton("actionStartStream", QT_TRANSLATE_NOOP("wImageDisplay", "Start Device Acquisition"),
                  ":images/ViewerStart.png", true);
    singleButton =
        addButton("actionSingleImage", QT_TRANSLATE_NOOP("wImageDisplay", "Single Image Acquisition"),
                  ":images/ViewerSnap.png", true);
    stopButton = addButton("actionStopStream", QT_TRANSLATE_NOOP("wImageDisplay", "Stop Device Acquisition"),
                           ":images/ViewerStop.png", false);
    addSeparator();
    saveButton = addButton("actionSave", QT_TRANSLATE_NOOP("wImageDisplay", "Save Current Image to Disk"),
                           ":images/save.png", false);
    addSeparator();
    acquisitionMode = new AcquisitionModeBox(this);
    addWidget(acquisitionMode);
    addSeparator();
    zoomInButton =
        addButton("actionZoomIn", QT_TRANSLATE_NOOP("wImageDisplay", "Zoom In"), ":images/Zoomin.png", false);
    zoomOutButton = addButton("actionZoomOut", QT_TRANSLATE_NOOP("wImageDisplay", "Zoom Out"),
                              ":images/Zoomout.png", false);
    addSeparator();
    copyButton = addButton("actionImCopy", QT_TRANSLATE_NOOP("wImageDisplay", "Copy Image"),
                           ":images/Copy.png", false);
    addSeparator();
    recordButton = addButton("actionRecord", QT_TRANSLATE_NOOP("wImageDisplay", "Toggle Recording Window"),
                             ":images/Recorder.png", true);
    setShortcutsActive(true);
}

QToolButton* DisplayToolBar::addButton(const char* name, const char* toolTip, const char* icon,
                                       bool enabled) {
    auto* button = new QToolButton(this);
    const QString text = QCoreApplication::translate("wImageDisplay", toolTip);
    button->setObjectName(QLatin1String(name));
    button->setToolTip(text);
    button->setAccessibleName(text);
    button->setIcon(QIcon(QLatin1String(icon)));
    button->setIconSize(iconSize());
    button->setAutoRaise(true);
    button->setEnabled(enabled);
    addWidget(button);
    return button;
}

void DisplayToolBar::setShortcutsActive(bool on) {
    zoomInButton->setShortcut(on ? QKeySequence(QKeySequence::ZoomIn) : QKeySequence());
    zoomOutButton->setShortcut(on ? QKeySequence(QKeySequence::ZoomOut) : QKeySequence());
    copyButton->setShortcut(on ? QKeySequence(QKeySequence::Copy) : QKeySequence());
}

void DisplayToolBar::setStreaming(bool on) {
    QToolButton* const offered = on ? stopButton : startButton;
    QToolButton* const pressed = on ? startButton : stopButton;
    offered->setEnabled(true);
    if (pressed->hasFocus()) {
        offered->setFocus(Qt::TabFocusReason);
    }
    pressed->setEnabled(false);
}
