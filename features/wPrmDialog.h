#pragma once

#include "Mapper.h"

#include "norvane/genapi/GenApi.h"

#include <QDialog>

#include <memory>

class QTreeWidgetItem;
class Ui_wPrmDialog;

/// Lists every GenApi attribute of one node as its description gives it. Owned by the feature tree, shown
/// non-modally; user-interface thread. The values are those of the moment of filling.
class wPrmDialog : public QDialog {
    Q_OBJECT

public:
    explicit wPrmDialog(QWidget* parent);
    ~wPrmDialog() override;

    /// @throws Norvane::Exception for a null node (LogicalErrorException) and whatever the node throws.
    void fillParamData(Norvane::GenApi::CPointer<Norvane::GenApi::INode, Norvane::GenApi::IBase> node);

private:
    // Each adds the rows that follow "Type" to the node's top item.
    void fillNumberRelatedValues(Norvane::GenApi::IInteger& node, QTreeWidgetItem& top);
    void fillNumberRelatedValues(Norvane::GenApi::IFloat& node, QTreeWidgetItem& top);
    void fillValues(Norvane::GenApi::CNodePtr node, Norvane::GenApi::EInterfaceType type,
                    QTreeWidgetItem& top);

    std::unique_ptr<Ui_wPrmDialog> m_ui;
    Mapper m_mapper;
};
