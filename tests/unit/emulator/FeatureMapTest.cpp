#include "EmulatorFixture.h"

#include <gmock/gmock.h>

#include <functional>
#include <map>
#include <set>

namespace Norvane::Transport::Emulator {
namespace {

using namespace GenApi;

/// The features below the root category, in order.
std::vector<INode*> Features(INodeMap& map) {
    std::vector<INode*> features;
    const std::function<void(INode*)> walk = [&](INode* node) {
        if (const CCategoryPtr category = node) {
            value_vector children;
            category->GetFeatures(children);
            for (IValue* child : children) {
                walk(child->GetNode());
            }
        } else {
            features.push_back(node);
        }
    };
    walk(map.GetNode("Root"));
    return features;
}

struct Kind {
    const char* name;
    const char* section;
};

class FeatureMapTest : public EmulatorFixture, public testing::WithParamInterface<Kind> {
protected:
    std::shared_ptr<INodeMap> Begin() {
        Start(std::string("[interface A]\ntype=") + GetParam().section);
        return Map(Open());
    }
};

TEST_P(FeatureMapTest, WhatIsWritableTakesItsOwnValueAndItsLimits) {
    const auto map = Begin();
    for (INode* node : Features(*map)) {
        const std::string name = node->GetName().str();
        SCOPED_TRACE(name);
        if (node->GetAccessMode() != RW || CCommandPtr(node)) {
            continue;
        }
        const std::string before = CValuePtr(node)->ToString().str();
        if (const CIntegerPtr integer = node) {
            for (const std::int64_t value : {integer->GetMin(), integer->GetMax()}) {
                EXPECT_NO_THROW(integer->SetValue(value)) << value;
                // Counters that count, and addresses that move, do not stay put.
                if (name != "CounterValue") {
                    EXPECT_EQ(integer->GetValue(false, true), value);
                }
            }
        } else if (const CFloatPtr real = node) {
            for (const double value : {real->GetMin(), real->GetMax()}) {
                EXPECT_NO_THROW(real->SetValue(value)) << value;
                EXPECT_NEAR(real->GetValue(false, true), value, 0.06 + value * 1e-6);
            }
        } else if (const CEnumerationPtr enumeration = node) {
            node_vector entries;
            enumeration->GetEntries(entries);
            for (INode* each : entries) {
                const CEnumEntryPtr entry = each;
                if (IsAvailable(each->GetAccessMode()) && IsWritable(node->GetAccessMode())) {
                    EXPECT_NO_THROW(enumeration->SetIntValue(entry->GetValue()))
                        << entry->GetSymbolic().str();
                    EXPECT_EQ(enumeration->GetIntValue(false, true), entry->GetValue());
                }
            }
        }
        if (IsWritable(node->GetAccessMode())) {
            EXPECT_NO_THROW(CValuePtr(node)->FromString(before));
        }
    }
    EXPECT_THAT(Complaints(), testing::IsEmpty());
}

TEST_P(FeatureMapTest, CachedValuesAreWhatTheRegistersHold) {
    // Every write invalidates what depends on it, or the next reading from the cache would be stale. What
    // moves by itself is left out.
    static const std::set<std::string> kMoving{"DeviceTemperature", "DeviceUpTimeSeconds", "LineStatus",
                                               "LineStatusAll",     "TimerValue",          "CounterValue",
                                               "UserSetSave"};
    Start(std::string("[interface A]\ntype=") + GetParam().section);
    CacheAudit cache;
    const auto map = Map(Open(), &cache);
    const auto features = Features(*map);
    const auto audit = [&](const std::string& after) {
        for (INode* node : features) {
            const std::uint64_t before = cache.differences;
            if (IsReadable(node->GetAccessMode()) && kMoving.count(node->GetName().str()) == 0) {
                const CValuePtr value = node;
                const std::string cached = value->ToString().str();
                EXPECT_FALSE(node->GetToolTip().empty()) << node->GetName().str();
                if (const CIntegerPtr integer = node) {
                    EXPECT_LE(integer->GetMin(), integer->GetValue()) << node->GetName().str();
                    EXPECT_GE(integer->GetMax(), integer->GetValue()) << node->GetName().str();
                    integer->GetInc();
                } else if (const CFloatPtr real = node) {
                    EXPECT_LE(real->GetMin(), real->GetValue() + 1e-9) << node->GetName().str();
                    EXPECT_GE(real->GetMax(), real->GetValue() - 1e-9) << node->GetName().str();
                    real->HasInc();
                }
                EXPECT_EQ(cache.differences, before) << node->GetName().str() << " after " << after;
                EXPECT_EQ(cached, value->ToString(false, true).str())
                    << node->GetName().str() << " after " << after;
            }
        }
    };
    audit("opening");
    for (const auto& [name, value] : std::vector<std::pair<const char*, const char*>>{
             {"BinningHorizontal", "2"},
             {"DecimationVertical", "4"},
             {"Width", "64"},
             {"OffsetX", "32"},
             {"PixelFormat", "Mono16"},
             {"ExposureTime", "200000"},
             {"GainSelector", "All"},
             {"Gain", "3.5"},
             {"ChunkModeActive", "true"},
             {"LUTIndex", "17"},
             {"LUTValue", "99"},
             {"LineSelector", "Line2"},
             {"LineSource", "UserOutput1"},
             {"UserOutputSelector", "UserOutput1"},
             {"UserOutputValue", "true"},
             {"TriggerSelector", "FrameStart"},
             {"TriggerMode", "On"},
             {"AcquisitionMode", "MultiFrame"},
             {"UserSetSelector", "UserSet0"},
             {"UserSetLoad", ""},
         }) {
        *value ? SetText(*map, name, value) : Execute(*map, name);
        audit(std::string(name) + " = " + value);
    }
    EXPECT_GE(features.size(), 165U);
    EXPECT_GT(cache.reads, 10000u);
    EXPECT_THAT(Complaints(), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, FeatureMapTest,
    testing::Values(Kind{"GigEColour", "GEV\n[camera 1]\nwidth=640\nheight=480\n"},
                    Kind{"Usb3Mono", "U3V\n[camera 1]\nwidth=640\nheight=480\npixel-format=Mono8\n"},
                    Kind{"GigEDetection", "GEV\n[camera 1]\nwidth=640\nheight=480\ninference=detection\n"},
                    Kind{"OddSize", "U3V\n[camera 1]\nwidth=641\nheight=333\npixel-format=BayerGB12p\n"}),
    [](const auto& kind) { return kind.param.name; });

} // namespace
} // namespace Norvane::Transport::Emulator
