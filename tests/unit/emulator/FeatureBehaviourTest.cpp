#include "EmulatorFixture.h"

#include "norvane/Exception.h"

#include <gmock/gmock.h>

namespace Norvane::Transport::Emulator {
namespace {

using namespace GenApi;

class FeatureBehaviourTest : public EmulatorFixture {
protected:
    void Begin(const std::string& keys = "width=640\nheight=480\n") {
        m_map.reset();
        m_device.reset();
        Start("[interface I]\ntype=GEV\n[camera 1]\n" + keys);
        m_device = Open();
        m_map = Map(m_device);
    }
    std::int64_t Max(const char* name) { return CIntegerPtr(m_map->GetNode(name))->GetMax(); }
    bool Refuses(const char* name, const std::string& value) {
        try {
            SetText(*m_map, name, value);
            return false;
        } catch (const Exception&) {
            return true;
        }
    }

    std::shared_ptr<IDevice> m_device;
    std::shared_ptr<INodeMap> m_map;
};

/// One step of a table: set a feature (an empty value executes a command), then compare others as text.
struct Step {
    const char* feature;
    const char* value;
    std::vector<std::pair<const char*, const char*>> expected;
};

TEST_F(FeatureBehaviourTest, FeaturesFollowOneAnother) {
    const std::vector<std::pair<const char*, std::vector<Step>>> tables{
        {"binning shrinks the region and gives it back",
         {{"BinningHorizontal", "2", {{"WidthMax", "320"}, {"Width", "320"}, {"PayloadSize", "153600"}}},
          {"Width", "100", {{"Width", "100"}}},
          {"OffsetX", "220", {{"OffsetX", "220"}}},
          {"BinningHorizontal", "4", {{"WidthMax", "160"}, {"Width", "100"}, {"OffsetX", "60"}}},
          {"BinningHorizontal", "1", {{"WidthMax", "640"}, {"Width", "100"}, {"OffsetX", "60"}}}}},
        {"the pixel format decides size and range",
         {{"PixelFormat",
           "BayerRG12p",
           {{"PixelSize", "Bpp12"},
            {"PixelColorFilter", "BayerRG"},
            {"PixelDynamicRangeMax", "4095"},
            {"PayloadSize", "460800"}}},
          {"PixelFormat",
           "RGB8",
           {{"PixelSize", "Bpp24"}, {"PixelColorFilter", "None"}, {"PixelDynamicRangeMax", "255"}}}}},
        {"a long exposure slows the camera down",
         {{"ExposureTime",
           "100000",
           {{"AcquisitionFrameRate", "10.000"}, {"AcquisitionResultingFrameRate", "10.000"}}},
          {"AcquisitionFrameRate", "4", {{"AcquisitionResultingFrameRate", "4.000"}}},
          {"AcquisitionFrameRateEnable", "false", {{"AcquisitionResultingFrameRate", "10.000"}}}}},
        {"a limit of the link slows the camera down, also where each image is exposed until the next",
         {{"ChunkModeActive", "false", {{"PayloadSize", "307200"}}},
          {"ExposureMode", "Off", {{"ExposureMode", "Off"}}},
          {"DeviceLinkThroughputLimitMode", "On", {{"DeviceLinkThroughputLimitMode", "On"}}},
          {"DeviceLinkThroughputLimit", "3072000", {{"AcquisitionResultingFrameRate", "10.000"}}},
          {"ChunkModeActive", "true", {{"PayloadSize", "307240"}}},
          {"ChunkSelector", "ExposureTime", {{"ChunkEnable", "0"}}},
          {"ChunkEnable", "true", {{"PayloadSize", "307256"}}}}},
        {"each selector has its own values",
         {{"TriggerSelector", "FrameBurstStart", {{"TriggerMode", "Off"}}},
          {"TriggerMode", "On", {{"TriggerMode", "On"}}},
          {"TriggerSelector", "FrameStart", {{"TriggerMode", "Off"}}},
          {"TriggerSelector", "FrameBurstStart", {{"TriggerMode", "On"}}},
          {"LineSelector", "Line0", {{"LineMode", "Input"}, {"LineFormat", "OptoCoupled"}}},
          {"LineSelector", "Line3", {{"LineFormat", "LVTTL"}}},
          {"LineMode", "Output", {{"LineMode", "Output"}}},
          {"GainSelector", "Red", {{"Gain", "0.0"}}},
          {"Gain", "2.5", {{"Gain", "2.5"}}},
          {"GainSelector", "Blue", {{"Gain", "0.0"}}}}},
        {"user outputs are bits of one word and drive lines",
         {{"LineSelector", "Line2", {}},
          {"LineSource", "UserOutput1", {{"LineStatus", "0"}}},
          {"UserOutputSelector", "UserOutput1", {}},
          {"UserOutputValue", "true", {{"UserOutputValueAll", "0x2"}}},
          {"UserOutputSelector", "UserOutput0", {{"UserOutputValue", "0"}}},
          {"UserOutputValue", "true", {{"UserOutputValueAll", "0x3"}}}}},
        {"the look-up table has entries",
         {{"LUTIndex", "3", {{"LUTValue", "12"}}},
          {"LUTValue", "4000", {{"LUTValue", "4000"}}},
          {"LUTIndex", "4", {{"LUTValue", "16"}}},
          {"LUTIndex", "3", {{"LUTValue", "4000"}}}}},
        {"user sets keep and restore",
         {{"UserSetSelector", "UserSet0", {}},
          {"Width", "320", {}},
          {"BlackLevel", "5", {}},
          {"UserSetSave", "", {}},
          {"UserSetSelector", "Default", {}},
          {"UserSetLoad", "", {{"Width", "640"}, {"BlackLevel", "0"}}},
          {"UserSetSelector", "UserSet0", {{"Width", "640"}}},
          {"UserSetLoad", "", {{"Width", "320"}, {"BlackLevel", "5"}}},
          {"UserSetSelector", "UserSet1", {}},
          {"UserSetLoad", "", {{"Width", "640"}}}}},
    };
    for (const auto& [title, steps] : tables) {
        SCOPED_TRACE(title);
        Begin();
        for (const Step& step : steps) {
            SCOPED_TRACE(std::string(step.feature) + " = " + step.value);
            ASSERT_NO_THROW(*step.value ? SetText(*m_map, step.feature, step.value)
                                        : Execute(*m_map, step.feature));
            m_map->Poll(500);
            for (const auto& [feature, value] : step.expected) {
                EXPECT_EQ(TextOf(*m_map, feature), value) << feature;
            }
        }
    }
}

TEST_F(FeatureBehaviourTest, RangesDependOnOneAnother) {
    Begin();
    EXPECT_EQ(Max("Width"), 640);
    EXPECT_EQ(Max("OffsetX"), 0);
    SetText(*m_map, "Width", "400");
    EXPECT_EQ(Max("OffsetX"), 240);
    SetText(*m_map, "OffsetX", "100");
    EXPECT_EQ(Max("Width"), 540);
    EXPECT_TRUE(Refuses("Width", "544"));
    EXPECT_TRUE(Refuses("Width", "402"));
    EXPECT_TRUE(Refuses("Width", "12"));
    EXPECT_TRUE(Refuses("OffsetX", "101"));
    EXPECT_TRUE(Refuses("BinningVertical", "3"));
    EXPECT_FALSE(Refuses("BinningVertical", "4"));
    EXPECT_TRUE(Refuses("PixelFormat", "BayerGB8")) << "the sensor has another mosaic";
    EXPECT_TRUE(Refuses("ExposureTime", "19.9"));
    EXPECT_NEAR(CFloatPtr(m_map->GetNode("AcquisitionFrameRate"))->GetMax(), 200.0, 0.1);
}

TEST_F(FeatureBehaviourTest, RegistersGuardThemselvesAgainstHostsThatDoNotAsk) {
    Begin();
    const CIntegerPtr width = m_map->GetNode("Width");
    for (const std::int64_t value : {0, 15, 18, 644, 1 << 20}) {
        EXPECT_THROW(width->SetValue(value, false), Exception) << value;
        EXPECT_EQ(width->GetValue(false, true), 640);
    }
    EXPECT_THROW(CEnumerationPtr(m_map->GetNode("PixelFormat"))->SetIntValue(42, false), Exception);
    std::uint32_t word = 0;
    EXPECT_THROW(m_device->Read(&word, 0, 4), Exception);
    EXPECT_THROW(m_device->Write(&word, 0x7FFFFFFFFFFF, 4), Exception);
    Execute(*m_map, "AcquisitionStart");
    EXPECT_THROW(width->SetValue(320, false), Exception) << "locked";
}

TEST_F(FeatureBehaviourTest, AvailabilityFollowsOtherFeatures) {
    struct Case {
        std::vector<std::pair<const char*, const char*>> settings;
        const char* feature;
        EAccessMode mode;
    };
    const std::vector<Case> cases{
        {{}, "AcquisitionFrameCount", NA},
        {{{"AcquisitionMode", "MultiFrame"}}, "AcquisitionFrameCount", RW},
        {{}, "AcquisitionFrameRate", RW},
        {{{"AcquisitionFrameRateEnable", "false"}}, "AcquisitionFrameRate", NA},
        {{}, "ExposureTime", RW},
        {{{"ExposureAuto", "Continuous"}}, "ExposureTime", RO},
        {{{"ExposureMode", "Off"}}, "ExposureTime", NA},
        {{}, "TriggerSoftware", NA},
        {{{"TriggerMode", "On"}}, "TriggerSoftware", WO},
        {{{"TriggerMode", "On"}, {"TriggerSource", "Line0"}}, "TriggerSoftware", NA},
        {{{"GainAuto", "Continuous"}}, "Gain", RO},
        {{}, "UserSetSave", NA},
        {{{"UserSetSelector", "UserSet1"}}, "UserSetSave", RW},
        {{}, "Gamma", NA},
        {{{"GammaEnable", "true"}}, "Gamma", RW},
        {{{"ChunkSelector", "Image"}}, "ChunkEnable", RO},
        {{{"ChunkSelector", "Gain"}}, "ChunkEnable", RW},
        {{{"TLParamsLocked", "1"}}, "Width", RO},
        {{{"TLParamsLocked", "1"}, {"ChunkSelector", "Gain"}}, "ChunkEnable", RO},
        {{{"LineSelector", "Line0"}}, "LineMode", RO},
        {{{"LineSelector", "Line0"}}, "LineSource", NA},
        {{{"LineSelector", "Line2"}}, "LineSource", RW},
        {{}, "InferenceEnable", NI},
        {{}, "BalanceRatio", RW},
        {{}, "ChunkFrameID", NA},
    };
    for (const Case& each : cases) {
        Begin();
        std::string trace = each.feature;
        for (const auto& [feature, value] : each.settings) {
            SetText(*m_map, feature, value);
            trace += std::string(" with ") + feature + " = " + value;
        }
        EXPECT_EQ(AccessOf(*m_map, each.feature), each.mode) << trace;
    }
    Begin("pixel-format=Mono8\ninference=classification\n");
    EXPECT_EQ(AccessOf(*m_map, "BalanceRatio"), NI);
    EXPECT_EQ(AccessOf(*m_map, "InferenceEnable"), RW);
    EXPECT_EQ(NumberOf(*m_map, "InferenceNetworkTypeSelector"), 0);
}

TEST_F(FeatureBehaviourTest, ClocksAndCountersRun) {
    Begin("width=64\nheight=64\nframe-rate=500\n");
    Execute(*m_map, "TimestampLatch");
    const std::int64_t first = NumberOf(*m_map, "TimestampLatchValue");
    EXPECT_TRUE(Eventually([&] {
        Execute(*m_map, "TimestampLatch");
        return NumberOf(*m_map, "TimestampLatchValue") > first;
    }));
    Execute(*m_map, "TimestampReset");
    Execute(*m_map, "TimestampLatch");
    EXPECT_LT(NumberOf(*m_map, "TimestampLatchValue"), first + 1000000000);
    SetText(*m_map, "CounterEventSource", "FrameStart");
    SetText(*m_map, "EventNotification", "On");
    const auto stream = m_device->OpenStream({});
    SetText(*m_map, "AcquisitionMode", "MultiFrame");
    SetText(*m_map, "AcquisitionFrameCount", "7");
    Execute(*m_map, "AcquisitionStart");
    for (int i = 0; i < 7; ++i) {
        ASSERT_TRUE(stream->Pop(5000));
    }
    m_map->Poll(1000);
    EXPECT_EQ(NumberOf(*m_map, "CounterValue"), 7);
    EXPECT_EQ(NumberOf(*m_map, "EventExposureEndFrameID"), 6);
    Execute(*m_map, "CounterReset");
    EXPECT_EQ(NumberOf(*m_map, "CounterValue"), 0);
    EXPECT_EQ(NumberOf(*m_map, "CounterValueAtReset"), 7);
    EXPECT_TRUE(Eventually([&] {
        m_map->Poll(250);
        return NumberOf(*m_map, "LineStatusAll") & 1;
    })) << "a square wave stands at the first input";
}

} // namespace
} // namespace Norvane::Transport::Emulator
