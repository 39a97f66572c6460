#include "Mapper.h"

#include "TestDevice.h"

#include <QStandardItemModel>

#include <gmock/gmock.h>

using namespace Norvane::GenApi;

namespace {

/// A cell and a node map to fill it from.
class MapperTest : public testing::Test {
protected:
    void build(const std::string& nodes) { m_map = makeMap(nodes, m_port); }
    CNodePtr node(const char* name) { return m_map->GetNode(name); }

    ControlType controlType(const char* name) {
        ControlType type = CT_Slider;
        m_mapper.GetControlType(node(name), type);
        return type;
    }
    QVariant cell(const char* name) {
        QStandardItemModel model(1, 2);
        m_mapper.SetModelData(node(name), CT_None, &model, model.index(0, 1));
        return model.index(0, 1).data(Qt::EditRole);
    }

    std::shared_ptr<CountingPort> m_port = std::make_shared<CountingPort>();
    std::shared_ptr<INodeMap> m_map;
    Mapper m_mapper;
};

const std::string kMode = R"(
<Enumeration Name="Mode">
  <EnumEntry Name="EnumEntry_Mode_Off"><pIsAvailable>Never</pIsAvailable><Value>0</Value><Symbolic>Off</Symbolic></EnumEntry>
  <EnumEntry Name="EnumEntry_Mode_Once"><Value>5</Value><Symbolic>Once</Symbolic></EnumEntry>
  <EnumEntry Name="EnumEntry_Mode_Old"><pIsImplemented>Never</pIsImplemented><Value>6</Value><Symbolic>Old</Symbolic></EnumEntry>
  <EnumEntry Name="EnumEntry_Mode_On"><Value>7</Value><Symbolic>On</Symbolic></EnumEntry>
  <Value>7</Value>
</Enumeration>
<Integer Name="Never"><Value>0</Value></Integer>
)";

TEST_F(MapperTest, ChoosesTheEditorByKindAndRepresentation) {
    build(number("Integer", "Plain", "1") +
          number("Integer", "LogInteger", "1",
                 "<Min>0</Min><Max>9</Max><Representation>Logarithmic</Representation>") +
          number("Float", "LinearFloat", "1", "<Representation>Linear</Representation>") +
          number("Float", "LogFloat", "1", "<Representation>Logarithmic</Representation>") +
          "<Boolean Name=\"Flag\"><Value>1</Value></Boolean>" + text("Text", "x") + kMode +
          "<Command Name=\"Go\"><Value>0</Value><CommandValue>1</CommandValue></Command>" +
          category("Group", "Plain") +
          "<Integer Name=\"Missing\"><pIsImplemented>Never</pIsImplemented><Value>1</Value></Integer>");
    const std::pair<const char*, ControlType> expected[] = {
        {"Plain", CT_LineEdit},  {"LogInteger", CT_Slider}, {"LinearFloat", CT_LineEdit},
        {"LogFloat", CT_Slider}, {"Flag", CT_CheckBox},     {"Text", CT_LineEdit},
        {"Mode", CT_ComboBox},   {"Go", CT_Button},         {"Group", CT_None},
        {"Missing", CT_None},
    };
    for (const auto& [name, type] : expected) {
        EXPECT_EQ(controlType(name), type) << name;
    }
}

TEST_F(MapperTest, ShowsNumbersInTheNotationOfTheirMeaning) {
    const auto with = [](const char* representation) {
        return std::string("<Representation>") + representation + "</Representation>";
    };
    build(number("Integer", "Address", "0xC0A8000A", with("IPV4Address")) +
          number("Integer", "GevIPAddressOld", "0xC0A8000A", with("HexNumber")) +
          number("Integer", "SubnetMaskOld", "0xFFFF0000", with("HexNumber")) +
          number("Integer", "ipaddress", "16", with("HexNumber")) +
          number("Integer", "Mac", "0x001A2B3C4D5E", with("MACAddress")) +
          number("Integer", "MACAddressOld", "0x001A2B3C4D5E", with("HexNumber")) +
          number("Integer", "IPAddressCount", "3") + number("Float", "Gain", "12.3456") +
          number("Float", "Tiny", "1e-9"));
    EXPECT_EQ(cell("Address"), "192.168.0.10");
    EXPECT_EQ(cell("GevIPAddressOld"), "192.168.0.10");
    EXPECT_EQ(cell("SubnetMaskOld"), "255.255.0.0");
    EXPECT_EQ(cell("ipaddress"), QVariant(16LL)) << "the name is compared with case";
    EXPECT_EQ(cell("Mac"), "00:1A:2B:3C:4D:5E");
    EXPECT_EQ(cell("MACAddressOld"), "00:1A:2B:3C:4D:5E");
    EXPECT_EQ(cell("IPAddressCount"), QVariant(3LL)) << "a name alone makes no address";
    EXPECT_EQ(cell("Gain"), "12.35");
    EXPECT_EQ(cell("Tiny"), "0.00");
}

