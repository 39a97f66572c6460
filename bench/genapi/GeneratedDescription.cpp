#include "GeneratedDescription.h"

namespace {

std::string Common(int i) {
    return "<ToolTip>The setting number " + std::to_string(i) +
           " of the device.</ToolTip><Description>Sets what the device does in its part " +
           std::to_string(i) +
           "; see the manual for the values that make sense together.</Description><DisplayName>Feature " +
           std::to_string(i) + "</DisplayName><Visibility>" + (i % 3 ? "Beginner" : "Expert") +
           "</Visibility>";
}

std::string Register(const std::string& name, int address, const std::string& more = "") {
    return "<IntReg Name=\"" + name + "\"><Visibility>Invisible</Visibility><Address>" +
           std::to_string(address) + "</Address>" + more +
           "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>BigEndian</"
           "Endianess></IntReg>\n";
}

std::string Feature(int i, int features) {
    const auto number = std::to_string(i);
    const auto name = "Feature" + number;
    const int address = 0x1000 + 16 * i;
    const auto open = [&](const char* kind) {
        return "<" + std::string(kind) + " Name=\"" + name + "\">" + Common(i);
    };
    // Spread so that exactly a hundred depend on the hub.
    const std::string lock =
        i % (features / 100) == 0 ? "<pIsLocked>HubLock</pIsLocked>" : "<pIsLocked>Lock</pIsLocked>";
    switch (i % 8) {
    case 0:
        return Register(name + "Reg", address) + open("Integer") + lock + "<pValue>" + name +
               "Reg</pValue><Min>0</Min><pMax>" + name +
               "Max</pMax><Inc>1</Inc></Integer>\n<IntSwissKnife Name=\"" + name +
               "Max\"><pVariable Name=\"A\">" + name +
               "Reg</pVariable><Formula>A*2+1000</Formula></IntSwissKnife>\n";
    case 1:
        return Register(name + "Reg", address) + open("Float") + lock + "<pValue>" + name +
               "Conv</pValue><Unit>us</Unit></Float>\n<Converter Name=\"" + name +
               "Conv\"><FormulaTo>FROM*8</FormulaTo><FormulaFrom>TO/8</FormulaFrom><pValue>" + name +
               "Reg</pValue><Slope>Increasing</Slope></Converter>\n";
    case 2: {
        std::string entries;
        for (int e = 0; e < 6; ++e) {
            entries += "<EnumEntry Name=\"Choice" + std::to_string(e) +
                       "\"><ToolTip>One of the choices.</ToolTip><Value>" + std::to_string(e) +
                       "</Value></EnumEntry>";
        }
        return Register(name + "Reg", address) + open("Enumeration") + lock + entries + "<pValue>" + name +
               "Reg</pValue></Enumeration>\n";
    }
    case 3:
        return "<MaskedIntReg Name=\"" + name + "Bit\"><Address>" + std::to_string(address) +
               "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Bit>3</"
               "Bit><Endianess>BigEndian</Endianess></MaskedIntReg>\n" +
               open("Boolean") + lock + "<pValue>" + name + "Bit</pValue></Boolean>\n";
    case 4:
        return Register(name + "Reg", address, "<pIndex Offset=\"4\">Selector</pIndex>") + open("Integer") +
               lock + "<pValue>" + name + "Reg</pValue></Integer>\n";
    case 5:
        return open("StringReg") + lock + "<Address>" + std::to_string(address) +
               "</Address><Length>16</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>\n";
    case 6:
        return open("Integer") + "<pIsAvailable>" + name + "There</pIsAvailable>" + lock + "<pValue>" + name +
               "Field</pValue></Integer>\n<MaskedIntReg Name=\"" + name + "Field\"><Address>" +
               std::to_string(address) +
               "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><LSB>15</"
               "LSB><MSB>8</MSB><Endianess>BigEndian</Endianess></MaskedIntReg>\n<IntSwissKnife Name=\"" +
               name +
               "There\"><pVariable Name=\"V\">Version</pVariable><Formula>(V &amp; 0xFF) &gt;= "
               "0</Formula></IntSwissKnife>\n";
    default:
        return open("SwissKnife") + "<pVariable Name=\"A\">Feature" + std::to_string(i - 7) +
               "Reg</pVariable><Formula>A * 0.25 + 1</Formula></SwissKnife>\n";
    }
}

} // namespace

std::string GeneratedDescription(int features) {
    std::string text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<RegisterDescription "
                       "ModelName=\"Generated\" VendorName=\"Tavorin\" StandardNameSpace=\"None\" "
                       "SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\" "
                       "MajorVersion=\"1\" MinorVersion=\"0\" SubMinorVersion=\"0\" "
                       "ProductGuid=\"0\" VersionGuid=\"0\" "
                       "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n<Port Name=\"Device\"/>\n";
    std::string root = "<Category Name=\"Root\">";
    std::string categories;
    for (int first = 0; first < features; first += 50) {
        const auto name = "Category" + std::to_string(first / 50);
        root += "<pFeature>" + name + "</pFeature>";
        categories += "<Category Name=\"" + name + "\">";
        for (int i = first; i < first + 50 && i < features; ++i) {
            categories += "<pFeature>Feature" + std::to_string(i) + "</pFeature>";
        }
        categories += "</Category>\n";
    }
    text += root + "</Category>\n" + categories + Register("Hub", 0) + Register("Lock", 4) +
            Register("Version", 8) + Register("SelectorReg", 12) +
            "<IntSwissKnife Name=\"HubLock\"><pVariable Name=\"H\">Hub</pVariable><Formula>H = "
            "1</Formula></IntSwissKnife>\n"
            "<Integer Name=\"Selector\"><pValue>SelectorReg</pValue><Min>0</Min><Max>3</Max></Integer>\n";
    for (int i = 0; i < features; ++i) {
        text += Feature(i, features);
    }
    return text + "</RegisterDescription>\n";
}
