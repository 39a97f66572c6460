#include "TestMap.h"

#include "genapi/Archive.h"

#include <zip.h>

namespace Norvane::GenApi {
namespace {

/// One broken node beside a good one: the good one works, the broken one is not available, one line says why.
TEST(BadInput, CostsOnlyItsNode) {
    struct Case {
        const char* node;
        const char* word; ///< in the log line
    };
    for (const Case& c : {
             Case{"<Integer Name=\"Bad\"><pValue>Missing</pValue></Integer>", "'Missing' does not exist"},
             {"<Integer Name=\"Bad\"><pIsAvailable>Missing</pIsAvailable><Value>1</Value></Integer>",
              "pIsAvailable"},
             {"<Integer Name=\"Bad\"><Value>12x</Value></Integer>", "'12x' is no integer"},
             {"<Integer Name=\"Bad\"/>", "neither Value nor pValue"},
             {"<Float Name=\"Bad\"><Value>1</Value><Max>much</Max></Float>", "'much' is no number"},
             {"<Integer Name=\"Bad\"><pValue>Bad</pValue></Integer>", "depend on one another: Bad -> Bad"},
             {"<IntReg Name=\"Bad\"><Length>4</Length></IntReg>", "no Address"},
             {"<IntReg Name=\"Bad\"><Address>0</Address></IntReg>", "no Length"},
             {"<IntReg Name=\"Bad\"><Address>0</Address><Length>9</Length></IntReg>",
              "9 bytes is impossible"},
             {"<IntReg Name=\"Bad\"><Address>0</Address><Length>-4</Length></IntReg>", "impossible"},
             {"<IntReg Name=\"Bad\"><Address>0</Address><Length>4</Length><pPort>Good</pPort></IntReg>",
              "is no Port"},
             {"<FloatReg Name=\"Bad\"><Address>0</Address><Length>3</Length></FloatReg>",
              "3 bytes is impossible"},
             {"<MaskedIntReg Name=\"Bad\"><Address>0</Address><Length>4</Length><Bit>32</Bit></MaskedIntReg>",
              "outside"},
             {"<MaskedIntReg Name=\"Bad\"><Address>0</Address><Length>4</Length></MaskedIntReg>",
              "neither Bit nor LSB"},
             {"<IntSwissKnife Name=\"Bad\"><Formula>1+</Formula></IntSwissKnife>", "formula is wrong"},
             {"<IntSwissKnife Name=\"Bad\"/>", "formula is wrong"},
             {"<SwissKnife Name=\"Bad\"><pVariable "
              "Name=\"A.Odd\">Good</pVariable><Formula>A.Odd</Formula></SwissKnife>",
              "suffix"},
             {"<Converter Name=\"Bad\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom></Converter>",
              "no pValue"},
             {"<Enumeration Name=\"Bad\"><EnumEntry Name=\"A\"><Value>1</Value></EnumEntry></Enumeration>",
              "neither Value"},
             {"<Boolean Name=\"Bad\"><Value>perhaps</Value></Boolean>", "neither true nor false"},
             {"<String Name=\"Bad\"/>", "neither Value nor pValue"},
             {"<Command Name=\"Bad\"/>", "neither Value nor pValue"},
             {"<ConfRom Name=\"Bad\"><Unit>1</Unit></ConfRom>", "IEEE 1394"},
         }) {
        const LogLines log;
        TestMap t(std::string(c.node) + Reg("Good", 0) +
                  "<Integer Name=\"Over\"><pValue>Bad</pValue></Integer>"
                  "<Integer Name=\"Under\"><pMax>Bad</pMax><Value>1</Value></Integer>");
        EXPECT_EQ(t.Access("Bad"), NA) << c.node;
        EXPECT_EQ(t.Access("Over"), NA) << c.node;
        EXPECT_EQ(log.Count({"Bad", c.word}), 1) << c.node << "\n" << log.All();
        t.Int("Good")->SetValue(1);
        ErrorOf([&] { CValuePtr(t.map->GetNode("Bad"))->ToString(); });
        EXPECT_THROW(t.Int("Under")->GetMax(), Exception) << c.node;
        gcstring value;
        node_vector children;
        t.map->GetNode("Bad")->GetChildren(children);
        if (const CRegisterPtr reg = t.map->GetNode("Bad")) {
            EXPECT_THROW(reg->GetAddress(), Exception);
        }
    }
}

TEST(BadInput, IsToleratedWhereItCan) {
    const LogLines log;
    TestMap t(R"(
<Integer Name="  Padded
 "><pValue>
   Reg </pValue><Min> 0x2
</Min></Integer>
<Integer Name="Reg"><Value> 5 </Value><Novelty>1</Novelty><Representation>Odd</Representation></Integer>
<Integer Name="Reg"><Value>6</Value></Integer>
<Sensor Name="Novel"/>
<Integer/>
<Category Name="C"><pFeature>Nowhere</pFeature><pFeature>Reg</pFeature></Category>
<Group Comment="empty"/>)");
    EXPECT_EQ(t.Int("Padded")->GetValue(), 5);
    EXPECT_EQ(t.Int("Padded")->GetMin(), 2);
    value_vector features;
    t.Get<ICategory>("C")->GetFeatures(features);
    EXPECT_EQ(features.size(), 1u);
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"several nodes named Reg"},
                                               {"'Novelty'", "ignored"},
                                               {"Representation"},
                                               {"'Sensor'"},
                                               {"without a Name"},
                                               {"'Nowhere'"}}) {
        EXPECT_EQ(log.Count(words), words[0] == "Representation" ? 0 : 1) << words[0] << "\n" << log.All();
    }
}

