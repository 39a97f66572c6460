#pragma once

#include "norvane/Camera.h"

#include <QDockWidget>

/// A tab of the feature tabs dock. Lives on the user-interface thread; wFeaturesTabController owns it.
class CustomTabInterface : public QDockWidget {
    Q_OBJECT

public:
    using QDockWidget::QDockWidget;

public slots:
    /// The camera whose features the tab is to show; an empty handle for none.
    virtual void OnCameraUpdated(const Norvane::CameraPtr& camPtr) = 0;
};
