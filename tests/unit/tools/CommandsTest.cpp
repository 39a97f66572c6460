#include "Commands.h"
#include "Failure.h"

#include "norvane/Exception.h"
#include "norvane/System.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// A folder of the test's own, and the tool's commands as a shell calls them.
class CommandsTest : public testing::Test {
protected:
    CommandsTest() {
        std::string pattern = (std::filesystem::temp_directory_path() / "norvane-tool-XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
        setenv("HOME", m_folder.c_str(), 1);
    }
    ~CommandsTest() override { std::filesystem::remove_all(m_folder); }

    std::string write(const std::string& name, const std::string& content) const {
        std::ofstream(m_folder / name, std::ios::binary) << content;
        return (m_folder / name).string();
    }
    static std::string run(std::vector<std::string> words) {
        return runCommand(parseArguments(words)).output;
    }
    /// The exit code with which a command fails; -1 when it succeeds.
    static int failure(std::vector<std::string> words) {
        try {
            run(std::move(words));
        } catch (const Failure& error) {
            return error.exitCode();
        } catch (const Norvane::Exception& error) {
            return exitCodeOf(error);
        }
        return -1;
    }

    std::filesystem::path m_folder;
};

TEST_F(CommandsTest, DescribesEveryFeatureOfAFile) {
    const std::string file = write("camera.xml", R"(<?xml version="1.0"?>
<RegisterDescription ModelName="T" VendorName="T" StandardNameSpace="None" SchemaMajorVersion="1" SchemaMinorVersion="1"
 SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0" ProductGuid="A" VersionGuid="B"
 xmlns="http://www.genicam.org/GenApi/Version_1_1">
<Port Name="Device"/>
<Category Name="Root"><pFeature>Control</pFeature></Category>
<Category Name="Control"><pFeature>Exposure</pFeature><pFeature>Mode</pFeature><pFeature>Bad</pFeature>
<pFeature>Gone</pFeature><pFeature>Lost</pFeature></Category>
<Float Name="Exposure"><Description>How "long"</Description><Value>12.5</Value><Min>1</Min><Max>100</Max><Unit>us</Unit></Float>
<Enumeration Name="Mode"><EnumEntry Name="EnumEntry_Mode_Off"><Value>0</Value><Symbolic>Off</Symbolic></EnumEntry>
<EnumEntry Name="EnumEntry_Mode_On"><Value>1</Value><Symbolic>On</Symbolic></EnumEntry><Value>1</Value></Enumeration>
<Enumeration Name="Lost"><EnumEntry Name="Way"><Value>3</Value></EnumEntry><Value>0</Value></Enumeration>
<IntSwissKnife Name="Bad"><Formula>1/0</Formula></IntSwissKnife>
<Integer Name="Never"><Value>0</Value></Integer>
<Integer Name="Gone"><pIsImplemented>Never</pIsImplemented><Value>1</Value></Integer>
</RegisterDescription>)");
    const std::string text = run({"describe", file});
    EXPECT_THAT(text, AllOf(HasSubstr("Control\n"), HasSubstr("Exposure"), HasSubstr("12.5 us"),
                            HasSubstr("[1 .. 100]"), HasSubstr("one of Off, On"), HasSubstr("Gone"),
                            HasSubstr("Lost: its value 0 is that of none of its entries")));
    const std::string json = run({"describe", "--json", file});
    EXPECT_THAT(json, AllOf(HasSubstr("\"name\": \"Exposure\""), HasSubstr("\"value\": 12.5"),
                            HasSubstr("\"unit\": \"us\""), HasSubstr("How \\\"long\\\""),
                            HasSubstr("\"entryValue\": 1"), HasSubstr("\"access\": \"NI\""),
                            Not(HasSubstr("\"name\": \"Never\""))));
}

TEST_F(CommandsTest, AFileThatIsNoDescriptionFails) {
    EXPECT_EQ(failure({"describe", (m_folder / "missing.xml").string()}), kFailed);
    try {
        run({"describe", m_folder.string()});
        ADD_FAILURE() << "a folder is no description";
    } catch (const Failure& error) {
        EXPECT_EQ(error.what(), m_folder.string() + ": Is a directory");
        EXPECT_EQ(error.exitCode(), kFailed);
    }
    EXPECT_EQ(failure({"describe", write("empty.xml", "")}), kFailed);
    EXPECT_EQ(failure({"describe", write("text.xml", "hello")}), kFailed);
}

TEST_F(CommandsTest, WorksWithACameraByNumberAndBySerialText) {
    const std::string ini = write("emulator.ini", R"([interface GigE-0]
type = GEV
name = Test interface
address = 169.254.10.1
netmask = 255.255.0.0

[camera Cam-A]
interface = GigE-0
model = Duskwing S
vendor = Altrona
address = 169.254.10.20
width = 64
height = 48
pixel-format = BayerRG8
frame-rate = 50
)");
    setenv("NORVANE_EMULATOR", ini.c_str(), 1);
    {
        // One start of the library for all commands.
        const Norvane::SystemPtr system = Norvane::System::GetInstance();
        EXPECT_THAT(run({"list"}),
                    AllOf(HasSubstr("Duskwing S"), HasSubstr("serial Cam-A"), HasSubstr("169.254.10.20")));
        const std::string list = run({"list", "--json"});
        EXPECT_THAT(list, HasSubstr("\"serial\": \"Cam-A\""));
        const auto member = [&list](const std::string& name) {
            const std::size_t start = list.find("\"" + name + "\": ") + name.size() + 4;
            return list.substr(start, list.find_first_of(",\n", start) - start);
        };
        const std::string number = member("number");
        const std::string interfaceId = member("id").substr(1, member("id").size() - 2);

        EXPECT_EQ(run({"get", "Cam-A", "Width"}), "64\n");
        EXPECT_EQ(run({"get", number, "Width"}), "64\n");
        EXPECT_EQ(run({"get", "Cam-A", "DeviceSerialNumber", "--map", "tl"}), number + "\n");
        EXPECT_EQ(run({"get", interfaceId, "InterfaceID", "--map", "interface"}), interfaceId + "\n");
        EXPECT_THAT(run({"get", "Cam-A", "StreamLostFrameCount", "--json"}), HasSubstr("\"value\": 0"))
            << "without a map, all three are looked in";
        EXPECT_THAT(run({"features", "Cam-A", "--map", "stream"}), HasSubstr("StreamLostFrameCount"));
        EXPECT_THAT(run({"features", "Cam-A", "--json"}), HasSubstr("\"name\": \"ExposureTime\""));

        EXPECT_EQ(run({"set", "Cam-A", "AcquisitionMode", "SingleFrame"}), "SingleFrame\n");
        EXPECT_EQ(run({"get", "Cam-A", "AcquisitionMode"}), "SingleFrame\n");
        EXPECT_EQ(run({"set", "Cam-A", "AcquisitionMode", "Continuous"}), "Continuous\n");
        EXPECT_EQ(failure({"set", "Cam-A", "Width", "1000000"}), kNotAllowed) << "out of range";
        EXPECT_EQ(failure({"set", "Cam-A", "DeviceVendorName", "Me"}), kNotAllowed);
        EXPECT_EQ(failure({"set", "Cam-A", "TimestampReset", "1"}), kNotAllowed) << "a command is executed";
        EXPECT_EQ(failure({"execute", "Cam-A", "Width"}), kNotAllowed);
        EXPECT_EQ(failure({"get", "Cam-A", "Root"}), kNotAllowed) << "a category has no value";
        EXPECT_EQ(run({"execute", "Cam-A", "TimestampReset"}), "");
        EXPECT_EQ(failure({"get", "Cam-A", "NoSuchFeature"}), kNoFeature);
        EXPECT_EQ(failure({"get", "Nobody", "Width"}), kNoDevice);
        EXPECT_EQ(failure({"features", "Nobody", "--map", "interface"}), kNoDevice);

        const std::string png = (m_folder / "image.png").string();
        EXPECT_THAT(run({"snap", "Cam-A", png}), HasSubstr("64 x 48 BayerRG8"));
        std::ifstream file(png, std::ios::binary);
        std::string header(26, '\0');
        file.read(header.data(), 26);
        EXPECT_EQ(header.substr(1, 3), "PNG");
        EXPECT_EQ(header[25], 2) << "a mosaic becomes colour";
        EXPECT_EQ(failure({"snap", "Cam-A", (m_folder / "image.xyz").string()}), kFailed);
        EXPECT_EQ(failure({"snap", "Cam-A", (m_folder / "no" / "image.png").string()}), kFailed);
        EXPECT_THAT(run({"snap", "Cam-A", (m_folder / "again.raw").string()}), HasSubstr("64 x 48"));
        EXPECT_EQ(std::filesystem::file_size(m_folder / "again.raw"), 64U * 48U);
    }
    unsetenv("NORVANE_EMULATOR");
}

} // namespace
