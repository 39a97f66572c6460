// Aravis's engine as the judge of ours: the same descriptions over the same register contents.
#include "AravisEngine.h"
#include "TestMap.h"

#include "genapi/Formula.h"
#include "genapi/Text.h"
#include "transport/emulator/CameraModel.h"

#include <pugixml.hpp>

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

namespace Norvane::GenApi {
namespace {

FeatureState OurState(INodeMap& map, const std::string& name) {
    FeatureState state{name, "-", "-", "-", "-", "-", "-", "-"};
    INode* const node = map.GetNode(name);
    if (!node) {
        state.available = "no such node";
        return state;
    }
    const auto mode = node->GetAccessMode();
    state.available = mode == NI ? "not implemented" : mode == NA ? "not available" : "yes";
    if (state.available != "yes") {
        return state;
    }
    constexpr const char* kModes[] = {"NI", "NA", "WO", "RO", "RW"};
    state.access = kModes[mode];
    const auto attempt = [](auto&& get) -> std::string {
        try {
            return get();
        } catch (const Exception&) {
            return "error";
        }
    };
    if (const CEnumerationPtr enumeration = node) {
        state.value = attempt([&] { return std::to_string(enumeration->GetIntValue()); });
        node_vector entries;
        enumeration->GetEntries(entries);
        state.entries.clear();
        for (INode* entry : entries) {
            if (IsAvailable(entry)) {
                state.entries +=
                    (state.entries.empty() ? "" : ",") + CEnumEntryPtr(entry)->GetSymbolic().str();
            }
        }
    } else if (const CBooleanPtr boolean = node) {
        state.value = attempt([&] { return std::to_string(boolean->GetValue()); });
    } else if (const CStringPtr text = node) {
        state.value = attempt([&] { return text->GetValue().str(); });
    } else if (const CFloatPtr number = node) {
        state.value = attempt([&] { return FormatShortest(number->GetValue()); });
        state.min = attempt([&] { return FormatShortest(number->GetMin()); });
        state.max = attempt([&] { return FormatShortest(number->GetMax()); });
        state.inc = number->HasInc() ? attempt([&] { return FormatShortest(number->GetInc()); }) : "-";
    } else if (const CIntegerPtr integer = node) {
        state.value = attempt([&] { return std::to_string(integer->GetValue()); });
        state.min = attempt([&] { return std::to_string(integer->GetMin()); });
        state.max = attempt([&] { return std::to_string(integer->GetMax()); });
        state.inc = attempt([&] { return std::to_string(integer->GetInc()); });
    }
    return state;
}

/// Where the engines differ on purpose: "Feature.field" and why ours is right.
using Differences = std::map<std::string, std::string>;

constexpr auto kWriteOnly = "Aravis reads registers that are declared write only";

/// Where Aravis has nothing but an error to say for a whole kind of element, and ours is what the standard
/// gives that kind.
struct Gap {
    std::set<std::string> elements;
    std::set<std::string> fields;
    const char* why;
};
const std::vector<Gap> kGaps{
    {{"IntSwissKnife", "SwissKnife"},
     {"min", "max", "inc"},
     "a formula that cannot be written has the limits of its number type and an increment of 1"},
    {{"MaskedIntReg", "StructEntry"}, {"inc"}, "a bit field takes every number that fits into its bits"},
    {{"FloatReg"}, {"inc"}, "a float register has no increment, which is no error"}};

/// Which element describes a node, by the node's name; an Integer or a Float that leaves the field to its
/// pValue counts as what is behind it.
class Elements {
public:
    explicit Elements(const std::string& description) { m_document.load_string(description.c_str()); }

    std::string Behind(const std::string& name, const std::string& field) const {
        pugi::xml_node node = Find(name);
        const std::map<std::string, std::pair<const char*, const char*>> kOwn{
            {"min", {"Min", "pMin"}}, {"max", {"Max", "pMax"}}, {"inc", {"Inc", "pInc"}}};
        const auto own = kOwn.find(field);
        while (own != kOwn.end() && node.child("pValue") && !node.child(own->second.first) &&
               !node.child(own->second.second)) {
            node = Find(node.child_value("pValue"));
        }
        return node.name();
    }

private:
    pugi::xml_node Find(const std::string& name) const {
        return m_document.find_node(
            [&](pugi::xml_node node) { return name == node.attribute("Name").value(); });
    }

