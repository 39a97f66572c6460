#include "AcquisitionModeBox.h"

#include "Guarded.h"
#include "norvane/genapi/GenApi.h"

#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>

using namespace Norvane::GenApi;
using Norvane::CameraPtr;

namespace {

constexpr int kRoomBesideText = 42; // pixels for the combo's frame and arrow

CEnumerationPtr modeNode(const CameraPtr& camera) {
    return camera->GetNodeMap().GetNode("AcquisitionMode");
}

QString translated(const char* text) {
    return QCoreApplication::translate("wImageDisplay", text);
}

} // namespace

AcquisitionModeBox::AcquisitionModeBox(QWidget* parent) : QWidget(parent), m_combo(new QComboBox(this)) {
    setObjectName(QStringLiteral("actionAcquisitionMode"));
    setToolTip(translated("Sets the Acquisition Mode of the device"));
    auto* label = new QLabel(translated("Acquisition Mode"), this);
    label->setBuddy(m_combo);
    m_combo->setToolTip(toolTip());
    m_combo->setAccessibleName(label->text());
    for (const char* text : {"Continuous", "Single Frame", "Multi-Frame"}) {
        m_combo->addAction(new QAction(translated(text), m_combo));
    }
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 0, 4, 0);
    layout->setSpacing(1);
    layout->addWidget(label);
    layout->addWidget(m_combo);
}

void AcquisitionModeBox::Fill(const CameraPtr& camera) {
    guarded("Listing the acquisition modes", [&] {
        const CEnumerationPtr node = modeNode(camera);
        if (!IsReadable(node.Get())) {
            return;
        }
        node_vector entries;
        node->GetEntries(entries);
        int widest = 0;
        for (INode* item : entries) {
            const CEnumEntryPtr entry(item);
            if (!IsAvailable(entry.Get())) {
                continue;
            }
            const QString text = QString::fromUtf8(entry->GetSymbolic().c_str());
            m_combo->addItem(text, static_cast<int>(entry->GetValue()));
            widest = std::max(widest, m_combo->fontMetrics().horizontalAdvance(text));
        }
        m_combo->setMinimumWidth(widest + kRoomBesideText);
    });
    int mode = 0;
    ReadMode(camera, mode);
    m_combo->setCurrentIndex(mode);
}

void AcquisitionModeBox::ReadMode(const CameraPtr& camera, int& mode) {
    guarded("Reading the acquisition mode", [&] {
        const CEnumerationPtr node = modeNode(camera);
        if (IsReadable(node.Get())) {
            mode = static_cast<int>(node->GetIntValue());
        }
    });
}

void AcquisitionModeBox::SwitchTo(const CameraPtr& camera, int index) {
    const CEnumerationPtr node = modeNode(camera);
    if (!IsWritable(node.Get())) {
        return;
    }
    const QVariant value = m_combo->itemData(index, Qt::UserRole);
    if (!value.isValid()) {
        return;
    }
    node->SetIntValue(value.toInt(), true);
    if (const CEnumEntryPtr current = node->GetCurrentEntry()) {
        m_combo->setCurrentIndex(static_cast<int>(current->GetValue()));
    }
}

void AcquisitionModeBox::Resync(const CameraPtr& camera) {
    int mode = m_combo->currentIndex();
    ReadMode(camera, mode);
    if (mode != m_combo->currentIndex()) {
        m_combo->setCurrentIndex(mode);
    }
}
