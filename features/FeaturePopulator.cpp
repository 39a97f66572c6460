#include "FeaturePopulator.h"

#include "FeatureModel.h"
#include "Guarded.h"

#include <QRegularExpression>
#include <QScopeGuard>
#include <QSet>

#include <algorithm>
#include <memory>

using namespace Norvane::GenApi;

namespace {

// Both far beyond any camera; a description may be broken.
constexpr std::size_t kDeepestCategory = 64;
constexpr int kMostPlaces = 16; ///< of one category; without a limit, rows double from level to level

void findMatches(const QStandardItem* item, const QRegularExpression& pattern, QSet<QString>& names) {
    if (!item) {
        return;
    }
    for (int row = 0; row < item->rowCount(); ++row) {
        findMatches(item->child(row), pattern, names);
    }
    const QString name = item->data(Qt::WhatsThisRole).toString();
    if (pattern.match(item->data(Qt::DisplayRole).toString()).hasMatch() || pattern.match(name).hasMatch()) {
        names.insert(name);
    }
}

} // namespace

bool FeaturePopulator::isCategory(INode& node, EAccessMode access) {
    return IsReadable(access) && node.GetPrincipalInterfaceType() == intfICategory;
}

void FeaturePopulator::populate(INode* node, QStandardItem* parent, bool insertUnderParent) {
    CNodePtr checked(node);
    const EAccessMode access = checked->GetAccessMode();
    if (isCategory(*checked, access)) {
        populateCategory(*checked, parent, insertUnderParent);
        return;
    }
    if (access == NI) {
        return;
    }
    if (m_callback) {
        Register(node, m_callback, cbPostInsideLock);
    }
    QStandardItem* target = parent && insertUnderParent ? parent : m_model.invisibleRootItem();
    target->appendRow(FeatureModel::makeFeatureRow(*node, access));
}

void FeaturePopulator::populateCategory(INode& node, QStandardItem* parent, bool insertUnderParent) {
    const bool known = std::find(m_path.begin(), m_path.end(), &node) != m_path.end();
    if (known || m_path.size() >= kDeepestCategory) {
        qWarning("%s: the category lies %s and is left out", node.GetName().c_str(),
                 known ? "inside itself" : "too deep");
        return;
    }
    if (const int places = ++m_places[&node]; places > kMostPlaces) {
        if (places == kMostPlaces + 1) {
            qWarning("%s: the category is listed at more than %d places and left out at the others",
                     node.GetName().c_str(), kMostPlaces);
        }
        return;
    }
    std::unique_ptr<QStandardItem> item(FeatureModel::makeCategoryItem(node));
    // Not the node's children: those include what the category's own availability hangs on.
    value_vector features;
    CCategoryPtr(&node)->GetFeatures(features);
    {
        m_path.push_back(&node);
        const auto leave = qScopeGuard([this] { m_path.pop_back(); });
        for (IValue* feature : features) {
            populate(CNodePtr(feature), item.get(), insertUnderParent);
        }
    }
    if (!insertUnderParent) {
        return;
    }
    if (parent) {
        parent->appendRow(item.release());
    } else {
        FeatureModel::setTopLevelLook(item.get());
        m_model.appendRow(item.release());
    }
}

void FeaturePopulator::addHierarchy(INodeMap& map, QStandardItem* parent) {
    QStandardItem scratch;
    guarded("feature tree", [&] {
        INode* root = map.GetNode("Root");
        if (root && isCategory(*root, root->GetAccessMode())) {
            populate(root, &scratch, true);
        }
    });
    // "Root" itself is never shown.
    QStandardItem* root = scratch.child(0);
    while (root && root->rowCount() > 0) {
        const QList<QStandardItem*> row = root->takeRow(0);
        if (parent) {
            parent->appendRow(row);
        } else {
            FeatureModel::setTopLevelLook(row.front());
            m_model.appendRow(row);
        }
    }
}

void FeaturePopulator::addFlat(INodeMap& map) {
    guarded("feature list", [&] {
        INode* root = map.GetNode("Root");
        if (root && IsReadable(root->GetAccessMode())) {
            populate(root, nullptr, false);
        }
    });
}

void FeaturePopulator::addFeature(INodeMap& map, const gcstring& name, const std::set<gcstring>& categories) {
    INode* node = map.GetNode(name);
    if (!node || categories.count(node->GetDisplayName()) != 0) {
        return;
    }
    guarded("feature", [&] {
        // Nested categories are none of the given ones, but no features either.
        if (!isCategory(*node, node->GetAccessMode())) {
            populate(node, nullptr, false);
        }
    });
}

QStringList FeaturePopulator::matchingNames(const FeatureModel& model, const QRegularExpression& pattern) {
    QSet<QString> names;
    for (int row = 0; row < model.rowCount(); ++row) {
        findMatches(model.item(row), pattern, names);
    }
    QStringList sorted = names.values();
    sorted.sort();
    return sorted;
}
