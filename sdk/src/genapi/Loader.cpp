#include "genapi/Loader.h"

#include "genapi/Archive.h"
#include "genapi/CategoryNode.h"
#include "genapi/LookAhead.h"
#include "genapi/PortNode.h"
#include "genapi/Text.h"
#include "norvane/Exception.h"
#include "norvane/Log.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace Norvane::GenApi {

namespace {

/// A description with more faults than this is damaged as a whole; the log shall stay readable.
constexpr int kMostComplaints = 100;

} // namespace

void Loader::Run() {
    Parse();
    CreateNodes();
    LoadNodes();
    Connect();
}

void Loader::Parse() {
    auto& text = m_map.m_text;
    // A text stands in its element instead of in a node of its own: that halves the document.
    const auto result = m_map.m_document.load_buffer_inplace(text.data(), text.size(),
                                                             pugi::parse_default | pugi::parse_embed_pcdata);
    if (!result) {
        // The parser wrote into the text, but never over line breaks outside of values; the line is close
        // enough to find the place.
        const auto offset =
            std::min(static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0)), text.size());
        const auto line =
            1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(offset), '\n');
        throw Exception(Error::GenApiLogical, "The camera description of " + m_map.m_options.deviceName +
                                                  " breaks in line " + std::to_string(line) + ": " +
                                                  result.description());
    }
    const auto root = m_map.m_document.document_element();
    if (std::strcmp(root.name(), "RegisterDescription") != 0) {
        throw Exception(Error::GenApiLogical, "The camera description of " + m_map.m_options.deviceName +
                                                  " starts with the element '" + root.name() +
                                                  "' instead of 'RegisterDescription'");
    }
    const auto major = ParseInteger(root.attribute("SchemaMajorVersion").value());
    if (major != 1) {
        Complain("the description is of schema version '" +
                 std::string(root.attribute("SchemaMajorVersion").value()) +
                 "'; it is read as version 1, which may miss features");
    }
}

void Loader::Complain(const std::string& what) {
    ++m_complaints;
    const auto& device = m_map.m_options.deviceName;
    const auto prefix = device.empty() ? std::string("Camera description: ") : device + ": ";
    if (m_complaints <= kMostComplaints) {
        Log(LogLevel::Warning, prefix + what);
    } else if (m_complaints == kMostComplaints + 1) {
        Log(LogLevel::Warning, prefix + "there are more faults in the description; they are not listed");
    }
}

void Loader::Fault(Node& node, const std::string& what) {
    if (node.Broken()) {
        return;
    }
    node.MarkBroken();
    m_map.m_faults.emplace(&node, what);
    Complain(node.Name() + " is not available: " + what);
}

Node* Loader::NodeFor(pugi::xml_node xml) const {
    const auto found = m_nested.Find(xml.hash_value(),
                                     [&](std::uint32_t index) { return m_map.m_nodes[index]->Xml() == xml; });
    return found == IndexTable::kNone ? nullptr : m_map.m_nodes[found];
}

void Loader::ReadElements(pugi::xml_node xml) {
    for (auto element = xml.first_child(); element; element = element.next_sibling()) {
        AskForMore(element);
        if (element.type() != pugi::node_element) {
            continue;
        }
        const char* const name = element.name();
        const Tag tag = TagOf(name);
        const bool refers = name[0] == 'p';
        m_elements.push_back(refers ? Ahead(element, tag, Trim(element.child_value()))
                                    : XmlElement{element, tag, {}, 0, nullptr});
    }
}

void Loader::ReadElementsOf(const Node& node) {
    const auto xml = node.Xml();
    if (std::strcmp(xml.name(), "StructEntry") == 0) {
        ReadElements(xml.parent());
    }
    ReadElements(xml);
}

void Loader::FindLikely() {
    for (auto& element : m_elements) {
        if (!element.name.empty()) {
            const auto index = m_map.m_byName.Guess(element.hash);
            if (index != IndexTable::kNone) {
                element.likely = m_map.m_nodes[index];
                AskFor<sizeof(Node)>(element.likely);
            }
        }
    }
    for (const auto& element : m_elements) {
        if (element.likely) {
            AskFor(element.likely->NameView().data());
        }
    }
}