TEST_F(MapperTest, ShowsZeroForWhatCannotBeRead) {
    build(integer("WriteOnly", 0, {}, "WO") +
          "<Boolean Name=\"Flag\"><pValue>WriteOnlyReg</pValue></Boolean>" +
          "<Float Name=\"Level\"><pValue>WriteOnlyReg</pValue></Float>"
          "<Enumeration Name=\"Choice\"><EnumEntry Name=\"EnumEntry_Choice_A\"><Value>0</Value></EnumEntry>"
          "<pValue>WriteOnlyReg</pValue></Enumeration>");
    for (const char* name : {"WriteOnly", "Flag", "Level", "Choice"}) {
        EXPECT_EQ(cell(name), QVariant(0)) << name;
    }
}

TEST_F(MapperTest, ListsTheAvailableEntriesOnly) {
    build(kMode);
    const auto values = cell("Mode").value<ComboBoxValues>();
    EXPECT_EQ(values.entries, QStringList({"Once", "On"}));
    EXPECT_EQ(values.currentValue, 7);
    EXPECT_EQ(values.currentText, "On");
    m_mapper.SetNodeValue(node("Mode"), QStringLiteral("Once"));
    EXPECT_EQ(cell("Mode").value<ComboBoxValues>().currentText, "Once");
    // A number without a name can be left for one that has a name.
    CEnumerationPtr(node("Mode"))->SetIntValue(42, false);
    const auto unnamed = cell("Mode").value<ComboBoxValues>();
    EXPECT_EQ(unnamed.entries, QStringList({"Once", "On"}));
    EXPECT_EQ(unnamed.currentValue, 42);
    EXPECT_EQ(unnamed.currentText, QString());
}

TEST_F(MapperTest, SnapsDownOntoTheGridAndLeavesTheRangeToTheNode) {
    build(integer("Width", 0, "<Min>2</Min><Max>200</Max><Inc>4</Inc>") +
          number("Float", "Gain", "0.5", "<Min>0.5</Min><Max>10</Max><Inc>0.25</Inc>"));
    const std::pair<int, std::uint32_t> writes[] = {{105, 102}, {1, 2}, {198, 198}, {2, 2}};
    for (const auto& [written, stored] : writes) {
        m_mapper.SetNodeValue(node("Width"), written);
        EXPECT_EQ(m_port->value(0), stored) << written;
    }
    EXPECT_THROW(m_mapper.SetNodeValue(node("Width"), 1000), Norvane::Exception);
    EXPECT_THROW(m_mapper.SetNodeValue(node("Width"), QStringLiteral("-9223372036854775808")),
                 Norvane::Exception);
    EXPECT_EQ(m_port->value(0), 2U);
    m_mapper.SetNodeValue(node("Gain"), QStringLiteral("3.3"));
    EXPECT_DOUBLE_EQ(CFloatPtr(node("Gain"))->GetValue(), 3.25);
}

TEST_F(MapperTest, TakesAddressesAsTheyAreShownAndNoOtherText) {
    build(integer("Address", 0, "<Representation>IPV4Address</Representation>") +
          number("Integer", "Mac", "0", "<Representation>MACAddress</Representation>") +
          number("Float", "Gain", "4"));
    m_port->setValue(0, 77);
    for (const char* text : {"", "abc", "1.2.3", "1.2.3.256", "12,5"}) {
        m_mapper.SetNodeValue(node("Address"), QString(text));
        m_mapper.SetNodeValue(node("Gain"), QString(text) + "x");
    }
    EXPECT_EQ(m_port->writes(0), 0) << "text that is no number reached the camera";
    EXPECT_EQ(cell("Gain"), "4.00");
    m_mapper.SetNodeValue(node("Address"), QStringLiteral("192.168.0.20"));
    EXPECT_EQ(m_port->value(0), 0xC0A80014U);
    m_mapper.SetNodeValue(node("Mac"), QStringLiteral("00:1a:2b:3c:4d:5e"));
    EXPECT_EQ(CIntegerPtr(node("Mac"))->GetValue(), 0x001A2B3C4D5E);
}

TEST_F(MapperTest, WritesNothingToWhatIsNotWritable) {
    build(integer("Fixed", 0, {}, "RO"));
    m_mapper.SetNodeValue(node("Fixed"), 5);
    EXPECT_EQ(m_port->writes(0), 0);
    EXPECT_THROW(m_mapper.SetNodeValue(CNodePtr(), 5), Norvane::Exception);
}

TEST_F(MapperTest, TellsTheCamerasNumber) {
    const auto camera = [](const std::string& nodes) {
        return Norvane::CameraPtr(std::make_shared<TestCamera>("", nodes, ""));
    };
    EXPECT_EQ(m_mapper.GetDeviceSerialNumber(camera(text("DeviceSerialNumber", "21034567"))), 21034567);
    EXPECT_EQ(m_mapper.GetDeviceSerialNumber(camera(text("DeviceSerialNumber", "AB-12"))), 0);
    EXPECT_EQ(m_mapper.GetDeviceSerialNumber(camera("")), -1);
    EXPECT_EQ(m_mapper.GetDeviceSerialNumber(Norvane::CameraPtr()), -1);
}

} // namespace
