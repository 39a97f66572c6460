#pragma once

#include "norvane/Camera.h"

#include <QWidget>

class QComboBox;

/// The tool bar's control for a camera's "AcquisitionMode": a label above a combo box whose items are the
/// camera's entries. User-interface thread.
class AcquisitionModeBox : public QWidget {
    Q_OBJECT

public:
    explicit AcquisitionModeBox(QWidget* parent = nullptr);

    QComboBox* Combo() const { return m_combo; }
    /// Fills the combo with the camera's entries and shows the current one. A camera without a readable
    /// "AcquisitionMode" leaves it empty.
    void Fill(const Norvane::CameraPtr& camera);

    /// The camera's mode as an entry's value; `mode` stays as it is when it cannot be read.
    static void ReadMode(const Norvane::CameraPtr& camera, int& mode);
    /// Writes the item at `index` to the camera and shows the mode that the camera then has. Does nothing
    /// where the camera takes no mode now. @throws Norvane::Exception.
    void SwitchTo(const Norvane::CameraPtr& camera, int index);
    /// Shows the mode that the camera has.
    void Resync(const Norvane::CameraPtr& camera);

private:
    QComboBox* m_combo;
};
