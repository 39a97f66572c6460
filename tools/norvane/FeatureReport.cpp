#include "FeatureReport.h"

#include "norvane/Exception.h"

#include <set>

using namespace Norvane::GenApi;

namespace {

constexpr std::size_t kLongestRegister = 65536; ///< bytes shown of a register
constexpr int kDeepestCategory = 64;            ///< far beyond any camera; a description may be broken

const char* representationText(ERepresentation representation) {
    switch (representation) {
    case Linear:
        return "Linear";
    case Logarithmic:
        return "Logarithmic";
    case Boolean:
        return "Boolean";
    case PureNumber:
        return "PureNumber";
    case HexNumber:
        return "HexNumber";
    case IPV4Address:
        return "IPV4Address";
    case MACAddress:
        return "MACAddress";
    default:
        return "";
    }
}

std::string hexText(IRegister& node) {
    const std::int64_t length = node.GetLength();
    if (length < 0 || length > static_cast<std::int64_t>(kLongestRegister)) {
        return "(" + std::to_string(length) + " bytes)";
    }
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(length));
    if (!bytes.empty()) {
        node.Get(bytes.data(), length);
    }
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text = "0x";
    for (const std::uint8_t byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

void fillValue(INode& node, FeatureRecord& record) {
    switch (record.type) {
    case intfIInteger:
        record.value = CIntegerPtr(&node)->GetValue();
        break;
    case intfIFloat:
        record.value = CFloatPtr(&node)->GetValue();
        break;
    case intfIBoolean:
        record.value = CBooleanPtr(&node)->GetValue();
        break;
    case intfIString:
        record.value = CStringPtr(&node)->GetValue().str();
        break;
    case intfIEnumeration: {
        CEnumerationPtr enumeration(&node);
        CEnumEntryPtr entry(enumeration->GetCurrentEntry());
        if (entry.IsValid()) {
            record.value = entry->GetSymbolic().str();
            record.entryValue = entry->GetValue();
        }
        break; // the text's error tells which number has no entry
    }
    case intfIRegister:
        record.value = record.valueText = hexText(*CRegisterPtr(&node));
        return;
    default:
        return;
    }
    record.valueText = CValuePtr(&node)->ToString().str();
}

template <class Number>
void fillRange(Number& node, FeatureRecord& record) {
    record.representation = representationText(node.GetRepresentation());
    record.unit = node.GetUnit().str();
    record.minimum = node.GetMin();
    record.maximum = node.GetMax();
    switch (node.GetIncMode()) {
    case fixedIncrement:
        record.increment = node.GetInc();
        break;
    case listIncrement:
        for (const auto value : node.GetListOfValidValues()) {
            record.validValues.emplace_back(value);
        }
        break;
    default:
        break;
    }
}

void fillEntries(INode& node, FeatureRecord& record) {
    node_vector entries;
    CEnumerationPtr(&node)->GetEntries(entries);
    for (INode* entry : entries) {
        CEnumEntryPtr typed(entry);
        record.entries.push_back({typed->GetSymbolic().str(), typed->GetValue(), entry->GetAccessMode()});
    }
}

template <class Action>
void note(FeatureRecord& record, Action&& action) {
    try {
        action();
    } catch (const Norvane::Exception& error) {
        if (record.error.empty()) {
            record.error = error.what();
        }
    }
}

bool hasValue(INode& node) {
    const EInterfaceType type = node.GetPrincipalInterfaceType();
    return type != intfICategory && type != intfIEnumEntry && type != intfIPort && type != intfIBase;
}

/// Walks the categories and reads each feature once. What lies deeper than any sensible category is left to
/// whoever asks for the features without one.
class Walk {
public:
    explicit Walk(std::vector<FeatureRecord>& records) : m_records(records) {}

    void category(INode& node, const std::string& path, int depth = 0) {
        if (depth > kDeepestCategory || !m_seen.insert(&node).second) {
            return;
        }
        const std::string prefix = path.empty() ? path : path + "/";
        value_vector features;
        CCategoryPtr(&node)->GetFeatures(features);
        for (IValue* feature : features) {
            CNodePtr child(feature);
            if (!child.IsValid()) {
                continue;
            }
            if (CCategoryPtr(feature).IsValid()) {
                category(*child, prefix + child->GetName().str(), depth + 1);
            } else {
                this->feature(*child, path);
            }
        }
    }

    void feature(INode& node, const std::string& path) {
        if (hasValue(node) && m_seen.insert(&node).second) {
            m_records.push_back(readFeature(node, path));
        }
    }

private:
    std::vector<FeatureRecord>& m_records;
    std::set<const INode*> m_seen;
};

} // namespace

const char* accessText(EAccessMode mode) {
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
        return "?";
    }
}

const char* typeText(EInterfaceType type) {
    switch (type) {
    case intfIInteger:
        return "Integer";
    case intfIBoolean:
        return "Boolean";
    case intfICommand:
        return "Command";
    case intfIFloat:
        return "Float";
    case intfIString:
        return "String";
    case intfIRegister:
        return "Register";
    case intfICategory:
        return "Category";
    case intfIEnumeration:
        return "Enumeration";
    case intfIEnumEntry:
        return "EnumEntry";
    case intfIPort:
        return "Port";
    default:
        return "Value";
    }
}

const char* visibilityText(EVisibility visibility) {
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

FeatureRecord readFeature(INode& node, const std::string& category) {
    FeatureRecord record;
    record.category = category;
    note(record, [&] {
        record.name = node.GetName().str();
        record.displayName = node.GetDisplayName().str();
        record.description = node.GetDescription().str();
        record.type = node.GetPrincipalInterfaceType();
        record.visibility = node.GetVisibility();
        record.access = node.GetAccessMode();
    });
    if (!IsAvailable(record.access)) {
        return record;
    }
    if (IsReadable(record.access)) {
        note(record, [&] { fillValue(node, record); });
    }
    note(record, [&] {
        if (record.type == intfIInteger) {
            fillRange(*CIntegerPtr(&node), record);
        } else if (record.type == intfIFloat) {
            fillRange(*CFloatPtr(&node), record);
        } else if (record.type == intfIEnumeration) {
            fillEntries(node, record);
        }
    });
    return record;
}

FeatureRecord readValue(INode& node) {
    FeatureRecord record;
    record.name = node.GetName().str();
    record.type = node.GetPrincipalInterfaceType();
    record.access = node.GetAccessMode();
    if (record.type == intfIInteger) {
        record.unit = CIntegerPtr(&node)->GetUnit().str();
    } else if (record.type == intfIFloat) {
        record.unit = CFloatPtr(&node)->GetUnit().str();
    }
    fillValue(node, record);
    return record;
}

std::vector<FeatureRecord> readFeatures(INodeMap& map) {
    std::vector<FeatureRecord> records;
    Walk walk(records);
    node_vector nodes;
    map.GetNodes(nodes);
    INode* root = map.GetNode("Root");
    const bool rooted = root && CCategoryPtr(root).IsValid();
    if (rooted) {
        walk.category(*root, {});
    }
    for (INode* node : nodes) {
        if (!rooted || node->IsFeature()) {
            walk.feature(*node, {});
        }
    }
    return records;
}
