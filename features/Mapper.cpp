#include "Mapper.h"

#include "NodeReading.h"

#include <QStandardItemModel>

#include <cmath>
#include <optional>

using namespace Norvane::GenApi;

namespace {

QString text(const gcstring& from) {
    return QString::fromUtf8(from.c_str());
}

bool isIPv4(ERepresentation representation, const gcstring& name) {
    if (representation == HexNumber) {
        const QString nodeName = text(name);
        return nodeName.contains(QLatin1String("IPAddress")) ||
               nodeName.contains(QLatin1String("SubnetMask")) ||
               nodeName.contains(QLatin1String("DefaultGateway"));
    }
    return representation == IPV4Address;
}

bool isMac(ERepresentation representation, const gcstring& name) {
    return representation == MACAddress ||
           (representation == HexNumber && text(name).contains(QLatin1String("MACAddress")));
}

QString macText(quint64 address) {
    QStringList bytes;
    for (int shift = 40; shift >= 0; shift -= 8) {
        bytes << QStringLiteral("%1").arg(address >> shift & 0xFF, 2, 16, QLatin1Char('0')).toUpper();
    }
    return bytes.join(QLatin1Char(':'));
}

QVariant integerValue(INode& node) {
    CIntegerPtr integer(&node);
    const std::int64_t value = integer->GetValue();
    const ERepresentation representation = integer->GetRepresentation();
    if (representation == HexNumber || representation == IPV4Address || representation == MACAddress) {
        const gcstring name = node.GetName();
        if (isIPv4(representation, name)) {
            return NodeReading::Ipv4Text(static_cast<std::uint32_t>(value));
        }
        if (isMac(representation, name)) {
            return macText(static_cast<quint64>(value));
        }
    }
    return QVariant::fromValue<qlonglong>(value);
}

QVariant enumerationValue(INode& node) {
    CEnumerationPtr enumeration(&node);
    ComboBoxValues values;
    node_vector entries;
    enumeration->GetEntries(entries);
    for (INode* entry : entries) {
        if (IsAvailable(entry)) {
            values.entries << text(CEnumEntryPtr(entry)->GetSymbolic());
        }
    }
    // A camera may hold a number that no entry has; the choices are offered all the same.
    if (const CEnumEntryPtr current = enumeration->GetCurrentEntry(); current.IsValid()) {
        values.currentValue = static_cast<qint32>(current->GetValue());
        values.currentText = text(current->GetSymbolic());
    } else {
        values.currentValue = static_cast<qint32>(enumeration->GetIntValue());
    }
    return QVariant::fromValue(values);
}

/// The number that a person or a program gave for an integer feature, in every notation in which a cell shows
/// one. Nothing for other text: it must not reach the camera as a zero.
std::optional<std::int64_t> integerFrom(const QVariant& value) {
    bool ok = false;
    if (const qlonglong number = value.toLongLong(&ok); ok) {
        return number;
    }
    const QString given = value.toString().trimmed();
    if (given.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) {
        const qulonglong number = given.toULongLong(&ok, 16);
        return ok ? std::optional<std::int64_t>(static_cast<std::int64_t>(number)) : std::nullopt;
    }
    const bool mac = given.contains(QLatin1Char(':'));
    const QStringList bytes = given.split(QLatin1Char(mac ? ':' : '.'));
    if (bytes.size() != (mac ? 6 : 4)) {
        return std::nullopt;
    }
    std::int64_t number = 0;
    for (const QString& byte : bytes) {
        const uint part = byte.toUInt(&ok, mac ? 16 : 10);
        if (!ok || part > 0xFF) {
            return std::nullopt;
        }
        number = number << 8 | part;
    }
    return number;
}

std::int64_t snapped(IInteger& integer, std::int64_t value) {
    if (integer.GetIncMode() != fixedIncrement) {
        return value;
    }
    const std::int64_t increment = integer.GetInc();
    std::int64_t distance = 0;
    // Out of the range of 64 bits no grid can be told; the node's own check rejects such a value.
    if (increment == 0 || __builtin_sub_overflow(value, integer.GetMin(), &distance)) {
        return value;
    }
    return increment == -1 ? value : value - distance % increment;
}

double snapped(IFloat& node, double value) {
    if (node.GetIncMode() != fixedIncrement) {
        return value;
    }
    const double rest = std::fmod(value - node.GetMin(), node.GetInc());
    return std::isnan(rest) || rest == 0.0 ? value : value - rest;
}

} // namespace

