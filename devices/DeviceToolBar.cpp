#include "DeviceToolBar.h"

#include <QCoreApplication>
#include <QIcon>
#include <QToolButton>

namespace {

QString text(const char* source) {
    return QCoreApplication::translate("wDeviceList", source);
}

} // namespace

DeviceToolBar::DeviceToolBar(QObject* list) {
    setObjectName(QStringLiteral("toolBarDevice"));

    auto* refresh = addButton("actionRefresh", text("Refresh Device List"), ":images/Refresh.png");
    m_adapters = addButton("actionAdapters", text("Show All Adapters"), ":images/ListAll.png");
    m_adapters->setCheckable(true);
    auto* configIp = addButton("actionConfigIP", text("Configure Device IP"), ":images/Gige.png");
    auto* driver = addButton("actionSwitchDriver", text("Switch Device Driver"), ":images/Driver.png");
    auto* firmware = addButton("actionUpdateFirmware", text("Update Device Firmware"), ":images/Install.png");
    auto* copy =
        addButton("actionCopyToClipboard", text("Copy device properties to clipboard"), ":images/Copy.png");
    auto* properties =
        addButton("actionShowProperties", text("Show device properties"), ":images/Properties.png");
    m_disconnect = addButton("actionDisconnectDevice", text("Disconnect Device"), ":images/Disconnect.png");

    connect(refresh, SIGNAL(clicked()), list, SLOT(OnRefreshDeviceList()));
    connect(m_adapters, SIGNAL(toggled(bool)), list, SLOT(OnShowAllInterfaces(bool)));
    connect(configIp, SIGNAL(clicked()), list, SLOT(OnConfigDeviceIP()));
    connect(driver, SIGNAL(clicked()), list, SLOT(OnSwitchDeviceDriver()));
    connect(firmware, SIGNAL(clicked()), list, SLOT(OnUpdateDeviceFW()));
    connect(copy, SIGNAL(clicked()), list, SLOT(OnCopyToClipboard()));
    connect(properties, SIGNAL(clicked()), list, SLOT(OnShowProperties()));
    connect(m_disconnect, SIGNAL(clicked()), list, SLOT(OnDisconnectDevice()));

    m_deviceButtons = {configIp, driver, firmware, m_disconnect};
    m_selectionButtons = {copy, properties};
    DisableDeviceButtons(true);
    DisableSelectionButtons();
}

QToolButton* DeviceToolBar::addButton(const char* objectName, const QString& toolTip, const char* icon) {
    auto* button = new QToolButton(this);
    button->setObjectName(QLatin1String(objectName));
    button->setToolTip(toolTip);
    button->setAccessibleName(toolTip);
    button->setIcon(QIcon(QLatin1String(icon)));
    // Tool buttons take the keyboard focus by Tab only when they are told to.
    button->setFocusPolicy(Qt::TabFocus);
    addWidget(button);
    return button;
}

void DeviceToolBar::EnableAll() {
    DisableDeviceButtons(false);
    for (QToolButton* button : qAsConst(m_selectionButtons)) {
        button->setEnabled(true);
    }
}

void DeviceToolBar::DisableDeviceButtons(bool disable) {
    for (QToolButton* button : qAsConst(m_deviceButtons)) {
        button->setDisabled(disable);
    }
}

void DeviceToolBar::DisableSelectionButtons() {
    for (QToolButton* button : qAsConst(m_selectionButtons)) {
        button->setDisabled(true);
    }
}
