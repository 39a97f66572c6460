#pragma once

#include <QKeySequence>
#include <QToolBar>

class AcquisitionModeBox;
class QToolButton;

/// The tool bar of one image display. It only holds the controls; what they do and when they are enabled is
/// the display's. User-interface thread.
class DisplayToolBar : public QToolBar {
    Q_OBJECT

public:
    explicit DisplayToolBar(QWidget* parent = nullptr);

    /// Gives the keys for zooming and copying to this display's buttons, or takes them away: two displays
    /// that both claim a key would both lose it.
    void setShortcutsActive(bool on);
    /// Offers Stop instead of Start, or Start instead of Stop. The keyboard's focus goes along: left on a
    /// button that is disabled, it would move on to Single Image, and one key more would take one.
    void setStreaming(bool on);

    QToolButton* startButton;
    QToolButton* singleButton;
    QToolButton* stopButton;
    QToolButton* saveButton;
    AcquisitionModeBox* acquisitionMode;
    QToolButton* zoomInButton;
    QToolButton* zoomOutButton;
    QToolButton* copyButton;
    QToolButton* recordButton;

private:
    QToolButton* addButton(const char* name, const char* toolTip, const char* icon, bool enabled);
};
