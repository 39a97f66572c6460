#pragma once

#include "ImageInfoLine.h"
#include "norvane/Camera.h"

#include <QMenu>

class wImageDisplay;

/// The menu of a right click into an image display, built afresh for each click from the display's state.
/// Deletes itself once it closes. User-interface thread.
class DisplayContextMenu : public QMenu {
    Q_OBJECT

public:
    struct State {
        bool offersColorProcessing = false;
        int colorProcessingAlgorithm = 0; ///< a Norvane::ColorProcessingAlgorithm
        bool stretchToFit = false;
        bool displayIncomplete = false;
        ImageInfoLine::Selection shown;
        bool inferenceAvailable = false;
        bool showInferenceLabel = false;
    };

    DisplayContextMenu(const State& state, wImageDisplay* display);

    QAction* ImageStatusAction() const { return m_imageStatus; }

    /// Whether the camera's pixels need colour processing: every format but mono, and of the polarised ones
    /// those that are Bayer too. False when the camera does not tell.
    static bool OffersColorProcessing(const Norvane::CameraPtr& camera);

signals:
    void displayIncompleteToggled(bool on);

private:
    template <class Slot>
    QAction* addToggle(const char* text, const char* statusTip, bool checked, Slot slot);
    void addColorMenu(int currentAlgorithm);
    void addStatusToggles(const ImageInfoLine::Selection& shown);

    wImageDisplay* m_display;
    QAction* m_imageStatus = nullptr;
};
