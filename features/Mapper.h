#pragma once

#include "norvane/Camera.h"
#include "norvane/genapi/GenApi.h"

#include <QMetaType>
#include <QModelIndex>
#include <QString>
#include <QStringList>
#include <QVariant>

class QStandardItemModel;

/// The editor that a feature's value cell gets.
enum ControlType {
    CT_LineEdit = 0, ///< a label when the node is not writable
    CT_CheckBox = 1,
    CT_ComboBox = 2,
    CT_SpinBox = 3,
    CT_Button = 4,
    CT_Slider = 5, ///< 0 to 100
    CT_None = 7,   ///< no editor
};

/// What a value cell carries under Qt::UserRole. The node map owns the node.
struct NodeInfo {
    ControlType controlType = CT_None;
    Norvane::GenApi::CNodePtr node;
};
Q_DECLARE_METATYPE(NodeInfo)

/// The edit data of an enumeration's value cell.
struct ComboBoxValues {
    QStringList entries; ///< symbolic names of the available entries, in the description's order
    qint32 currentValue = 0;
    QString currentText;
};
bool operator==(const ComboBoxValues& left, const ComboBoxValues& right);
Q_DECLARE_METATYPE(ComboBoxValues)

/// Turns a GenApi node into a cell of the feature tree and back. It holds no state; each class that shows or
/// writes features has one of its own. User-interface thread. A null node throws the library's
/// "NULL pointer dereferenced" (LogicalErrorException), and whatever the node itself throws passes through.
class Mapper {
public:
    Mapper();

    void GetControlType(Norvane::GenApi::CNodePtr node, ControlType& type) const;
    Norvane::GenApi::EInterfaceType GetNodeType(Norvane::GenApi::CNodePtr node) const;

    /// Writes the node's value into the cell as Qt::EditRole: text, boolean, 64-bit integer or
    /// ComboBoxValues; 0 for a node that cannot be read. The form follows the node alone, not `type`.
    void SetModelData(Norvane::GenApi::CNodePtr node, ControlType type, QStandardItemModel* model,
                      QModelIndex index) const;

    /// Writes to the node, snapped down onto the grid of its increment; does nothing unless it is writable,
    /// nor for text that is no number where a number belongs. Addresses may be given as the cells show them.
    /// @throws Norvane::Exception when the node rejects the value.
    void SetNodeValue(Norvane::GenApi::CNodePtr node, const QVariant& value) const;

    /// The number that stands for the camera everywhere in the system; 0 when its text is no number, -1 when
    /// it cannot be read.
    int GetDeviceSerialNumber(const Norvane::CameraPtr& camera) const;

    void RegisterNode(Norvane::GenApi::CNodePtr node) const;
    /// Not for real deregistration: it knows no handles.
    void DeregisterNode(Norvane::GenApi::CNodePtr node) const;
    void OnNodeUpdate(Norvane::GenApi::INode* node) const;

    /// The control type of a node whose access mode is known already: asking again may cost a register
    /// access.
    static ControlType ControlTypeFor(Norvane::GenApi::INode& node, Norvane::GenApi::EAccessMode access);
    /// What SetModelData writes, likewise; invalid for kinds that have no value.
    static QVariant CellValue(Norvane::GenApi::INode& node, Norvane::GenApi::EAccessMode access);
};
