#include "wPropertyDialog.h"

#include "Guarded.h"
#include "NodeReading.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QLabel>
#include <QVBoxLayout>

#include <array>

namespace {

const QString kCameraFormat = QStringLiteral("<font size=5><b>Device Name: </b>%1</font><br><br>"
                                             "<font size=5><b>Device Model: </b>%2</font><br><br>"
                                             "<font size=5><b>Device ID: </b>%3</font><br><br>"
                                             "<font size=5><b>Device Vendor Name: </b>%4</font><br><br>"
                                             "<font size=5><b>Device Instance Id: </b>%5</font><br><br>"
                                             "<font size=5><b>Device Current Speed: </b>%6</font><br><br>"
                                             "<font size=5><b>Device Access Status: </b>%7</font><br><br>"
                                             "<font size=5><b>Device Version: </b>%8</font><br><br>"
                                             "<font size=5><b>Device Driver Version: </b>%9</font>");

const QString kInterfaceFormat =
    QStringLiteral("<font size=5><b>Interface Display Name: </b>%1</font><br><br>"
                   "<font size=5><b>Interface Type: </b>%2</font><br><br>"
                   "<font size=5><b>Interface ID: </b>%3</font>");

/// A node and what stands before its value in the plain text.
struct Property {
    const char* node;
    const char* plainPrefix;
};

// In the order of the rich text's places. The blanks of the prefixes are part of the clipboard's form, which
// other programs may parse.
constexpr std::array<Property, 9> kCameraProperties = {{
    {"DeviceDisplayName", "Device Name : "},
    {"DeviceModelName", "\nDevice Model: "},
    {"DeviceID", "\nDevice ID :  "},
    {"DeviceVendorName", "\nDevice Vendor Name :  "},
    {"DeviceInstanceId", "\nDevice Instance ID :  "},
    {"DeviceCurrentSpeed", "\nDevice Current Speed :  "},
    {"DeviceAccessStatus", "\nDevice Access Status :  "},
    {"DeviceVersion", "\nDevice Version :  "},
    {"DeviceDriverVersion", "\nDevice Driver Version :  "},
}};

constexpr std::array<Property, 3> kInterfaceProperties = {{
    {"InterfaceDisplayName", "Interface Display Name: "},
    {"InterfaceType", "\nInterface Type: "},
    {"InterfaceID", "\nInterface ID :  "},
}};

template <std::size_t N>
std::array<QString, N> readValues(const std::array<Property, N>& properties, Norvane::GenApi::INodeMap& map) {
    std::array<QString, N> values;
    for (std::size_t i = 0; i < N; ++i) {
        values[i] = NodeReading::Text(map, properties[i].node);
    }
    return values;
}

template <std::size_t N>
QString plainText(const std::array<Property, N>& properties, const std::array<QString, N>& values) {
    QString text;
    for (std::size_t i = 0; i < N; ++i) {
        text += QLatin1String(properties[i].plainPrefix) + values[i];
    }
    return text;
}

/// The device's own texts may hold signs that mean something in rich text.
template <std::size_t N>
std::array<QString, N> escaped(std::array<QString, N> values) {
    for (QString& value : values) {
        value = value.toHtmlEscaped();
    }
    return values;
}

} // namespace

wPropertyDialog::wPropertyDialog(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("wPropertyDialog"));
    setWindowTitle(tr("Device Property"));

    auto* container = new QWidget(this);
    container->setObjectName(QStringLiteral("verticalLayoutWidget"));
    auto* propertiesLayout = new QVBoxLayout(container);
    propertiesLayout->setObjectName(QStringLiteral("prmPropsLayout"));
    propertiesLayout->setContentsMargins(0, 0, 0, 0);
    m_label = new QLabel(container);
    m_label->setObjectName(QStringLiteral("prmPropertyLabel"));
    m_label->setTextFormat(Qt::RichText);
    m_label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_label->setStyleSheet(QStringLiteral("QLabel { background-color : white; padding: 0px 5px 10px 15px;}"));
    propertiesLayout->addWidget(m_label);

    auto* buttonBox = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    buttonBox->setObjectName(QStringLiteral("buttonBox"));
    connect(buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(container);
    layout->addWidget(buttonBox);
}

void wPropertyDialog::setCamProperty(Norvane::CameraPtr camera) {
    setWindowTitle(tr("Device Property"));
    std::array<QString, kCameraProperties.size()> values;
    guarded("reading a camera's properties",
            [&] { values = readValues(kCameraProperties, camera->GetTLDeviceNodeMap()); });
    const auto rich = escaped(values);
    m_label->setText(
        kCameraFormat.arg(rich[0], rich[1], rich[2], rich[3], rich[4], rich[5], rich[6], rich[7], rich[8]));
    m_plainText = plainText(kCameraProperties, values);
}

void wPropertyDialog::setIfaceProperty(Norvane::InterfacePtr interface) {
    setWindowTitle(tr("Interface Property"));
    std::array<QString, kInterfaceProperties.size()> values;
    guarded("reading an interface's properties",
            [&] { values = readValues(kInterfaceProperties, interface->GetTLNodeMap()); });
    const auto rich = escaped(values);
    m_label->setText(kInterfaceFormat.arg(rich[0], rich[1], rich[2]));
    m_plainText = plainText(kInterfaceProperties, values);
}

void wPropertyDialog::CopyToClipboard() const {
    QGuiApplication::clipboard()->setText(m_plainText);
}