void Loader::LoadPorts() {
    const auto& ports = m_map.m_options.ports;
    for (PortNode* port : m_portNodes) {
        Node& node = *port;
        m_elements.clear();
        ReadElementsOf(node);
        node.Load(m_elements, *this);
        const auto given = ports.find(port->Name());
        if (given != ports.end()) {
            port->SetPort(given->second);
        } else if (!port->IsChunk() && !port->IsEvent()) {
            port->SetPort(m_map.m_port);
            m_mainPort = m_mainPort ? m_mainPort : port;
        }
        (port->IsChunk() ? m_map.m_chunkPorts : m_map.m_ports).push_back(port);
    }
}

void Loader::LoadNodes() {
    LoadPorts(); // registers look at them
    m_edges.m_edges.reserve(m_map.m_nodes.size() * 6);
    std::array<std::size_t, kAhead> ends{};                      // of each node's elements
    for (std::size_t first = 0; first < m_map.m_nodes.size();) { // a hidden port may be added meanwhile
        const auto count = std::min(kAhead, m_map.m_nodes.size() - first);
        const auto next = std::min(first + 2 * kAhead, m_map.m_nodes.size());
        for (auto i = first + count; i < next; ++i) {
            AskFor<kNodeBytes>(m_map.m_nodes[i]);
        }
        m_elements.clear();
        for (std::size_t i = 0; i < count; ++i) {
            ReadElementsOf(*m_map.m_nodes[first + i]);
            ends[i] = m_elements.size();
        }
        FindLikely();
        std::size_t start = 0;
        for (std::size_t i = 0; i < count; ++i) {
            LoadNode(*m_map.m_nodes[first + i], std::span(m_elements).subspan(start, ends[i] - start));
            start = ends[i];
        }
        first += count;
    }
}

void Loader::LoadNode(Node& node, std::span<const XmlElement> elements) {
    if (node.Xml() && node.GetPrincipalInterfaceType() != intfIPort) {
        m_plan = AddressPlan();
        node.Load(elements, *this);
        node.FinishLoading(*this);
        if (node.PollingTime() >= 0) {
            m_map.m_polled.push_back({&node, 0});
        }
    }
    node.CollectEdges(m_edges);
    if (node.OwnCachingMode() == NoCache) {
        m_uncachable.push_back(node.Vertex(Facet::Value));
    }
}

RegisterTarget* Loader::Target(const AddressPlan& plan) {
    const auto hash = HashOf(plan);
    const auto found =
        m_targets.Find(hash, [&](std::uint32_t index) { return m_map.m_targets[index]->Plan() == plan; });
    if (found != IndexTable::kNone) {
        return m_map.m_targets[found];
    }
    void* const memory = Arena().allocate(sizeof(RegisterTarget), alignof(RegisterTarget));
    auto* const target = new (memory) RegisterTarget(plan, m_map.m_buffers);
    m_targets.Insert(hash, static_cast<std::uint32_t>(m_map.m_targets.size()));
    m_map.m_targets.push_back(target);
    plan.port->AddTarget(target);
    return target;
}

void Loader::WatchPorts() {
    for (PortNode* port : m_map.m_ports) {
        IPort* const behind = port->Behind();
        const auto known = std::any_of(m_map.m_livePorts.begin(), m_map.m_livePorts.end(),
                                       [behind](const auto& live) { return live.port == behind; });
        if (behind && !known) {
            m_map.m_livePorts.push_back({behind, behind->GetAccessMode()});
        }
        port->ModeChanged();
    }
}