TEST(BadInput, CyclesAreNamed) {
    const LogLines log;
    TestMap t(
        "<Integer Name=\"A\"><pValue>B</pValue></Integer><Integer Name=\"B\"><pValue>C</pValue></Integer>"
        "<Integer Name=\"C\"><pValue>A</pValue></Integer>"
        "<Integer Name=\"X\"><pIsAvailable>Y</pIsAvailable><Value>1</Value></Integer>"
        "<Integer Name=\"Y\"><pIsAvailable>X</pIsAvailable><Value>1</Value></Integer>"
        // no cycles: each other's maximum, a lock that depends on the own value
        "<IntSwissKnife Name=\"MaxW\"><pVariable "
        "Name=\"O\">Offset</pVariable><Formula>100-O</Formula></IntSwissKnife>"
        "<IntSwissKnife Name=\"MaxO\"><pVariable "
        "Name=\"W\">Width</pVariable><Formula>100-W</Formula></IntSwissKnife>"
        "<Integer Name=\"Width\"><Value>60</Value><pMax>MaxW</pMax></Integer>"
        "<Integer Name=\"Offset\"><Value>10</Value><pMax>MaxO</pMax></Integer>"
        "<IntSwissKnife Name=\"SelfLock\"><pVariable "
        "Name=\"S\">Self</pVariable><Formula>S=1</Formula></IntSwissKnife>"
        "<Integer Name=\"Self\"><pIsLocked>SelfLock</pIsLocked><Value>0</Value></Integer>");
    for (const char* name : {"A", "B", "C", "X", "Y"}) {
        EXPECT_EQ(t.Access(name), NA) << name;
        EXPECT_EQ(t.Int(name)->GetRepresentation(), PureNumber) << "told without the node's value";
        EXPECT_EQ(t.Int(name)->GetUnit(), "");
    }
    EXPECT_EQ(log.Count({"A", "B", "C", "depend on one another"}), 1) << log.All();
    EXPECT_EQ(log.Count({"X", "Y", "depend on one another"}), 1);
    EXPECT_EQ(t.Int("Width")->GetMax(), 90);
    t.Int("Offset")->SetValue(40);
    EXPECT_EQ(t.Int("Width")->GetMax(), 60);
    t.Int("Self")->SetValue(1);
    EXPECT_EQ(t.Access("Self"), RO);
}

