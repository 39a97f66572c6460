#pragma once

#include <QToolBar>

class QToolButton;

/// The device list's tool bar: one button per action, wired to the slots of its owner by name. Refresh and
/// the adapter filter always work; the other buttons wait for a selection.
class DeviceToolBar : public QToolBar {
    Q_OBJECT

public:
    /// @param list  the owner of the slots.
    explicit DeviceToolBar(QObject* list);

    void EnableAll();
    /// Buttons that need a camera.
    void DisableDeviceButtons(bool disable);
    /// Buttons that need a camera or an interface.
    void DisableSelectionButtons();

    QToolButton* AdaptersButton() const { return m_adapters; }
    QToolButton* DisconnectButton() const { return m_disconnect; }

private:
    QToolButton* addButton(const char* objectName, const QString& toolTip, const char* icon);

    QToolButton* m_adapters = nullptr;
    QToolButton* m_disconnect = nullptr;
    QList<QToolButton*> m_selectionButtons;
    QList<QToolButton*> m_deviceButtons;
};
