#include "genapi/FormulaBinding.h"

#include "genapi/EnumerationNode.h"
#include "genapi/Graph.h"
#include "genapi/Loader.h"
#include "genapi/Text.h"
#include "norvane/Exception.h"

#include <algorithm>

namespace Norvane::GenApi {

bool FormulaBinding::LoadElement(Node& owner, Tag tag, pugi::xml_node element, Loader& loader) {
    const auto name = Trim(element.attribute("Name").value());
    switch (tag) {
    case Tag::pVariable:
        if (Node* node = loader.Find(owner, element)) {
            AddVariable(owner, name, node, loader);
        }
        return true;
    case Tag::Constant:
        m_constants.Add(loader.Arena(), {name, loader.Float(owner, element)});
        return true;
    case Tag::Expression:
        m_expressions.Add(loader.Arena(), {name, element.child_value()});
        return true;
    default:
        return false;
    }
}

void FormulaBinding::AddVariable(Node& owner, std::string_view name, Node* node, Loader& loader) {
    Variable variable{name, node, Property::Value, 0};
    const auto dot = name.find('.');
    if (dot != name.npos) {
        const auto suffix = name.substr(dot + 1);
        constexpr std::pair<std::string_view, Property> kSuffixes[] = {
            {"Value", Property::Value},
            {"Min", Property::Min},
            {"Max", Property::Max},
            {"Inc", Property::Inc},
            {"AccessMode", Property::AccessMode},
            {"Visibility", Property::Visibility},
            {"CachingMode", Property::CachingMode}};
        const auto known = std::find_if(std::begin(kSuffixes), std::end(kSuffixes),
                                        [&](const auto& candidate) { return candidate.first == suffix; });
        const auto prefix = suffix.substr(0, suffix.find('.') + 1);
        if (known != std::end(kSuffixes)) {
            variable.property = known->second;
        } else if (prefix == "Entry." || prefix == "Enum.") {
            const auto* const enumeration = dynamic_cast<EnumerationNode*>(node);
            const auto value = enumeration ? enumeration->EntryValue(suffix.substr(prefix.size()))
                                           : std::optional<std::int64_t>();
            if (!value) {
                loader.Fault(owner, "its variable '" + std::string(name) + "' names no entry of '" +
                                        node->Name() + "'");
                return;
            }
            variable.property = Property::Entry;
            variable.entry = *value;
        } else {
            loader.Fault(owner, "its variable '" + std::string(name) + "' has an unknown suffix");
            return;
        }
    }
    m_variables.Add(loader.Arena(), variable);
}

/// Formulas may write VAR.Max where only VAR is declared.
void FormulaBinding::AddUndeclared(Node& owner, std::string_view text, Loader& loader) {
    for (auto dot = text.find('.'); dot != text.npos; dot = text.find('.', dot + 1)) {
        const auto isName = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
        auto start = dot;
        while (start > 0 && isName(text[start - 1])) {
            --start;
        }
        auto end = dot + 1;
        while (end < text.size() && (isName(text[end]) || text[end] == '.')) {
            ++end;
        }
        const auto base = text.substr(start, dot - start);
        const auto whole = text.substr(start, end - start);
        const auto named = [&](std::string_view name) {
            return std::find_if(m_variables.begin(), m_variables.end(),
                                [&](const Variable& variable) { return variable.name == name; });
        };
        if (const auto declared = named(base);
            declared != m_variables.end() && named(whole) == m_variables.end()) {
            AddVariable(owner, whole, declared->node, loader);
        }
    }
}

Formula FormulaBinding::Compile(Node& owner, Loader& loader, std::string_view text, Formula::Kind kind,
                                std::string_view extra) {
    // Whether an enumeration has an entry can be told once all nodes are loaded, which is when this is
    // called.
    AddUndeclared(owner, text, loader);
    for (const auto& expression : m_expressions) {
        AddUndeclared(owner, expression.text, loader);
    }
    Formula::Names names;
    for (const auto& variable : m_variables) {
        names.variables.push_back(variable.name);
    }
    if (!extra.empty()) {
        names.variables.push_back(extra);
    }
    names.constants.assign(m_constants.begin(), m_constants.end());
    names.expressions.assign(m_expressions.begin(), m_expressions.end());
    try {
        return Formula::Compile(text, names, kind, loader.Arena());
    } catch (const Exception& error) {
        loader.Fault(owner, std::string("its formula is wrong: ") + error.what());
        return {};
    }
}

void FormulaBinding::CollectEdges(Node& owner, Facet facet, EdgeSink& edges, bool content) const {
    for (const auto& variable : m_variables) {
        edges.Add(owner, Facet::Presence, variable.node, Facet::Presence);
        switch (variable.property) {
        case Property::Value:
            edges.Add(owner, facet, variable.node, Facet::Value, content);
            break;
        case Property::Min:
        case Property::Max:
        case Property::Inc:
            edges.Add(owner, facet, variable.node, Facet::Range);
            break;
        case Property::AccessMode:
            edges.Add(owner, facet, variable.node, Facet::Presence);
            edges.Add(owner, facet, variable.node, Facet::Lock);
            break;
        default:
            break;
        }
    }
}

bool FormulaBinding::Readable() const {
    return std::all_of(m_variables.begin(), m_variables.end(), [](const Variable& variable) {
        const bool needsValue = variable.property <= Property::Inc;
        return !needsValue || variable.node->Readable();
    });
}

std::int64_t FormulaBinding::ReadInteger(std::size_t index, bool fresh) const {
    const auto& variable = m_variables[index];
    switch (variable.property) {
    case Property::Value:
        return variable.node->ReadInteger(fresh);
    case Property::Min:
        return variable.node->MinInteger();
    case Property::Max:
        return variable.node->MaxInteger();
    case Property::Inc:
        return variable.node->IncInteger();
    case Property::AccessMode:
        return variable.node->Access();
    case Property::Visibility:
        return variable.node->GetVisibility();
    case Property::CachingMode:
        return variable.node->GetCachingMode();
    default:
        return variable.entry;
    }
}

double FormulaBinding::ReadFloat(std::size_t index, bool fresh) const {
    const auto& variable = m_variables[index];
    switch (variable.property) {
    case Property::Value:
        return variable.node->ReadFloat(fresh);
    case Property::Min:
        return variable.node->MinFloat();
    case Property::Max:
        return variable.node->MaxFloat();
    case Property::Inc:
        return variable.node->IncFloat().value_or(0);
    default:
        return static_cast<double>(ReadInteger(index, fresh));
    }
}

} // namespace Norvane::GenApi
