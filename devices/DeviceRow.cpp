#include "DeviceRow.h"

#include "Guarded.h"
#include "NodeReading.h"

#include <QColor>
#include <QCoreApplication>
#include <QIcon>
#include <QStringList>
#include <QTreeWidgetItem>

using Norvane::GenApi::INodeMap;

namespace {

const QColor kInterfaceBackground(135, 206, 250);
const QColor kCameraBackground(255, 255, 255);

QString placeholderText() {
    return QCoreApplication::translate("wDeviceList", "No Devices Detected");
}

/// The backgrounds are fixed, so the text's colour must not follow a dark desktop palette.
void setColours(QTreeWidgetItem& row, const QColor& background) {
    for (int column = 0; column < DeviceRow::ColumnCount; ++column) {
        row.setBackground(column, background);
        row.setForeground(column, QColor(Qt::black));
    }
}

void setToolTips(QTreeWidgetItem& row, const QString& toolTip) {
    for (int column = 0; column < DeviceRow::ColumnCount; ++column) {
        row.setToolTip(column, toolTip);
    }
}

/// A tool tip of "label: value" lines that leaves out what cannot be read.
class ToolTipLines {
public:
    void Add(const QString& label, const QString& value) {
        if (!value.isEmpty()) {
            m_lines << (label.isEmpty() ? value : label + QLatin1String(": ") + value).toHtmlEscaped();
        }
    }
    QString Html() const {
        return QLatin1String("<p style='white-space:pre'>") + m_lines.join(QLatin1String("<br>")) +
               QLatin1String("</p>");
    }

private:
    QStringList m_lines;
};

QString text(const char* source) {
    return QCoreApplication::translate("wDeviceList", source);
}

/// The first of the nodes that has a text.
QString firstText(INodeMap& map, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        if (QString value = NodeReading::Text(map, name); !value.isEmpty()) {
            return value;
        }
    }
    return {};
}

} // namespace

namespace DeviceRow {

void FillInterface(QTreeWidgetItem& row, const Norvane::InterfacePtr& interface) {
    setColours(row, kInterfaceBackground);
    guarded("listing an interface", [&] {
        INodeMap& map = interface->GetTLNodeMap();
        const QString name = firstText(map, {"InterfaceDisplayName", "InterfaceID"});
        const QString address = NodeReading::Ipv4Text(map, "GevInterfaceSubnetIPAddress");
        row.setText(NameColumn, name);
        row.setText(AddressColumn, address);
        ToolTipLines lines;
        lines.Add({}, name);
        lines.Add(text("Type"), NodeReading::Text(map, "InterfaceType"));
        lines.Add(text("ID"), NodeReading::Text(map, "InterfaceID"));
        lines.Add(text("IP Address"), address);
        lines.Add(text("Subnet Mask"), NodeReading::Ipv4Text(map, "GevInterfaceSubnetMask"));
        setToolTips(row, lines.Html());
    });
}

void FillCamera(QTreeWidgetItem& row, const Norvane::CameraPtr& camera, int serial) {
    setColours(row, kCameraBackground);
    row.setText(SerialColumn, QString::number(serial, 10));
    guarded("listing a camera", [&] {
        INodeMap& map = camera->GetTLDeviceNodeMap();
        const QString name = firstText(map, {"DeviceModelName", "DeviceDisplayName", "DeviceID"});
        const QString address = NodeReading::Ipv4Text(map, "GevDeviceIPAddress");
        row.setText(NameColumn, name);
        row.setText(AddressColumn, address);
        if (NodeReading::IsTrue(map, "GevDeviceIsWrongSubnet")) {
            row.setIcon(NameColumn, QIcon(QStringLiteral(":images/red_exclamation.png")));
            setToolTips(row, QStringLiteral("<p style='white-space:pre'>Device is on wrong subnet</p>"));
            return;
        }
        ToolTipLines lines;
        lines.Add({}, name);
        lines.Add(text("User-Defined Name"), NodeReading::Text(map, "DeviceUserID"));
        lines.Add(text("Vendor"), NodeReading::Text(map, "DeviceVendorName"));
        lines.Add(text("ID"), NodeReading::Text(map, "DeviceID"));
        lines.Add(text("IP Address"), address);
        lines.Add(text("Access"), NodeReading::Text(map, "DeviceAccessStatus"));
        setToolTips(row, lines.Html());
    });
}

void FillPlaceholder(QTreeWidgetItem& row) {
    row.setText(NameColumn, placeholderText());
    row.setFirstColumnSpanned(true);
}

bool IsPlaceholder(const QTreeWidgetItem& row) {
    return row.parent() && row.text(NameColumn) == placeholderText();
}

} // namespace DeviceRow