/// Categories that list one another would all be lost, and what they list with them; the listing that leads
/// back is left out instead. Walked from the top without recursion: the nesting may be as deep as it likes.
void Loader::CutCategoryLoops() {
    enum : std::uint8_t { kNew, kOnPath, kDone };
    struct Step {
        CategoryNode* category;
        std::uint32_t next;
    };
    std::vector<std::uint8_t> states(m_map.m_nodes.size(), kNew);
    std::vector<Step> path;
    const auto enter = [&](Node* node) {
        if (node && node->GetPrincipalInterfaceType() == intfICategory && states[node->Index()] == kNew) {
            states[node->Index()] = kOnPath;
            path.push_back({static_cast<CategoryNode*>(node), 0});
        }
    };
    const auto walk = [&](Node* top) {
        for (enter(top); !path.empty();) {
            auto& [category, next] = path.back();
            if (next == category->Features().size()) {
                states[category->Index()] = kDone;
                path.pop_back();
                continue;
            }
            Node* const feature = category->Features()[next];
            if (states[feature->Index()] == kOnPath) {
                Complain(category->Name() + ": its pFeature '" + feature->Name() +
                         "' leads back to a category around it and is ignored");
                category->LeaveOut(next);
                continue;
            }
            ++next;
            enter(feature);
        }
    };
    walk(m_map.Named("Root"));
    for (CategoryNode* category : m_categories) {
        walk(category);
    }
}

void Loader::Connect() {
    CutCategoryLoops();
    for (CategoryNode* category : m_categories) {
        category->CollectFeatureEdges(m_edges);
    }
    WatchPorts();
    auto& graph = m_map.m_graph;
    graph.Build(static_cast<std::uint32_t>(m_map.m_nodes.size()) * kFacets, m_edges.m_edges);
    for (const auto vertex : m_uncachable) {
        graph.SetUncachable(vertex);
    }
    for (const auto& trouble : graph.Sort()) {
        ReportTrouble(trouble);
    }
    for (std::uint32_t vertex = 0; vertex < m_map.m_nodes.size() * kFacets; ++vertex) {
        if (!graph.Cachable(vertex)) {
            m_map.m_nodes[vertex / kFacets]->SetUncachable(static_cast<Facet>(vertex % kFacets));
        }
    }
    Triggers triggers;
    for (Node* node : m_linking) {
        AddTriggers(*node, triggers);
    }
    graph.AddTriggers(std::move(triggers));
}

void Loader::ReportTrouble(const Graph::Trouble& trouble) {
    std::vector<Node*> nodes;
    for (const auto vertex : trouble.vertices) {
        Node* const node = m_map.m_nodes[vertex / kFacets];
        if (std::find(nodes.begin(), nodes.end(), node) == nodes.end()) {
            nodes.push_back(node);
        }
    }
    std::string what;
    switch (trouble.kind) {
    case Graph::Trouble::Kind::Cycle: {
        constexpr std::size_t kNamed = 8;
        for (std::size_t i = 0; i < std::min(nodes.size(), kNamed); ++i) {
            what += nodes[i]->Name() + " -> ";
        }
        what = "they depend on one another: " + what + (nodes.size() > kNamed ? "... -> " : "") +
               nodes[0]->Name();
        break;
    }
    case Graph::Trouble::Kind::LongChain:
        what = "it stands at the end of more than " + std::to_string(Graph::kLongestChain) + " references";
        break;
    case Graph::Trouble::Kind::ManyReads:
        what =
            "its value would take more than " + std::to_string(Graph::kMostReads) + " reads of other nodes";
        break;
    }
    bool known = true;
    for (Node* node : nodes) {
        known = known && node->Broken();
        if (!node->Broken()) {
            node->MarkBroken();
            m_map.m_faults.emplace(node, what);
        }
    }
    if (!known) {
        Complain(nodes[0]->Name() + (nodes.size() > 1 ? " and other nodes are" : " is") +
                 " not available: " + what);
    }
}

