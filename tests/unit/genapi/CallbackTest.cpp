#include "TestMap.h"

#include <atomic>
#include <thread>

namespace Norvane::GenApi {
namespace {

std::vector<std::string>& Fired() {
    static std::vector<std::string> names;
    return names;
}
void Record(INode* node) {
    Fired().push_back(node->GetName().str());
}
void RecordAgain(INode* node) {
    Fired().push_back(node->GetName().str() + "'");
}

class Callbacks : public testing::Test {
protected:
    Callbacks() { Fired().clear(); }
    std::vector<std::string> Sorted() {
        auto names = Fired();
        Fired().clear();
        std::sort(names.begin(), names.end());
        return names;
    }
    using Names = std::vector<std::string>;

    TestMap t{
        Reg("A", 0) + Reg("Other", 4) + "<Integer Name=\"Over\"><pValue>A</pValue></Integer>" +
        "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">A</pVariable><pVariable Name=\"Y\">Over</pVariable>"
        "<Formula>X+Y</Formula></IntSwissKnife>"
        "<Integer Name=\"Locked\"><pIsLocked>A</pIsLocked><Value>0</Value></Integer>"
        "<Integer Name=\"Limited\"><pMax>K</pMax><Value>0</Value></Integer>"};
};

TEST_F(Callbacks, FireOncePerChangeForAllThatDepends) {
    for (const char* name : {"A", "Other", "Over", "K", "Locked", "Limited"}) {
        Register(t.map->GetNode(name), Record);
    }
    t.Int("K")->GetValue();
    EXPECT_EQ(Sorted(), Names{}); // reading changes nothing
    t.Int("Over")->SetValue(1);
    EXPECT_EQ(Sorted(), (Names{"A", "K", "Limited", "Locked", "Over"}));
    t.port->Poke(0, 2);
    t.Int("A")->GetValue(false, true);
    EXPECT_EQ(Sorted().size(), 5u);
    t.Int("A")->GetValue(false, true); // nothing new
    EXPECT_EQ(Sorted(), Names{});
}

TEST(CallbackChoices, AnEnumerationTellsWhatCanBeChosen) {
    Fired().clear();
    const TestMap t(Reg("Allowed", 0) + Reg("Raw", 4) +
                    "<Enumeration Name=\"Mode\"><EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry>"
                    "<EnumEntry Name=\"On\"><pIsAvailable>Allowed</pIsAvailable><Value>1</Value></EnumEntry>"
                    "<EnumEntry Name=\"Held\"><pIsLocked>Allowed</pIsLocked><Value>2</Value></EnumEntry>"
                    "<pValue>Raw</pValue></Enumeration>");
    Register(t.map->GetNode("Mode"), Record);
    t.Enum("Mode")->GetIntValue();
    const CNodePtr on = t.map->GetNode("EnumEntry_Mode_On");
    EXPECT_FALSE(IsAvailable(on->GetAccessMode()));
    EXPECT_EQ(Fired().size(), 0u);
    t.Int("Allowed")->SetValue(1);
    EXPECT_TRUE(IsAvailable(on->GetAccessMode()));
    EXPECT_EQ(Fired(), std::vector<std::string>{"Mode"});
    // Its own value is still known.
    const int reads = t.port->reads;
    t.Enum("Mode")->GetIntValue();
    EXPECT_EQ(t.port->reads, reads);
}

TEST_F(Callbacks, EqualRegistrationsFireOnceAndShareAHandle) {
    const auto first = Register(t.map->GetNode("A"), Record);
    const auto second = Register(t.map->GetNode("A"), Record);
    const auto outside = Register(t.map->GetNode("A"), Record, cbPostOutsideLock);
    const auto other = Register(t.map->GetNode("A"), RecordAgain);
    EXPECT_EQ(first, second);
    EXPECT_NE(first, outside);
    EXPECT_NE(first, other);
    t.Int("A")->SetValue(1);
    EXPECT_EQ(Sorted(), (Names{"A", "A", "A'"}));
    EXPECT_TRUE(Deregister(outside) && Deregister(first) && Deregister(other));
    t.Int("A")->SetValue(2);
    EXPECT_EQ(Sorted(), Names{"A"});
    EXPECT_TRUE(Deregister(second));
    EXPECT_FALSE(Deregister(second));
    t.Int("A")->SetValue(3);
    EXPECT_EQ(Sorted(), Names{});
    const auto anew = Register(t.map->GetNode("A"), Record);
    EXPECT_FALSE(Deregister(first)) << "an ended handle does not come back";
    t.Int("A")->SetValue(4);
    EXPECT_EQ(Sorted(), Names{"A"});
    for (int i = 0; i < 100; ++i) {
        Register(t.map->GetNode("A"), Record);
    }
    EXPECT_EQ(Register(t.map->GetNode("Other"), Record), anew + 1) << "nothing was kept for a repetition";
    EXPECT_THROW(Register(nullptr, Record), Exception);
}

TEST_F(Callbacks, SeeTheNewValueAndMayWrite) {
    Register(t.map->GetNode("A"), [](INode* node) {
        const CIntegerPtr other = node->GetNodeMap()->GetNode("Other");
        other->SetValue(CIntegerPtr(node)->GetValue() * 2);
        throw Exception(Error::Unknown, "a callback's own trouble stays its own");
    });
    Register(t.map->GetNode("Other"), Record);
    const LogLines log;
    t.Int("A")->SetValue(21);
    EXPECT_EQ(t.Int("Other")->GetValue(), 42);
    EXPECT_EQ(Sorted(), Names{"Other"});
    EXPECT_EQ(log.Count({"A", "own trouble"}), 1);
}

TEST_F(Callbacks, EndlessAnswersEnd) {
    Register(t.map->GetNode("A"),
             [](INode* node) { CIntegerPtr(node->GetNodeMap()->GetNode("Other"))->SetValue(1); });
    Register(t.map->GetNode("Other"),
             [](INode* node) { CIntegerPtr(node->GetNodeMap()->GetNode("A"))->SetValue(1); });
    const LogLines log;
    t.Int("A")->SetValue(1);
    EXPECT_EQ(log.Count({"keep changing one another"}), 1);
}

/// Outside the lock another thread can use the map while the callback waits for it; inside it cannot.
TEST_F(Callbacks, OutsideTheLockMeansOutside) {
    static TestMap* map = nullptr;
    map = &t;
    Register(
        t.map->GetNode("A"), [](INode*) { std::thread([] { map->Int("Other")->SetValue(7); }).join(); },
        cbPostOutsideLock);
    t.Int("A")->SetValue(1);
    EXPECT_EQ(t.port->Peek(4), 7u);
}

TEST_F(Callbacks, DeregisterWaitsForTheLastCall) {
    static std::atomic<int> running;
    static std::atomic<int> calls;
    running = calls = 0;
    const auto function = [](INode*) {
        ++running;
        ++calls;
        std::this_thread::yield();
        --running;
    };
    for (const auto type : {cbPostInsideLock, cbPostOutsideLock}) {
        calls = 0;
        const auto handle = Register(t.map->GetNode("A"), function, type);
        std::atomic<bool> stop{false};
        std::thread writer([&] {
            for (int i = 0; !stop; ++i) {
                t.Int("A")->SetValue(i & 0xFF);
            }
        });
        while (calls < 100) {
            t.Int("K")->GetValue();
        }
        Deregister(handle);
        EXPECT_EQ(running, 0);
        const int after = calls;
        t.Int("A")->SetValue(1);
        EXPECT_EQ(calls, after);
        stop = true;
        writer.join();
    }
}

TEST(CallbackLifetime, HandlesMayOutliveTheMap) {
    CallbackHandleType handle = 0;
    {
        TestMap t(Reg("A", 0));
        handle = Register(t.map->GetNode("A"), Record);
    }
    EXPECT_TRUE(Deregister(handle));
    EXPECT_FALSE(Deregister(handle));
}

TEST(CallbackLifetime, OnChangedComesLastAndOnce) {
    static int changes;
    static int before;
    changes = before = 0;
    NodeMapOptions options;
    options.onChanged = [] { ++changes; };
    TestMap t(Reg("A", 0), options);
    Register(
        t.map->GetNode("A"), [](INode*) { before = changes; }, cbPostOutsideLock);
    t.Int("A")->SetValue(1);
    t.Int("A")->GetValue();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(before, 0);
}

} // namespace
} // namespace Norvane::GenApi
