#include "TestMap.h"

#include <cmath>
#include <set>

namespace Norvane::GenApi {
namespace {

/// What writing leaves in the registers; what reading finds there is compared with another engine elsewhere.
TEST(Kinds, WritesReachTheRegisters) {
    TestMap t(
        Reg("Plain", 0) +
        "<MaskedIntReg Name=\"Field\"><Address>4</Address><Length>4</Length><AccessMode>RW</AccessMode>"
        "<pPort>Device</pPort><LSB>4</LSB><MSB>11</MSB><Sign>Signed</Sign></MaskedIntReg>"
        "<MaskedIntReg Name=\"Big\"><Address>8</Address><Length>4</Length><AccessMode>RW</AccessMode>"
        "<pPort>Device</pPort><LSB>31</LSB><MSB>24</MSB><Endianess>BigEndian</Endianess></MaskedIntReg>"
        "<FloatReg Name=\"Real\"><Address>12</Address><Length>4</Length><AccessMode>RW</AccessMode>"
        "<pPort>Device</pPort></FloatReg>"
        "<StringReg Name=\"Text\"><Address>16</Address><Length>8</Length><AccessMode>RW</AccessMode>"
        "<pPort>Device</pPort></StringReg>"
        "<Register Name=\"Raw\"><Address>24</Address><Length>3</Length><AccessMode>RW</AccessMode>"
        "<pPort>Device</pPort></Register>"
        "<Converter Name=\"Scaled\"><FormulaTo>FROM*10</FormulaTo><FormulaFrom>TO/10</FormulaFrom>"
        "<pValue>Plain</pValue></Converter>"
        "<Integer Name=\"Copied\"><pValueCopy>Copy</pValueCopy><pValue>Plain</pValue></Integer>" +
        Reg("Copy", 32) +
        "<Boolean Name=\"Flag\"><pValue>Plain</pValue><OnValue>7</OnValue><OffValue>9</OffValue></Boolean>"
        "<Command Name=\"Go\"><pValue>Plain</pValue><CommandValue>5</CommandValue></Command>");
    t.port->Poke(4, 0xFFFFFFFF);
    t.Int("Field")->SetValue(-2);
    EXPECT_EQ(t.port->Peek(4), 0xFFFFFFEFu);
    EXPECT_EQ(t.Int("Field")->GetValue(), -2);
    t.Int("Big")->SetValue(0xAB); // bit 31 of a big-endian register is its last one
    EXPECT_EQ(t.port->bytes[11], 0xAB);
    t.Float("Real")->SetValue(1.5);
    EXPECT_EQ(t.port->Peek(12), 0x3FC00000u);
    t.Get<IString>("Text")->SetValue("abc");
    EXPECT_EQ(std::string(t.port->bytes.begin() + 16, t.port->bytes.begin() + 24),
              std::string("abc\0\0\0\0\0", 8));
    t.Get<IRegister>("Raw")->FromString("0x0102fF");
    EXPECT_EQ(t.port->bytes[26], 0xFF);
    EXPECT_EQ(t.Get<IRegister>("Raw")->ToString(), gcstring("0x0102FF"));
    t.Float("Scaled")->SetValue(1.26); // an integer behind it takes the nearest
    EXPECT_EQ(t.port->Peek(0), 13u);
    t.Int("Copied")->SetValue(77);
    EXPECT_EQ(t.port->Peek(0), 77u);
    EXPECT_EQ(t.port->Peek(32), 77u);
    t.Get<IBoolean>("Flag")->SetValue(false);
    EXPECT_EQ(t.port->Peek(0), 9u);
    t.Get<ICommand>("Go")->Execute();
    EXPECT_EQ(t.port->Peek(0), 5u);
    EXPECT_FALSE(t.Get<ICommand>("Go")->IsDone());
    t.port->Poke(0, 0);
    EXPECT_TRUE(t.Get<ICommand>("Go")->IsDone());
}

TEST(Kinds, ChoiceByIndex) {
    TestMap t(Reg("Index", 0) + Reg("Behind", 4) +
              "<Integer Name=\"Choice\"><pIndex>Index</pIndex><ValueIndexed Index=\"1\">10</ValueIndexed>"
              "<pValueIndexed Index=\"2\">Behind</pValueIndexed></Integer>");
    t.Int("Index")->SetValue(1);
    EXPECT_EQ(t.Int("Choice")->GetValue(), 10);
    t.Int("Choice")->SetValue(11);
    EXPECT_EQ(t.Int("Choice")->GetValue(), 11);
    t.Int("Index")->SetValue(2);
    t.Int("Choice")->SetValue(12);
    EXPECT_EQ(t.port->Peek(4), 12u);
    t.Int("Index")->SetValue(3); // neither an entry nor a default
    EXPECT_EQ(t.Access("Choice"), NA);
}

TEST(Kinds, Texts) {
    TestMap t(Reg("R", 0) +
              "<Integer Name=\"Hex\"><pValue>R</pValue><Representation>HexNumber</Representation></Integer>"
              "<Integer Name=\"Ip\"><pValue>R</pValue><Representation>IPV4Address</Representation></Integer>"
              "<Integer Name=\"Mac\"><Value>0</Value><Representation>MACAddress</Representation></Integer>"
              "<Float "
              "Name=\"Fixed\"><Value>2.0</Value><DisplayNotation>Fixed</DisplayNotation><DisplayPrecision>3</"
              "DisplayPrecision></Float>"
              "<Float Name=\"Free\"><Value>0.1</Value></Float>"
              "<Boolean Name=\"Flag\"><Value>false</Value></Boolean>");
    struct Case {
        const char* node;
        const char* written;
        const char* read;
    };
    for (const Case& c : {Case{"Hex", "0xff", "0xFF"},
                          {"Hex", "16", "0x10"},
                          {"Ip", "192.168.0.10", "192.168.0.10"},
                          {"Mac", "00:1a:2B:3c:4D:5e", "00:1A:2B:3C:4D:5E"},
                          {"Fixed", "1e1", "10.000"},
                          {"Free", "0.1", "0.1"},
                          {"Flag", "true", "1"},
                          {"Flag", "0", "0"}}) {
        const auto node = t.Get<IValue>(c.node);
        node->FromString(c.written);
        EXPECT_EQ(node->ToString().str(), c.read) << c.node;
    }
    for (const auto& [node, text] : {std::pair{"Hex", "x"},
                                     {"Ip", "1.2.3.256"},
                                     {"Ip", "1.2.3"},
                                     {"Mac", "1:2"},
                                     {"Mac", "9223372036854775808"},
                                     {"Free", "1,5"},
                                     {"Flag", "maybe"}}) {
        EXPECT_THROW(t.Get<IValue>(node)->FromString(text), Exception) << node << " " << text;
    }
}

/// What is refused, in the words that a person reads.
TEST(Kinds, VerificationNamesTheFault) {
    TestMap t(
        Reg("R", 0) + Reg("S", 4) +
        "<Float Name=\"ExposureTime\"><pValue>R</pValue><Min>32</Min><Max>1e6</Max><Unit>us</Unit></Float>"
        "<Integer Name=\"Width\"><pValue>R</pValue><Min>16</Min><Max>64</Max><Inc>8</Inc></Integer>"
        "<Integer "
        "Name=\"Listed\"><pValue>R</pValue><ValidValueSet>1;2;4;200</ValidValueSet><Max>100</Max></Integer>"
        "<Float Name=\"Tenths\"><pValue>S</pValue><Min>0.3</Min><Max>10</Max><Inc>0.1</Inc></Float>"
        "<Integer Name=\"Off\"><Value>0</Value></Integer>"
        "<Integer Name=\"Locked\"><pIsLocked>On</pIsLocked><Value>1</Value></Integer>"
        "<Integer Name=\"On\"><Value>1</Value></Integer>"
        "<Enumeration Name=\"Mode\"><EnumEntry Name=\"A\"><Value>0</Value></EnumEntry>"
        "<EnumEntry "
        "Name=\"B\"><pIsAvailable>Off</pIsAvailable><Value>1</Value></EnumEntry><pValue>S</pValue></"
        "Enumeration>"
        "<StringReg "
        "Name=\"Name\"><Address>8</Address><Length>4</Length><AccessMode>RW</AccessMode></StringReg>");
    const auto expect = [](const char* text, auto&& operation) { EXPECT_EQ(ErrorOf(operation), text); };
    expect("ExposureTime: 31 is below the minimum 32 us", [&] { t.Float("ExposureTime")->SetValue(31); });
    expect("ExposureTime: NaN is no value", [&] { t.Float("ExposureTime")->SetValue(std::nan("")); });
    expect("Width: 72 is above the maximum 64", [&] { t.Int("Width")->SetValue(72); });
    expect("Width: 20 does not fit its increment 8, counted from 16", [&] { t.Int("Width")->SetValue(20); });
    expect("Listed: 3 is not among its valid values 1;2;4;200", [&] { t.Int("Listed")->SetValue(3); });
    expect("Locked: it cannot be written: it is locked by 'On'", [&] { t.Int("Locked")->SetValue(0); });
    expect("Mode: B is not available now", [&] { t.Enum("Mode")->FromString("B"); });
    expect("Mode: 7 is the value of none of its entries", [&] { t.Enum("Mode")->SetIntValue(7); });
    expect("Name: 'hello' is longer than 4 bytes", [&] { t.Get<IString>("Name")->SetValue("hello"); });
    EXPECT_EQ(t.port->writes, 0);
    EXPECT_EQ(t.Int("Listed")->GetListOfValidValues(), (int64_autovector_t{1, 2, 4}));
    EXPECT_EQ(t.Int("Listed")->GetIncMode(), listIncrement);
    t.Int("Width")->SetValue(20, false); // without verification the device decides
    EXPECT_EQ(t.port->Peek(0), 20u);
    EXPECT_EQ(ErrorOf([&] { t.Float("Tenths")->SetValue(0.7); }),
              ""); // 0.7 - 0.3 is no binary multiple of 0.1
    EXPECT_THROW(t.Float("Tenths")->SetValue(0.75), Exception);
}

TEST(Kinds, ErrorEnumerationRefusesAfterwards) {
    TestMap t(Reg("R", 0) + Reg("Status", 4, "<Cachable>NoCache</Cachable>") +
              "<Enumeration Name=\"Error\"><EnumEntry Name=\"None\"><Value>0</Value></EnumEntry>"
              "<EnumEntry Name=\"TooHot\"><Value>3</Value></EnumEntry><pValue>Status</pValue></Enumeration>"
              "<Integer Name=\"Power\"><pError>Error</pError><pValue>R</pValue></Integer>");
    t.Int("Power")->SetValue(1);
    t.port->Poke(4, 3);
    EXPECT_EQ(ErrorOf([&] { t.Int("Power")->SetValue(2); }),
              "Power: the device refuses the value: Error is TooHot");
    EXPECT_EQ(ErrorOf([&] { t.Int("Power")->SetValue(2, false); }), "");
}

TEST(Kinds, VariablesWithSuffixes) {
    TestMap t("<Integer Name=\"V\"><Value>7</Value><Min>2</Min><Max>90</Max><Inc>5</Inc></Integer>"
              "<Enumeration Name=\"E\"><EnumEntry "
              "Name=\"Fast\"><Value>42</Value></EnumEntry><Value>42</Value></Enumeration>"
              "<IntSwissKnife Name=\"Declared\"><pVariable Name=\"X.Min\">V</pVariable><pVariable "
              "Name=\"X.Max\">V</pVariable>"
              "<pVariable "
              "Name=\"E.Entry.Fast\">E</pVariable><Formula>X.Max*100+X.Min+E.Entry.Fast*10000</Formula></"
              "IntSwissKnife>"
              "<IntSwissKnife Name=\"Implied\"><pVariable "
              "Name=\"X\">V</pVariable><Formula>X.Inc*10+X.Value</Formula></IntSwissKnife>"
              "<IntSwissKnife Name=\"Mode\"><pVariable "
              "Name=\"X.AccessMode\">V</pVariable><Formula>X.AccessMode</Formula></IntSwissKnife>");
    EXPECT_EQ(t.Int("Declared")->GetValue(), 429002);
    EXPECT_EQ(t.Int("Implied")->GetValue(), 57);
    EXPECT_EQ(t.Int("Mode")->GetValue(), RW);
}

TEST(Kinds, RangesOfConverters) {
    TestMap t("<Integer Name=\"V\"><Value>4</Value><Min>0</Min><Max>10</Max></Integer>"
              "<Converter "
              "Name=\"Reciprocal\"><FormulaTo>100/FROM</FormulaTo><FormulaFrom>100/TO</"
              "FormulaFrom><pValue>V</pValue><Slope>Decreasing</Slope></Converter>"
              "<Converter "
              "Name=\"Linear\"><FormulaTo>FROM*4</FormulaTo><FormulaFrom>TO/4</FormulaFrom><pValue>V</"
              "pValue><IsLinear>Yes</IsLinear></Converter>"
              "<FloatReg Name=\"Period\"><Address>0</Address><Length>4</Length>"
              "<AccessMode>RW</AccessMode></FloatReg>"
              "<Converter Name=\"Rate\"><FormulaTo>1000000/FROM</FormulaTo>"
              "<FormulaFrom>1000000/TO</FormulaFrom><pValue>Period</pValue></Converter>"
              "<IntConverter "
              "Name=\"Whole\"><FormulaTo>FROM-5</FormulaTo><FormulaFrom>5-TO</FormulaFrom><pValue>V</"
              "pValue></IntConverter>");
    EXPECT_EQ(t.Float("Reciprocal")->GetValue(), 25);
    EXPECT_GT(t.Float("Reciprocal")->GetMax(), 1e300); // 100/0 has no value: no limit there
    EXPECT_EQ(t.Float("Reciprocal")->GetMin(), 10);    // but at the other end
    EXPECT_EQ(ErrorOf([&] { t.Float("Reciprocal")->SetValue(5); }), "Reciprocal: 5 is below the minimum 10");
    EXPECT_EQ(t.Int("V")->GetValue(), 4);
    // On both sides of 0 the ends say nothing of what lies between.
    EXPECT_GT(t.Float("Rate")->GetMax(), 1e300);
    EXPECT_LT(t.Float("Rate")->GetMin(), -1e300);
    t.Float("Rate")->SetValue(30);
    EXPECT_NEAR(t.Float("Rate")->GetValue(), 30, 1e-5);
    EXPECT_EQ(t.Float("Linear")->GetInc(), 0.25);
    EXPECT_EQ(t.Int("Whole")->GetMin(), -5);
    EXPECT_EQ(t.Int("Whole")->GetMax(), 5);
}

TEST(Kinds, RangesWiderThanTheRegister) {
    const auto bits = [](const char* name, int lsb, int msb) {
        return std::string("<MaskedIntReg Name=\"") + name +
               "\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><LSB>" +
               std::to_string(lsb) + "</LSB><MSB>" + std::to_string(msb) + "</MSB></MaskedIntReg>";
    };
    const auto over = [](const char* name, const char* behind) {
        return std::string("<Integer Name=\"") + name + "\"><pValue>" + behind +
               "</pValue><Min>-5000000000</Min><Max>5000000000</Max></Integer>";
    };
    TestMap t(bits("Byte", 8, 15) + bits("Bit", 0, 0) + Reg("All", 0) + over("B", "Byte") + over("BB", "B") +
              over("One", "Bit") + over("A", "All"));
    struct Case {
        const char* node;
        std::int64_t value;
        bool taken;
    };
    for (const auto& [node, value, taken] : {Case{"B", 255, true},
                                             {"B", 256, false},
                                             {"BB", 256, false},
                                             {"B", -128, true},
                                             {"B", -129, false},
                                             {"One", 1, true},
                                             {"One", 2, false},
                                             {"One", -1, true},
                                             {"One", -2, false},
                                             {"A", 0xFFFFFFFF, true},
                                             {"A", 0x100000000, false}}) {
        const auto before = t.port->bytes;
        const auto error = ErrorOf([&, name = node, number = value] { t.Int(name)->SetValue(number); });
        EXPECT_EQ(error.empty(), taken) << node << " " << value << " " << error;
        EXPECT_TRUE(taken || t.port->bytes == before) << node << " " << value;
    }
    EXPECT_EQ(ErrorOf([&] { t.Int("BB")->SetValue(300); }), "Byte: 300 does not fit into its 8 bits");
}

TEST(Kinds, NumbersBeyondAnIntegerNameTheNode) {
    TestMap t(
        "<Integer Name=\"Whole\"><Value>1</Value></Integer>"
        "<Float Name=\"Over\"><pValue>Whole</pValue></Float>"
        "<FloatReg Name=\"Reg\"><Address>0</Address><Length>8</Length><AccessMode>RW</AccessMode></FloatReg>"
        "<Integer Name=\"OverReg\"><pValue>Reg</pValue></Integer>");
    EXPECT_EQ(ErrorOf([&] { t.Float("Over")->SetValue(9223372036854775808.0); }),
              "Whole: the result is outside the range of 64-bit integers");
    t.Float("Reg")->SetValue(1e300);
    EXPECT_EQ(ErrorOf([&] { t.Int("OverReg")->GetValue(); }),
              "Reg: the result is outside the range of 64-bit integers");
}

TEST(Kinds, AccessModes) {
    TestMap t(
        Reg("Switch", 0) + Reg("Value", 4) +
        "<IntReg Name=\"WO\"><Address>8</Address><Length>4</Length><AccessMode>WO</AccessMode></IntReg>"
        "<Integer "
        "Name=\"Implemented\"><pIsImplemented>Switch</pIsImplemented><pValue>Value</pValue></Integer>"
        "<Integer Name=\"Available\"><pIsAvailable>Switch</pIsAvailable><pValue>Value</pValue></Integer>"
        "<Integer Name=\"Locked\"><pIsLocked>Switch</pIsLocked><pValue>Value</pValue></Integer>"
        "<Integer Name=\"LockedWO\"><pIsLocked>Switch</pIsLocked><pValue>WO</pValue></Integer>"
        "<Integer Name=\"Over\"><pValue>Implemented</pValue></Integer>"
        "<IntSwissKnife Name=\"Knife\"><pVariable "
        "Name=\"A\">Available</pVariable><Formula>A</Formula></IntSwissKnife>"
        "<Integer Name=\"Contrary\"><ImposedAccessMode>RO</ImposedAccessMode><pValue>WO</pValue></Integer>"
        "<Category Name=\"Empty\"><pFeature>Implemented</pFeature></Category>");
    const std::map<std::string, std::pair<EAccessMode, EAccessMode>> expected{
        {"Implemented", {NI, RW}}, {"Available", {NA, RW}}, {"Locked", {RW, RO}},   {"LockedWO", {WO, NA}},
        {"Over", {NI, RW}},        {"Knife", {NA, RO}},     {"Contrary", {NA, NA}}, {"Empty", {NI, RO}}};
    for (const int on : {0, 1, 0}) {
        t.Int("Switch")->SetValue(on);
        for (const auto& [name, modes] : expected) {
            EXPECT_EQ(t.Access(name), on ? modes.second : modes.first)
                << name << " with the switch at " << on;
        }
    }
    t.Get<INode>("Value")->ImposeAccessMode(RO);
    EXPECT_EQ(t.Access("Available"), NA);
    EXPECT_EQ(t.Access("Value"), RO);
    t.port->mode = NA; // the device was closed
    EXPECT_EQ(t.Access("Value"), NA);
    EXPECT_THROW(t.Int("Value")->GetValue(), Exception);
    t.port->mode = RW;
    EXPECT_EQ(t.Access("Value"), RO);
}

TEST(Kinds, Chunks) {
    TestMap t(
        "<Port Name=\"FramePort\"><ChunkID>1A2b</ChunkID></Port>"
        "<IntReg Name=\"ChunkFrameID\"><Address>4</Address><Length>4</Length><AccessMode>RO</AccessMode>"
        "<pPort>FramePort</pPort></IntReg>");
    EXPECT_EQ(t.Access("ChunkFrameID"), NA);
    std::uint8_t first[8] = {0, 0, 0, 0, 9, 0, 0, 0};
    std::uint8_t second[8] = {0, 0, 0, 0, 10, 0, 0, 0};
    AttachChunks(*t.map, {{0x1A2B, {first, 8}}});
    EXPECT_EQ(t.Int("ChunkFrameID")->GetValue(), 9);
    AttachChunks(*t.map, {{0x1A2B, {second, 8}}});
    EXPECT_EQ(t.Int("ChunkFrameID")->GetValue(), 10);
    AttachChunks(*t.map, {{0x1A2B, {second, 6}}}); // cut off
    EXPECT_THROW(t.Int("ChunkFrameID")->GetValue(), Exception);
    AttachChunks(*t.map, {});
    EXPECT_EQ(t.Access("ChunkFrameID"), NA);
    EXPECT_EQ(t.port->reads, 0);
}

TEST(Kinds, NeighboursOfANode) {
    TestMap t("<Integer Name=\"Width\"><pIsAvailable>Gate</pIsAvailable><pInvalidator>Binning</pInvalidator>"
              "<pValue>Scaled</pValue><pMax>Limit</pMax></Integer>"
              "<IntConverter Name=\"Scaled\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>"
              "<pValue>WidthReg</pValue></IntConverter>"
              "<Integer Name=\"Offset\"><Value>0</Value><pMax>Width</pMax></Integer>"
              "<Integer Name=\"Binning\"><Value>1</Value></Integer>" +
              Reg("WidthReg", 0) + Reg("Limit", 4) + Reg("Gate", 8));
    const auto neighbours = [&](const char* node, ELinkType kind) {
        node_vector found;
        t.Get<INode>(node)->GetChildren(found, kind);
        std::set<std::string> names;
        for (INode* one : found) {
            names.insert(one->GetName().str());
        }
        return names;
    };
    using Names = std::set<std::string>;
    EXPECT_EQ(neighbours("Width", ctReadingChildren), (Names{"Gate", "Scaled", "Limit"}));
    EXPECT_EQ(neighbours("Width", ctWritingChildren), Names{"Scaled"});
    EXPECT_EQ(neighbours("Width", ctParentNodes), Names{"Offset"});
    EXPECT_EQ(neighbours("Width", ctInvalidatingChildren), Names{"Binning"});
    EXPECT_EQ(neighbours("Width", ctTerminalNodes), Names{"WidthReg"});
    EXPECT_EQ(neighbours("WidthReg", ctDependingNodes), (Names{"Scaled", "Width", "Offset"}));
    EXPECT_EQ(neighbours("Binning", ctDependingNodes).count("Width"), 1U);
}

TEST(Kinds, MemoryIsZeroUntilWrittenWhereverItLies) {
    const auto memory = CreateMemoryPort();
    constexpr std::int64_t kLastOfAPage = 0x7FFFFFFF0FFE;
    const std::uint32_t written = 0x01020304;
    memory->Write(&written, kLastOfAPage, 4);
    std::uint64_t read = ~std::uint64_t{0};
    memory->Read(&read, kLastOfAPage - 2, 8);
    EXPECT_EQ(read, std::uint64_t{written} << 16);
}

TEST(Kinds, WhatADescriptionSaysOfANode) {
    TestMap t("<Integer Name=\"Gain\" NameSpace=\"Standard\"><ToolTip>Short.</ToolTip><Description> "
              "Long\n</Description>"
              "<DisplayName>The Gain</DisplayName><Visibility>Guru</Visibility><EventID>9A</EventID>"
              "<IsDeprecated>Yes</IsDeprecated><Streamable>Yes</Streamable><pAlias>Other</"
              "pAlias><pSelected>Other</pSelected>"
              "<Extension><Anything><Deep/></Anything></Extension><Value>1</Value><Unit>dB</Unit></Integer>"
              "<Integer Name=\"Other\"><Value>1</Value></Integer>"
              "<Category Name=\"C\"><pFeature>Gain</pFeature></Category>"
              "<Enumeration Name=\"E\"><EnumEntry "
              "Name=\"One\"><Value>1</Value><NumericValue>1.5</NumericValue></EnumEntry>"
              "<EnumEntry Name=\"EnumEntry_E_Two\"><Value>2</Value></EnumEntry>"
              "<EnumEntry Name=\"EnumEntry_E_Three\"><Value>3</Value><Symbolic>Tres</Symbolic></EnumEntry>"
              "<Value>1</Value></Enumeration>");
    const auto gain = t.Get<INode>("Std::Gain");
    EXPECT_EQ(gain->GetName(true).str(), "Std::Gain");
    EXPECT_EQ(gain->GetDescription().str(), "Long");
    EXPECT_EQ(gain->GetDisplayName().str(), "The Gain");
    EXPECT_EQ(gain->GetVisibility(), Guru);
    EXPECT_EQ(gain->GetEventID().str(), "9A");
    EXPECT_TRUE(gain->IsDeprecated() && gain->IsStreamable() && gain->IsFeature());
    EXPECT_EQ(gain->GetAlias(), t.map->GetNode("Other"));
    EXPECT_FALSE(t.Get<INode>("Other")->IsFeature());
    node_vector selecting;
    dynamic_cast<ISelector&>(*t.map->GetNode("Other")).GetSelectingFeatures(selecting);
    EXPECT_EQ(selecting, node_vector{t.map->GetNode("Gain")});
    gcstring value;
    gcstring attribute;
    EXPECT_TRUE(gain->GetProperty("Unit", value, attribute));
    EXPECT_EQ(value.str(), "dB");
    EXPECT_FALSE(gain->GetProperty("Min", value, attribute));
    const auto entry = t.Get<IEnumEntry>("EnumEntry_E_One");
    EXPECT_EQ(entry->GetSymbolic().str(), "One");
    EXPECT_EQ(entry->GetNumericValue(), 1.5);
    EXPECT_EQ(entry->GetNode()->GetDisplayName().str(), "One");
    // A Name may be the node's, too; the prefix is no part of the plain name.
    for (const auto& [node, symbolic] :
         {std::pair{"EnumEntry_E_Two", "Two"}, {"EnumEntry_E_Three", "Tres"}}) {
        EXPECT_EQ(t.Get<IEnumEntry>(node)->GetSymbolic().str(), symbolic);
        EXPECT_EQ(t.Get<INode>(node)->GetDisplayName().str(), symbolic);
        EXPECT_EQ(t.Enum("E")->GetEntryByName(symbolic)->GetNode(), t.map->GetNode(node));
    }
}

} // namespace
} // namespace Norvane::GenApi