    pugi::xml_document m_document;
};

void Compare(const std::string& file, const std::string& description, const std::shared_ptr<IPort>& port,
             const Differences& explained) {
    const auto map = CreateNodeMap(description, port);
    const AravisEngine aravis(description, port);
    ASSERT_TRUE(aravis.Good()) << file;
    node_vector nodes;
    map->GetNodes(nodes);
    const Elements elements(description);
    std::set<std::string> met;
    for (INode* node : nodes) {
        const auto type = node->GetPrincipalInterfaceType();
        if (type == intfIEnumEntry || type == intfIPort || type == intfIBase) {
            continue;
        }
        const auto name = node->GetName().str();
        const auto ours = OurState(*map, name);
        const auto theirs = aravis.StateOf(name);
        const auto compare = [&](const char* field, const std::string& our, const std::string& their) {
            const auto key = name + "." + field;
            const auto isGap = [&](const Gap& gap) {
                return gap.fields.count(field) && gap.elements.count(elements.Behind(name, field));
            };
            if (their == "error" && our != "error" && std::any_of(kGaps.begin(), kGaps.end(), isGap)) {
                return;
            }
            if (explained.count(key)) {
                met.insert(key);
                EXPECT_NE(our, their) << file << ": " << key << " no longer differs; drop the explanation";
                return;
            }
            EXPECT_EQ(our, their) << file << ": " << key;
        };
        compare("available", ours.available, theirs.available);
        if (ours.available != "yes" || theirs.available != "yes") {
            continue;
        }
        if (theirs.access != "-") {
            compare("access", ours.access, theirs.access);
        }
        compare("value", ours.value, theirs.value);
        compare("min", ours.min, theirs.min);
        compare("max", ours.max, theirs.max);
        compare("inc", ours.inc, theirs.inc);
        compare("entries", ours.entries, theirs.entries);
    }
    for (const auto& [key, why] : explained) {
        EXPECT_TRUE(met.count(key)) << file << ": " << key << " was not met: " << why;
    }
    EXPECT_GT(nodes.size(), 3u) << file;
}

std::shared_ptr<IPort> Memory(std::vector<std::uint8_t> bytes) {
    const auto port = std::make_shared<CountingPort>(0);
    port->bytes = std::move(bytes);
    return port;
}

std::string Fixture(const std::string& name) {
    std::ifstream file(std::string(FIXTURES) + "/genapi/" + name);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<std::uint8_t> Pattern() {
    std::vector<std::uint8_t> memory(0x1000);
    for (std::size_t i = 0; i < memory.size(); ++i) {
        memory[i] = static_cast<std::uint8_t>(i * 37 + i / 256 * 11);
    }
    return memory;
}

TEST(Judge, AravisOwnCamera) {
    Compare("Aravis's camera", AravisEngine::OwnDescription(), Memory(AravisEngine::OwnMemory()),
            {{"AcquisitionCommandRegister.value", kWriteOnly},
             {"TriggerSoftwareCommandRegister.value", kWriteOnly}});
}

TEST(Judge, EveryKind) {
    Compare("kinds.xml", Fixture("kinds.xml"), Memory(Pattern()),
            {{"RegWO.value", kWriteOnly},
             {"OverInteger.inc",
              "a float over an integer is rounded when it is written, so any step may be asked for"},
             {"Label.value", "blanks around a text come from the file's layout, not from the camera"}});
}

/// The registers of an emulated camera, without the camera, as they were when each was first read: clocks
/// would go on between the two engines' readings.
class BankPort final : public IPort {
public:
    explicit BankPort(Transport::Emulator::RegisterBank& bank) : m_bank(bank) {}

    EAccessMode GetAccessMode() const override { return RW; }
    void Read(void* buffer, std::int64_t address, std::int64_t length) override {
        const auto size = static_cast<std::size_t>(length);
        auto& bytes = m_read[{address, length}];
        if (bytes.size() != size) {
            std::vector<std::uint8_t> fresh(size);
            m_bank.Read(fresh.data(), static_cast<std::uint64_t>(address), size);
            bytes = std::move(fresh);
        }
        std::memcpy(buffer, bytes.data(), size);
    }
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override {
        m_bank.Write(buffer, static_cast<std::uint64_t>(address), static_cast<std::uint64_t>(length));
    }

private:
    Transport::Emulator::RegisterBank& m_bank;
    std::map<std::pair<std::int64_t, std::int64_t>, std::vector<std::uint8_t>> m_read;
};

TEST(Judge, EmulatedCameras) {
    using namespace Transport::Emulator;
    constexpr auto kVarying = "the ends of a range say nothing of what a varying formula makes of it";
    constexpr auto kChunk = "without an image there are no chunk data";
    for (const auto kind : {Kind::GigEVision, Kind::Usb3Vision}) {
        InterfaceSettings interface;
        interface.kind = kind;
        CameraSettings camera;
        CameraModel model(camera, interface, std::make_shared<Flash>());
        Compare(
            kind == Kind::GigEVision ? "GigE" : "USB", model.Description(),
            std::make_shared<BankPort>(model.Bank()),
            {{"UserOutputValueConverter.min", kVarying},
             {"UserOutputValueConverter.max", kVarying},
             {"ChunkFrameID.available", kChunk},
             {"ChunkTimestamp.available", kChunk},
             {"ChunkExposureTime.available", kChunk},
             {"ChunkGain.available", kChunk},
             {"ChunkInferenceResult.available", kChunk},
             {"ChunkInferenceConfidence.available", kChunk},
             {"ChunkInferenceBoundingBoxResult.available", kChunk},
             {"InferenceControl.available", "a category of which no feature is implemented is not either"}});
    }
}

TEST(Judge, Formulas) {
    constexpr auto kFunctions = "Aravis has functions in float formulas only";
    constexpr auto kFraction =
        "Aravis cuts 0.5 to 0 before it multiplies; ours calculates first and cuts the result";
    constexpr auto kNested =
        "Aravis gives the inner conditional's operands to the outer one; C's reading is ours";
    constexpr auto kNot = "! is a tolerance of ours";
    const std::map<std::string, std::string> explained{{"A>3?A>5?1:2:3 as integer", kNested},
                                                       {"A>3?A>5?1:2:3 as float", kNested},
                                                       {"A*0.5 as integer", kFraction},
                                                       {"5e-1*A as integer", kFraction},
                                                       {"!(A) as integer", kNot},
                                                       {"!(A) as float", kNot}};
    const std::set<std::string> functions{"ABS(B-A)",   "SQRT(A*A)", "EXP(0)",     "LN(1)",
                                          "LG(1000)",   "SIN(0)",    "COS(0)",     "TAN(0)",
                                          "ASIN(0)",    "ACOS(1)",   "ATAN(0)",    "TRUNC(A/B)",
                                          "FLOOR(A/B)", "CEIL(A/B)", "ROUND(A/B)", "ROUND(1234.567,1)"};
    for (const std::string formula :
         {"1+2*3",       "7/2",           "-7/2",      "7%3",        "-7%3",
          "2**10",       "2**3**2",       "-2**2",     "2**-1",      "1<<4",
          "-16>>2",      "0xFF&0x0F",     "1|6^3",     "~5",         "A=B",
          "A<>B",        "A<B",           "A<=B",      "A>B&&B>0",   "A>B||B>0",
          "A?B:7",       "A>3?A>5?1:2:3", "SGN(-A)",   "NEG(A)",     "ABS(B-A)",
          "SQRT(A*A)",   "EXP(0)",        "LN(1)",     "LG(1000)",   "SIN(0)",
          "COS(0)",      "TAN(0)",        "ASIN(0)",   "ACOS(1)",    "ATAN(0)",
          "TRUNC(A/B)",  "FLOOR(A/B)",    "CEIL(A/B)", "ROUND(A/B)", "ROUND(1234.567,1)",
          "(A+B)*(A-B)", "A - -B",        "+A",        "1.5+A",      "A*0.5",
          "5e-1*A",      "A&0x3=1",       "1<<2+1",    "A/B*B",      "1-2-3",
          "100/10/5",    "!(A)",          "PI",        "E",          "A=5&&B=3",
          "(A)"}) {
        for (const bool asInteger : {true, false}) {
            const auto kind = asInteger ? Formula::Kind::Integer : Formula::Kind::Float;
            std::string ours;
            try {
                std::pmr::monotonic_buffer_resource memory;
                const auto compiled = Formula::Compile(formula, {{"A", "B"}, {}, {}}, kind, memory);
                const auto load = [](std::size_t i) { return i == 0 ? 5 : 3; };
                ours = asInteger ? std::to_string(compiled.EvaluateInteger(load))
                                 : FormatShortest(compiled.EvaluateFloat(load));
            } catch (const Exception&) {
                ours = "error";
            }
            const auto key = formula + (asInteger ? " as integer" : " as float");
            const auto theirs = AravisEngine::Evaluate(formula, asInteger, 5, 3);
            if (explained.count(key) || (asInteger && functions.count(formula))) {
                EXPECT_NE(ours, theirs) << key << " no longer differs; drop the explanation: "
                                        << (explained.count(key) ? explained.at(key) : kFunctions);
            } else {
                EXPECT_EQ(ours, theirs) << key;
            }
        }
    }
}

} // namespace
} // namespace Norvane::GenApi