void Loader::AddTriggers(Node& node, Triggers& triggers) const {
    const auto addContent = [&](Node& from, Node& to, Facet facet) {
        for (const auto vertex : m_map.m_graph.ContentOf(to.Vertex(facet), m_map.m_nodes)) {
            triggers.emplace_back(from.Vertex(Facet::Value), vertex);
        }
    };
    for (std::uint32_t i = node.m_firstLink; i < node.m_firstLink + node.m_links; ++i) {
        Node& target = *m_map.m_links[i].target;
        if (m_map.m_links[i].kind == LinkKind::Invalidator) {
            addContent(target, node, Facet::Value);
            addContent(target, node, Facet::Range);
        } else if (m_map.m_links[i].kind == LinkKind::Selected) {
            // A device may switch what stands in the registers of a selected feature without the description
            // saying so.
            addContent(node, target, Facet::Value);
            addContent(node, target, Facet::Range);
            triggers.emplace_back(node.Vertex(Facet::Value), target.Vertex(Facet::Presence));
            triggers.emplace_back(node.Vertex(Facet::Value), target.Vertex(Facet::Lock));
        }
    }
}

Node* Loader::FindName(Node& by, std::string_view element, std::string_view name) {
    name = Trim(name);
    if (Node* const found = m_map.Named(name)) {
        return found;
    }
    Fault(by, "its " + std::string(element) + " '" + std::string(name) + "' does not exist");
    return nullptr;
}

Node* Loader::Named(pugi::xml_node element) const {
    if (m_current && m_current->xml == element && m_current->likely &&
        m_current->likely->NameView() == m_current->name) {
        return m_current->likely;
    }
    return m_map.Named(Trim(element.child_value()));
}

Node* Loader::Find(Node& by, pugi::xml_node element) {
    Node* const found = Named(element);
    return found ? found : FindName(by, element.name(), element.child_value());
}

Node* Loader::FindOptional(Node& by, pugi::xml_node element) {
    if (Node* const found = Named(element)) {
        return found;
    }
    Complain(by.Name() + ": its " + element.name() + " '" + std::string(Trim(element.child_value())) +
             "' does not exist and is ignored");
    return nullptr;
}

std::int64_t Loader::IntegerText(Node& by, std::string_view what, std::string_view text) {
    if (const auto value = ParseInteger(text)) {
        return *value;
    }
    // Some makers' tools write whole numbers as floats.
    if (const auto value = ParseFloat(text);
        value && *value == static_cast<double>(static_cast<std::int32_t>(std::clamp(*value, -2e9, 2e9)))) {
        return static_cast<std::int64_t>(*value);
    }
    Fault(by, "its " + std::string(what) + " '" + std::string(Trim(text)) + "' is no integer");
    return 0;
}

std::int64_t Loader::Integer(Node& by, pugi::xml_node element) {
    return IntegerText(by, element.name(), element.child_value());
}

double Loader::Float(Node& by, pugi::xml_node element) {
    if (const auto value = ParseFloat(element.child_value())) {
        return *value;
    }
    Fault(by, std::string("its ") + element.name() + " '" + std::string(Trim(element.child_value())) +
                  "' is no number");
    return 0;
}

bool Loader::YesNo(Node& by, pugi::xml_node element) {
    return Word(by, element, {"No", "Yes", "false", "true"}, 0) % 2 == 1;
}

int Loader::Word(Node& by, pugi::xml_node element, std::initializer_list<std::string_view> words,
                 int otherwise) {
    const auto text = Trim(element.child_value());
    const auto found = std::find(words.begin(), words.end(), text);
    if (found != words.end()) {
        return static_cast<int>(found - words.begin());
    }
    Complain(by.Name() + ": its " + element.name() + " '" + std::string(text) + "' is not known and ignored");
    return otherwise;
}

std::shared_ptr<INodeMap> CreateNodeMap(std::string_view description, std::shared_ptr<IPort> port,
                                        const NodeMapOptions& options) {
    auto map = IsArchive(description)
                   ? std::make_shared<NodeMap>(DescriptionText(description), std::move(port), options)
                   : std::make_shared<NodeMap>(description, std::move(port), options);
    Loader(*map).Run();
    return map;
}

} // namespace Norvane::GenApi