TEST(BadInput, CategoriesThatListOneAnotherKeepTheRest) {
    const LogLines log;
    const auto map = CreateNodeMap(
        "<RegisterDescription SchemaMajorVersion=\"1\">"
        "<Category Name=\"Root\"><pFeature>Outer</pFeature><pFeature>Width</pFeature></Category>"
        "<Category Name=\"Outer\"><pFeature>Outer</pFeature><pFeature>Inner</pFeature></Category>"
        "<Category Name=\"Inner\"><pFeature>Root</pFeature><pFeature>Outer</pFeature>"
        "<pFeature>Width</pFeature></Category>"
        "<Category Name=\"Left\"><pFeature>Right</pFeature></Category>"
        "<Category Name=\"Right\"><pFeature>Left</pFeature><pFeature>Width</pFeature></Category>"
        "<Integer Name=\"Width\"><Value>1</Value></Integer></RegisterDescription>",
        std::make_shared<CountingPort>());
    const auto listed = [&](const char* name) {
        std::string names;
        value_vector features;
        const CCategoryPtr category = map->GetNode(name);
        EXPECT_EQ(category->GetAccessMode(), RO) << name;
        category->GetFeatures(features);
        for (IValue* feature : features) {
            names += feature->GetNode()->GetName().str() + " ";
        }
        return names;
    };
    EXPECT_EQ(listed("Root"), "Outer Width ");
    EXPECT_EQ(listed("Outer"), "Inner ");
    EXPECT_EQ(listed("Inner"), "Width ");
    EXPECT_EQ(listed("Left"), "Right ");
    EXPECT_EQ(listed("Right"), "Width ");
    EXPECT_EQ(log.Count({"leads back"}), 4) << log.All();
    EXPECT_EQ(log.Count({"Inner", "'Root'"}), 1);
}

TEST(BadInput, CopiesMayListOneAnother) {
    std::string doubling = "<Integer Name=\"D60\"><Value>0</Value></Integer>";
    for (int i = 0; i < 60; ++i) {
        const std::string copy = "<pValueCopy>D" + std::to_string(i + 1) + "</pValueCopy>";
        doubling +=
            "<Integer Name=\"D" + std::to_string(i) + "\"><Value>0</Value>" + copy + copy + "</Integer>";
    }
    TestMap t("<Integer Name=\"A\"><Value>0</Value><pValueCopy>B</pValueCopy></Integer>"
              "<Integer Name=\"B\"><Value>0</Value><pValueCopy>A</pValueCopy></Integer>" +
              doubling);
    for (const int value : {7, 8}) {
        t.Int("A")->SetValue(value);
        EXPECT_EQ(t.Int("B")->GetValue(), value);
        t.Int("D0")->SetValue(value);
        EXPECT_EQ(t.Int("D60")->GetValue(), value);
    }
}

TEST(BadInput, DepthIsNoDanger) {
    std::string chain = "<Integer Name=\"N0\"><Value>1</Value></Integer>";
    for (int i = 1; i < 20000; ++i) {
        chain += "<Integer Name=\"N" + std::to_string(i) + "\"><pValue>N" + std::to_string(i - 1) +
                 "</pValue></Integer>";
    }
    std::string groups;
    for (int i = 0; i < 50000; ++i) {
        groups += "<Group Comment=\"g\">";
    }
    groups += "<Integer Name=\"Deep\"><Value>3</Value></Integer>";
    for (int i = 0; i < 50000; ++i) {
        groups += "</Group>";
    }
    const LogLines log;
    TestMap t(chain + groups);
    EXPECT_EQ(t.Int("N200")->GetValue(), 1);
    EXPECT_EQ(t.Access("N19999"), NA);
    EXPECT_EQ(t.Int("Deep")->GetValue(), 3);
}

// Each of sixty nodes asks the one before it twice and nothing is cached: calculated one by one, the last
// would need 2^60 reads.
TEST(BadInput, ReadsBeyondCountingAreRefused) {
    std::string values = Reg("V0", 0, "<Cachable>NoCache</Cachable>");
    std::string gates = Reg("G0", 4, "<Cachable>NoCache</Cachable>");
    for (int i = 1; i <= 60; ++i) {
        const std::string number = std::to_string(i), before = std::to_string(i - 1);
        values += "<IntSwissKnife Name=\"V" + number + "\"><pVariable Name=\"A\">V" + before +
                  "</pVariable><pVariable Name=\"B\">V" + before +
                  "</pVariable><Formula>A+B</Formula>"
                  "</IntSwissKnife>";
        gates += "<IntSwissKnife Name=\"G" + number + "\"><pIsImplemented>G" + before +
                 "</pIsImplemented><pIsAvailable>G" + before + "</pIsAvailable><pVariable Name=\"A\">G" +
                 before + "</pVariable><Formula>A</Formula></IntSwissKnife>";
    }
    const LogLines log;
    TestMap t(values + gates);
    t.port->Poke(0, 3);
    t.port->Poke(4, 1);
    EXPECT_EQ(t.Int("V10")->GetValue(), 3 * 1024);
    EXPECT_EQ(t.Int("G5")->GetValue(), 1);
    EXPECT_EQ(t.Access("V60"), NA);
    EXPECT_EQ(t.Access("G60"), NA);
    EXPECT_EQ(log.Count({"V19 is not available: its value would take more than 1000000 reads"}), 1)
        << log.All();
}

