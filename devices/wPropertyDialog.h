#pragma once

#include "norvane/Camera.h"
#include "norvane/Interface.h"

#include <QDialog>
#include <QString>

class QLabel;

/// A short summary of one camera or interface, shown as rich text and kept as plain text for the clipboard.
/// Made by the device list on first use and filled anew before each use. User-interface thread.
class wPropertyDialog : public QDialog {
    Q_OBJECT

public:
    explicit wPropertyDialog(QWidget* parent);

    /// A value that cannot be read is left empty.
    void setCamProperty(Norvane::CameraPtr camera);
    void setIfaceProperty(Norvane::InterfacePtr interface);
    /// Puts the plain text of the last summary on the clipboard.
    void CopyToClipboard() const;

private:
    QLabel* m_label;
    QString m_plainText;
};
