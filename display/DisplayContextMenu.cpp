#include "DisplayContextMenu.h"

#include "Guarded.h"
#include "norvane/genapi/GenApi.h"
#include "wImageDisplay.h"

#include <QActionGroup>
#include <QCoreApplication>

using namespace Norvane::GenApi;

namespace {

struct Algorithm {
    const char* name;
    Norvane::ColorProcessingAlgorithm code;
};

constexpr Algorithm kAlgorithms[] = {
    {"No Color Processing", Norvane::NO_COLOR_PROCESSING},
    {"Nearest Neighbor", Norvane::NEAREST_NEIGHBOR},
    {"Nearest Neighbor Average", Norvane::NEAREST_NEIGHBOR_AVG},
    {"Edge Sensing", Norvane::EDGE_SENSING},
    {"HQ Linear", Norvane::HQ_LINEAR},
    {"Bilinear", Norvane::BILINEAR},
    {"Directional Filter", Norvane::DIRECTIONAL_FILTER},
    {"Weighted Directional Filter", Norvane::WEIGHTED_DIRECTIONAL_FILTER},
    {"Rigorous", Norvane::RIGOROUS},
    {"IPP", Norvane::IPP},
};

QString translated(const char* text) {
    return QCoreApplication::translate("MainWindow", text);
}

} // namespace

DisplayContextMenu::DisplayContextMenu(const State& state, wImageDisplay* display)
    : QMenu(display), m_display(display) {
    setAttribute(Qt::WA_DeleteOnClose);
    if (state.offersColorProcessing) {
        addColorMenu(state.colorProcessingAlgorithm);
    }
    addToggle("Stretch To Fit", "Stretch To Fit", state.stretchToFit, &wImageDisplay::setStretchToFit);
    QAction* incomplete = addAction(translated("Display Incomplete Images"));
    incomplete->setCheckable(true);
    incomplete->setChecked(state.displayIncomplete);
    connect(incomplete, &QAction::toggled, this, &DisplayContextMenu::displayIncompleteToggled);
    addSeparator();
    addStatusToggles(state.shown);
    QAction* limit = addAction(translated("Limit Displayed FPS"));
    limit->setStatusTip(translated("Limits maximum displayed frames per second."));
    connect(limit, &QAction::triggered, m_display, &wImageDisplay::setDisplayLimit);
    if (state.inferenceAvailable) {
        addSeparator();
        addToggle("Show Inference Label", "Shows or hides the inference label.", state.showInferenceLabel,
                  &wImageDisplay::toggleBoundingBox);
        QAction* configure = addAction(translated("Configure Inference Label"));
        configure->setStatusTip(translated("Toggles inference settings window."));
        connect(configure, &QAction::triggered, m_display, &wImageDisplay::toggleInferenceDialog);
    }
}

template <class Slot>
QAction* DisplayContextMenu::addToggle(const char* text, const char* statusTip, bool checked, Slot slot) {
    QAction* action = addAction(translated(text));
    action->setStatusTip(translated(statusTip));
    action->setCheckable(true);
    action->setChecked(checked);
    connect(action, &QAction::toggled, m_display, slot);
    return action;
}

void DisplayContextMenu::addColorMenu(int currentAlgorithm) {
    QMenu* menu = addMenu(translated("Color Processing Algorithm"));
    auto* group = new QActionGroup(menu);
    for (const Algorithm& algorithm : kAlgorithms) {
        QAction* action = menu->addAction(translated(algorithm.name));
        action->setCheckable(true);
        action->setChecked(algorithm.code == currentAlgorithm);
        action->setData(static_cast<int>(algorithm.code));
        group->addAction(action);
    }
    connect(group, &QActionGroup::triggered, m_display, &wImageDisplay::colorProcessingAlgorithmSelect);
}

void DisplayContextMenu::addStatusToggles(const ImageInfoLine::Selection& shown) {
    m_imageStatus = addToggle("Show Image Status", "Shows or hides the image status.", shown.imageStatus,
                              &wImageDisplay::toggleImageStatusBar);
    addToggle("Show Camera Frame Rate", "Shows or hides the camera frame rate.", shown.cameraFps,
              &wImageDisplay::toggleCameraLeaderFPSStatusBar);
    addToggle("Show Received Frame Rate", "Shows or hides the received frame rate.", shown.receivedFps,
              &wImageDisplay::toggleReceivedFPSStatusBar);
    addToggle("Show Processed Frame Rate", "Shows or hides the processed frame rate.", shown.processedFps,
              &wImageDisplay::toggleProcessedFPSStatusBar);
    addToggle("Show Displayed Frame Rate", "Shows or hides the displayed frame rate.", shown.displayedFps,
              &wImageDisplay::toggleDisplayedFPSStatusBar);
}

bool DisplayContextMenu::OffersColorProcessing(const Norvane::CameraPtr& camera) {
    bool offers = false;
    guarded("Reading the pixel format", [&] {
        const CEnumerationPtr node = camera->GetNodeMap().GetNode("PixelFormat");
        if (!IsReadable(node.Get())) {
            return;
        }
        const CEnumEntryPtr current = node->GetCurrentEntry();
        const QString name = QString::fromUtf8(current->GetSymbolic().c_str());
        const bool isPolarized = name.contains(QLatin1String("Polarized"));
        offers =
            !name.contains(QLatin1String("Mono")) && (!isPolarized || name.contains(QLatin1String("Bayer")));
    });
    return offers;
}