TEST(BadInput, AnErrorNamesTheNodeWhereItArose) {
    TestMap t(Reg("Size", 0) + "<IntReg Name=\"Sized\"><Address>16</Address><pLength>Size</pLength></IntReg>"
                               "<IntSwissKnife Name=\"K\"><pVariable "
                               "Name=\"S\">Sized</pVariable><Formula>S+1</Formula></IntSwissKnife>");
    for (const char* asked : {"Sized", "K"}) {
        EXPECT_EQ(ErrorOf([&] { t.Int(asked)->GetValue(); }), "Sized: a register of 0 bytes is impossible");
    }
}

TEST(BadInput, DivisionByZeroIsAnErrorOfTheMoment) {
    TestMap t(
        Reg("D", 0) +
        "<IntSwissKnife Name=\"K\"><pVariable Name=\"D\">D</pVariable><Formula>12/D</Formula></IntSwissKnife>"
        "<Integer Name=\"Gated\"><pIsAvailable>K</pIsAvailable><Value>1</Value></Integer>");
    EXPECT_EQ(ErrorOf([&] { t.Int("K")->GetValue(); }), "K: the formula divides by zero");
    EXPECT_EQ(t.Access("Gated"), NA);
    t.Int("D")->SetValue(4);
    EXPECT_EQ(t.Int("K")->GetValue(), 3);
    EXPECT_EQ(t.Access("Gated"), RW);
}

std::string Zipped(const std::string& name, const std::string& text) {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* const buffer = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_t* const archive = zip_open_from_source(buffer, ZIP_TRUNCATE, &error);
    zip_source_keep(buffer);
    zip_file_add(archive, name.c_str(), zip_source_buffer(archive, text.data(), text.size(), 0), 0);
    zip_close(archive);
    zip_source_open(buffer);
    zip_source_seek(buffer, 0, SEEK_END);
    std::string file(static_cast<std::size_t>(zip_source_tell(buffer)), '\0');
    zip_source_seek(buffer, 0, SEEK_SET);
    zip_source_read(buffer, file.data(), file.size());
    zip_source_close(buffer);
    zip_source_free(buffer);
    return file;
}

TEST(BadInput, Archives) {
    const auto text = Describe(Reg("A", 0) + Reg("B", 4));
    const auto file = Zipped("camera.xml", text);
    EXPECT_EQ(DescriptionText(file), text);
    const auto map = CreateNodeMap(file, CreateMemoryPort());
    EXPECT_NE(map->GetNode("B"), nullptr);
    // Damage anywhere is noticed or harmless, never more.
    int refused = 0;
    for (std::size_t at = 0; at < file.size(); at += 3) {
        auto damaged = file;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
        const auto error = ErrorOf([&] {
            if (damaged.substr(0, 2) == "PK" && DescriptionText(damaged) != text) {
                ADD_FAILURE() << "damage at " << at << " went unnoticed";
            }
        });
        refused += !error.empty();
    }
    EXPECT_GT(refused, 20);
    EXPECT_THROW(DescriptionText(file.substr(0, file.size() / 2)), Exception);
}

TEST(BadInput, NoDescriptionAtAll) {
    const LogLines log;
    const auto errorOf = [](const std::string& text) {
        return ErrorOf([&] { CreateNodeMap(text, nullptr); });
    };
    for (const char* text :
         {"", "nonsense", "<html/>", "<RegisterDescription>\n<Integer></RegisterDescription>"}) {
        EXPECT_NE(errorOf(text), "") << text;
    }
    EXPECT_NE(errorOf("<RegisterDescription>\n\n<Integer></RegisterDescription>").find("line 3"),
              std::string::npos);
    const auto map = CreateNodeMap("<RegisterDescription SchemaMajorVersion=\"2\">"
                                   "<Integer Name=\"A\"><Value>1</Value></Integer></RegisterDescription>",
                                   nullptr);
    EXPECT_EQ(log.Count({"schema version '2'"}), 1);
    EXPECT_EQ(log.Count({"no category 'Root'"}), 1);
    EXPECT_EQ(CIntegerPtr(map->GetNode("A"))->GetValue(), 1);
}

} // namespace
} // namespace Norvane::GenApi
