#include "wPrmDialog.h"

#include "Guarded.h"
#include "ui_wPrmDialog.h"

#include <QHeaderView>
#include <QTreeWidgetItem>

using namespace Norvane::GenApi;

namespace {

QString text(const gcstring& from) {
    return QString::fromUtf8(from.c_str());
}

const char* accessModeName(EAccessMode mode) {
    switch (mode) {
    case NI:
        return "NI";
    case NA:
        return "NA";
    case WO:
        return "WO";
    case RO:
        return "RO";
    case RW:
        return "RW";
    default:
        return "Unknown";
    }
}

const char* cachingModeName(ECachingMode mode) {
    switch (mode) {
    case NoCache:
        return "NoCache";
    case WriteThrough:
        return "WriteThrough";
    case WriteAround:
        return "WriteAround";
    case _UndefinedCachingMode:
        return "_UndefinedCachingMode";
    }
    return "Unavailable";
}

const char* nameSpaceName(ENameSpace nameSpace) {
    switch (nameSpace) {
    case Custom:
        return "Custom";
    case Standard:
        return "Standard";
    default:
        return "Undefined Namespace";
    }
}

const char* visibilityName(EVisibility visibility) {
    switch (visibility) {
    case Beginner:
        return "Beginner";
    case Expert:
        return "Expert";
    case Guru:
        return "Guru";
    case Invisible:
        return "Invisible";
    default:
        return "Undefined";
    }
}

const char* typeName(EInterfaceType type) {
    switch (type) {
    case intfIValue:
        return "intfIValue";
    case intfIBase:
        return "intfIBase";
    case intfIInteger:
        return "intfIInteger";
    case intfIBoolean:
        return "intfIBoolean";
    case intfICommand:
        return "intfICommand";
    case intfIFloat:
        return "intfIFloat";
    case intfIString:
        return "intfIString";
    case intfIRegister:
        return "intfIRegister";
    case intfICategory:
        return "intfICategory";
    case intfIEnumeration:
        return "intfIEnumeration";
    case intfIEnumEntry:
        return "intfIEnumEntry";
    case intfIPort:
        return "intfIPort";
    }
    return "";
}

QString decimal(std::int64_t value) {
    return QString::number(static_cast<qlonglong>(value));
}

QString decimal(double value) {
    return QString::number(value, 'g', 12);
}

QString trueOrFalse(bool value) {
    return value ? wPrmDialog::tr("True") : wPrmDialog::tr("False");
}

void addRow(QTreeWidgetItem& top, const char* label, const QString& value) {
    auto* item = new QTreeWidgetItem(&top, {wPrmDialog::tr(label), value});
    item->setToolTip(1, value);
}

/// The increment, or the list of values that the node takes; empty when any value in the range will do.
template <class Number>
QString incrementText(Number& node) {
    switch (node.GetIncMode()) {
    case fixedIncrement:
        return decimal(node.GetInc());
    case listIncrement: {
        QStringList values;
        for (const auto value : node.GetListOfValidValues()) {
            values << decimal(value);
        }
        return values.join(QLatin1Char(','));
    }
    default:
        return {};
    }
}

template <class Number>
void addNumberRows(Number& node, QTreeWidgetItem& top) {
    addRow(top, "Min", decimal(node.GetMin()));
    addRow(top, "Max", decimal(node.GetMax()));
    addRow(top, "Value", decimal(node.GetValue()));
    addRow(top, "Increment Value", incrementText(node));
    addRow(top, "Unit", text(node.GetUnit()));
}

} // namespace

wPrmDialog::wPrmDialog(QWidget* parent) : QDialog(parent), m_ui(std::make_unique<Ui_wPrmDialog>()) {
    m_ui->setupUi(this);
    m_ui->prmTreeWidget->setColumnWidth(0, 200);
    m_ui->prmTreeWidget->setAccessibleName(tr("Node attributes"));
}

wPrmDialog::~wPrmDialog() = default;

void wPrmDialog::fillParamData(CPointer<INode, IBase> node) {
    const QString displayName = text(node->GetDisplayName());
    const QString description = text(node->GetDescription());
    m_ui->prmNameLabel->setText(displayName);
    m_ui->prmDescLabel->setText(description);

    auto top = std::make_unique<QTreeWidgetItem>(QStringList{displayName});
    for (const int column : {0, 1, 2}) {
        top->setBackground(column, QColor(220, 220, 220));
    }
    const EAccessMode access = node->GetAccessMode();
    const EInterfaceType type = m_mapper.GetNodeType(node);
    addRow(*top, "Access Mode", tr(accessModeName(access)));
    addRow(*top, "Alias", node->GetAlias() ? tr("Available") : tr("None"));
    addRow(*top, "Caching Mode", tr(cachingModeName(node->GetCachingMode())));
    addRow(*top, "Description", description);
    addRow(*top, "Display Name", displayName);
    addRow(*top, "Event ID", text(node->GetEventID()));
    addRow(*top, "IsAvailable", trueOrFalse(IsAvailable(access)));
    addRow(*top, "IsCachable", trueOrFalse(node->IsCachable()));
    addRow(*top, "IsImplemented", trueOrFalse(IsImplemented(access)));
    addRow(*top, "IsReadable", trueOrFalse(IsReadable(access)));
    addRow(*top, "IsStreamable", trueOrFalse(node->IsStreamable()));
    addRow(*top, "IsWriteable", trueOrFalse(IsWritable(access)));
    addRow(*top, "Name", text(node->GetName()));
    addRow(*top, "Namespace", tr(nameSpaceName(node->GetNameSpace())));
    addRow(*top, "Polling Time", decimal(node->GetPollingTime()));
    addRow(*top, "Tooltip", text(node->GetToolTip()));
    addRow(*top, "Type", tr(typeName(type)));
    if (IsReadable(access)) {
        guarded("node values", [&] { fillValues(node, type, *top); });
    }
    addRow(*top, "Visibility", tr(visibilityName(node->GetVisibility())));

    QTreeWidgetItem* shown = top.release();
    m_ui->prmTreeWidget->clear();
    m_ui->prmTreeWidget->addTopLevelItem(shown);
    shown->setExpanded(true);
}

void wPrmDialog::fillNumberRelatedValues(IInteger& node, QTreeWidgetItem& top) {
    addNumberRows(node, top);
}

void wPrmDialog::fillNumberRelatedValues(IFloat& node, QTreeWidgetItem& top) {
    addNumberRows(node, top);
}

void wPrmDialog::fillValues(CNodePtr node, EInterfaceType type, QTreeWidgetItem& top) {
    switch (type) {
    case intfIInteger:
        fillNumberRelatedValues(*CIntegerPtr(node), top);
        break;
    case intfIFloat:
        fillNumberRelatedValues(*CFloatPtr(node), top);
        break;
    case intfIBoolean:
        addRow(top, "Value", trueOrFalse(CBooleanPtr(node)->GetValue()));
        break;
    case intfIString:
        addRow(top, "Value", text(CStringPtr(node)->GetValue()));
        break;
    default:
        break;
    }
}