bool operator==(const ComboBoxValues& left, const ComboBoxValues& right) {
    return left.currentValue == right.currentValue && left.currentText == right.currentText &&
           left.entries == right.entries;
}

Mapper::Mapper() {
    // Names and comparison let the cell's data travel in a QVariant and let a model drop a write that changes
    // nothing.
    static const bool registered = [] {
        qRegisterMetaType<NodeInfo>("NodeInfo");
        qRegisterMetaType<ComboBoxValues>("ComboBoxValues");
        return QMetaType::registerEqualsComparator<ComboBoxValues>();
    }();
    Q_UNUSED(registered)
}

ControlType Mapper::ControlTypeFor(INode& node, EAccessMode access) {
    if (access == NI) {
        return CT_None;
    }
    switch (node.GetPrincipalInterfaceType()) {
    case intfIInteger:
        return CIntegerPtr(&node)->GetRepresentation() == Logarithmic ? CT_Slider : CT_LineEdit;
    case intfIFloat:
        return CFloatPtr(&node)->GetRepresentation() == Logarithmic ? CT_Slider : CT_LineEdit;
    case intfIBoolean:
        return CT_CheckBox;
    case intfICommand:
        return CT_Button;
    case intfIString:
        return CT_LineEdit;
    case intfIEnumeration:
        return CT_ComboBox;
    default:
        return CT_None;
    }
}

QVariant Mapper::CellValue(INode& node, EAccessMode access) {
    const EInterfaceType type = node.GetPrincipalInterfaceType();
    switch (type) {
    case intfIInteger:
    case intfIBoolean:
    case intfIFloat:
    case intfIString:
    case intfIEnumeration:
        if (!IsReadable(access)) {
            return 0;
        }
        break;
    case intfICommand:
        return QStringLiteral("Execute");
    default:
        return {};
    }
    switch (type) {
    case intfIInteger:
        return integerValue(node);
    case intfIBoolean:
        return CBooleanPtr(&node)->GetValue();
    case intfIFloat:
        return QString::number(CFloatPtr(&node)->GetValue(), 'f', 2);
    case intfIString:
        return text(CStringPtr(&node)->GetValue());
    default:
        return enumerationValue(node);
    }
}

void Mapper::GetControlType(CNodePtr node, ControlType& type) const {
    type = ControlTypeFor(*node, node->GetAccessMode());
}

EInterfaceType Mapper::GetNodeType(CNodePtr node) const {
    return node->GetPrincipalInterfaceType();
}

void Mapper::SetModelData(CNodePtr node, ControlType, QStandardItemModel* model, QModelIndex index) const {
    const QVariant value = CellValue(*node, node->GetAccessMode());
    if (value.isValid()) {
        model->setData(index, value, Qt::EditRole);
    }
}

void Mapper::SetNodeValue(CNodePtr node, const QVariant& value) const {
    if (!IsWritable(node->GetAccessMode())) {
        return;
    }
    switch (node->GetPrincipalInterfaceType()) {
    case intfIInteger: {
        CIntegerPtr integer(node);
        if (const auto number = integerFrom(value)) {
            integer->SetValue(snapped(*integer, *number), true);
        }
        break;
    }
    case intfIBoolean:
        CBooleanPtr(node)->SetValue(value.toBool(), true);
        break;
    case intfIFloat: {
        CFloatPtr number(node);
        bool ok = false;
        if (const double given = value.toDouble(&ok); ok) {
            number->SetValue(snapped(*number, given), true);
        }
        break;
    }
    case intfIString:
        CStringPtr(node)->SetValue(value.toString().toUtf8().constData(), true);
        break;
    case intfIEnumeration: {
        CEnumerationPtr enumeration(node);
        CEnumEntryPtr entry(enumeration->GetEntryByName(value.toString().toUtf8().constData()));
        enumeration->SetIntValue(entry->GetValue(), true);
        break;
    }
    default:
        break;
    }
}

int Mapper::GetDeviceSerialNumber(const Norvane::CameraPtr& camera) const {
    try {
        CStringPtr serial(camera->GetTLDeviceNodeMap().GetNode("DeviceSerialNumber"));
        return text(serial->GetValue()).toInt(nullptr, 10);
    } catch (const Norvane::Exception&) {
        return -1;
    }
}

void Mapper::RegisterNode(CNodePtr) const {}

void Mapper::DeregisterNode(CNodePtr node) const {
    Deregister(node.IsValid() ? 1 : 0);
}

void Mapper::OnNodeUpdate(INode*) const {}
