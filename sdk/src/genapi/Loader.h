#pragma once

#include "genapi/NodeMap.h"
#include "genapi/RegisterTarget.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>

namespace Norvane::GenApi {

class CategoryNode;
class EnumerationNode;

/// An element that is read ahead of what is made of it.
struct XmlElement {
    pugi::xml_node xml;
    Tag tag = Tag::Unknown;
    std::string_view name;  ///< of the node that it describes or refers to; empty for other elements
    std::uint64_t hash = 0; ///< of the name
    Node* likely = nullptr; ///< what probably has the name
};

/// Turns a description into the nodes of a map: first all nodes and their names, then each node's elements
/// and dependencies. Whatever is wrong costs the node that it belongs to and one log line.
///
/// A large description, its document and its nodes are several times the size of the processor's cache, so
/// both passes would wait for memory at almost every step. Instead they read a few elements ahead of the one
/// that they work on, and ask for the memory that its turn will need: the document itself, the place of a
/// name in the table, the node that bears it.
class Loader {
public:
    explicit Loader(NodeMap& map) : m_map(map) {}

    /// @throws Exception (GenApiLogical, FileFormat) when the map's text is no description at all.
    void Run();

    // ---- for nodes while they load

    /// The node that an element of a node names; null, with `by` broken, when there is none.
    Node* Find(Node& by, pugi::xml_node element);
    /// Likewise for a reference that the node can do without: a missing one is only logged.
    Node* FindOptional(Node& by, pugi::xml_node element);
    Node* FindName(Node& by, std::string_view element, std::string_view name);
    /// The element that is about to be loaded; null when a node's are done.
    void SetCurrent(const XmlElement* element) { m_current = element; }

    std::int64_t Integer(Node& by, pugi::xml_node element);
    std::int64_t IntegerText(Node& by, std::string_view what, std::string_view text);
    double Float(Node& by, pugi::xml_node element);
    bool YesNo(Node& by, pugi::xml_node element);
    /// The index of the element's text among `words`, or `otherwise` (with a log line) for another text.
    int Word(Node& by, pugi::xml_node element, std::initializer_list<std::string_view> words, int otherwise);

    /// The node turns not available; says so once.
    void Fault(Node& node, const std::string& what);
    void Complain(const std::string& what);

    void AddLink(Node& by, Link link) {
        m_map.m_links.push_back(link);
        if (m_linking.empty() || m_linking.back() != &by) {
            m_linking.push_back(&by);
        }
    }
    std::uint32_t LinkCount() const { return static_cast<std::uint32_t>(m_map.m_links.size()); }
    /// The registers of equal address, length and port share one copy of their bytes.
    RegisterTarget* Target(const AddressPlan& plan);
    /// The address of the node that is being loaded, as far as it was read.
    AddressPlan& Plan() { return m_plan; }
    PortNode* MainPort();
    /// A formula that the description nests in an address.
    Node* NodeFor(pugi::xml_node xml) const;
    /// Memory that lives as long as the map. What stands in it is never destroyed.
    std::pmr::memory_resource& Arena() { return m_map.m_arena; }
    template <class T>
    T* New() {
        static_assert(std::is_trivially_destructible_v<T>);
        return new (Arena().allocate(sizeof(T), alignof(T))) T{};
    }
    /// The two texts as one that lives as long as the map.
    std::string_view Store(std::string_view first, std::string_view second);

private:
    void Parse();
    void CreateNodes();
    void CreateAhead();
    void CreateStruct(pugi::xml_node xml);
    void CreateEntries(EnumerationNode& enumeration);
    void CreateNested(pugi::xml_node xml);
    [[gnu::always_inline]] XmlElement Ahead(pugi::xml_node xml, Tag tag, std::string_view name) const {
        const auto hash = NodeMap::HashOf(name);
        m_map.m_byName.AskFor(hash);
        return {xml, tag, name, hash, nullptr};
    }
    Node* Create(const XmlElement& element, bool hidden = false);
    template <class Kind, class... Arguments>
    Node* Make(pugi::xml_node xml, std::string_view name, Arguments&&... arguments);
    void LoadPorts();
    void LoadNodes();
    void ReadElements(pugi::xml_node xml);
    void ReadElementsOf(const Node& node);
    void FindLikely();
    Node* Named(pugi::xml_node element) const;
    void LoadNode(Node& node, std::span<const XmlElement> elements);
    void CutCategoryLoops();
    void WatchPorts();
    void Connect();
    void ReportTrouble(const Graph::Trouble& trouble);
    using Triggers = std::vector<std::pair<std::uint32_t, std::uint32_t>>;
    void AddTriggers(Node& node, Triggers& triggers) const;

    NodeMap& m_map;
    IndexTable m_nested;  ///< indices of the map's nodes, by their elements
    IndexTable m_targets; ///< indices of the map's targets, by their plans
    std::unordered_set<std::string> m_unknown;
    AddressPlan m_plan;
    std::vector<XmlElement> m_elements; ///< that come next
    std::vector<XmlElement> m_entries;  ///< of the enumeration that is being created
    const XmlElement* m_current = nullptr;
    EdgeSink m_edges;
    std::vector<std::uint32_t> m_uncachable; ///< vertices
    std::vector<PortNode*> m_portNodes;      ///< of the description
    std::vector<CategoryNode*> m_categories; ///< of the description
    std::vector<Node*> m_linking;            ///< nodes with links
    PortNode* m_mainPort = nullptr;
    int m_complaints = 0;
};

} // namespace Norvane::GenApi
