#pragma once

#include "genapi/Formula.h"
#include "genapi/Node.h"

#include <string_view>

namespace Norvane::GenApi {

/// The variables, constants and expressions of a formula node, and its one or two formulas. A variable stands
/// for a property of a node: its value, or with a suffix its Min, Max, Inc, AccessMode, ... (schema:
/// VariableName_t).
class FormulaBinding {
public:
    bool LoadElement(Node& owner, Tag tag, pugi::xml_node element, Loader& loader);
    /// Compiles `text`; `extra` is one more variable ("FROM" or "TO"), the last. Breaks the node when that
    /// fails.
    Formula Compile(Node& owner, Loader& loader, std::string_view text, Formula::Kind kind,
                    std::string_view extra = {});
    void CollectEdges(Node& owner, Facet facet, EdgeSink& edges, bool content) const;
    /// Whether all variables can be read.
    bool Readable() const;

    std::int64_t ReadInteger(std::size_t variable, bool fresh) const;
    double ReadFloat(std::size_t variable, bool fresh) const;
    std::size_t Count() const { return m_variables.size(); }

private:
    enum class Property : std::uint8_t { Value, Min, Max, Inc, AccessMode, Visibility, CachingMode, Entry };
    struct Variable {
        std::string_view name;
        Node* node;
        Property property;
        std::int64_t entry;
    };
    void AddVariable(Node& owner, std::string_view name, Node* node, Loader& loader);
    void AddUndeclared(Node& owner, std::string_view text, Loader& loader);

    ArenaList<Variable> m_variables;
    ArenaList<Formula::Constant> m_constants;
    ArenaList<Formula::Expression> m_expressions;
};

/// A formula does not know its node; an error must name it.
template <class Evaluate>
auto Named(const Node& node, Evaluate&& evaluate) {
    try {
        return evaluate();
    } catch (const FormulaError& error) {
        node.Fail(Error::GenApiLogical, error.what());
    }
}

} // namespace Norvane::GenApi
