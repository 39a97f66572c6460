#pragma once

#include "norvane/genapi/GenApi.h"

#include <QStringList>

#include <map>
#include <set>
#include <vector>

class FeatureModel;
class QRegularExpression;
class QStandardItem;

/// Turns node maps into rows of a feature model. Made for one rebuild of the model; user-interface thread.
/// Whatever a faulty node map throws leaves a partial tree behind, and a debug line.
class FeaturePopulator {
public:
    /// @param callback registered on every feature that becomes a row; null for none.
    FeaturePopulator(FeatureModel& model, Norvane::GenApi::NodeCallback callback)
        : m_model(model), m_callback(callback) {}

    /// What "Root" lists: below `parent`, or at the top level when it is null.
    void addHierarchy(Norvane::GenApi::INodeMap& map, QStandardItem* parent);
    /// Every feature at the top level, without categories.
    void addFlat(Norvane::GenApi::INodeMap& map);
    /// One feature by its name at the top level; nothing when the map has no such feature, or when its
    /// display name is one of `categories`.
    void addFeature(Norvane::GenApi::INodeMap& map, const Norvane::GenApi::gcstring& name,
                    const std::set<Norvane::GenApi::gcstring>& categories);

    /// Whether a node is shown as a category: one that cannot be read now is shown as a feature.
    static bool isCategory(Norvane::GenApi::INode& node, Norvane::GenApi::EAccessMode access);

    /// The node names of all rows whose shown or node name matches; each once, in alphabetical order.
    static QStringList matchingNames(const FeatureModel& model, const QRegularExpression& pattern);

private:
    void populate(Norvane::GenApi::INode* node, QStandardItem* parent, bool insertUnderParent);
    void populateCategory(Norvane::GenApi::INode& node, QStandardItem* parent, bool insertUnderParent);

    FeatureModel& m_model;
    Norvane::GenApi::NodeCallback m_callback;
    std::vector<const Norvane::GenApi::INode*> m_path; ///< categories from Root to the one being populated
    std::map<const Norvane::GenApi::INode*, int> m_places; ///< how often each category was met
};
