#include "TestMap.h"

#include "norvane/genapi/Prefetch.h"

#include <fstream>
#include <future>
#include <random>
#include <sstream>
#include <thread>

namespace Norvane::GenApi {
namespace {

TEST(Cache, SecondReadsCostNothing) {
    TestMap t(Reg("A", 0) + Reg("B", 4, "<Cachable>NoCache</Cachable>") +
              "<IntSwissKnife Name=\"Sum\"><pVariable "
              "Name=\"A\">A</pVariable><Formula>A+1</Formula></IntSwissKnife>"
              "<Integer "
              "Name=\"Limited\"><pIsAvailable>A</pIsAvailable><pIsLocked>A</pIsLocked><pMax>A</"
              "pMax><Value>1</Value></Integer>"
              "<IntSwissKnife Name=\"Volatile\"><pVariable "
              "Name=\"B\">B</pVariable><Formula>B</Formula></IntSwissKnife>");
    t.port->Poke(0, 5);
    EXPECT_EQ(t.Int("Sum")->GetValue(), 6);
    EXPECT_EQ(t.Int("Limited")->GetMax(), 5);
    EXPECT_EQ(t.Access("Limited"), RO);
    EXPECT_EQ(t.port->reads, 1);
    t.Int("Volatile")->GetValue();
    t.port->Poke(4, 7);
    EXPECT_EQ(t.Int("Volatile")->GetValue(), 7);
    EXPECT_FALSE(t.Get<INode>("Volatile")->IsCachable());
    EXPECT_EQ(t.port->reads, 3);
    // Past the cache: the change is noticed, and by what depends on it too.
    t.port->Poke(0, 50);
    EXPECT_EQ(t.Int("Sum")->GetValue(), 6);
    EXPECT_EQ(t.Int("A")->GetValue(false, true), 50);
    EXPECT_EQ(t.Int("Sum")->GetValue(), 51);
    t.map->InvalidateNodes();
    const int reads = t.port->reads;
    t.Int("Sum")->GetValue();
    EXPECT_EQ(t.port->reads, reads + 1);
}

TEST(Cache, WritingByCachingMode) {
    TestMap t(Reg("Through", 0) + Reg("Around", 4, "<Cachable>WriteAround</Cachable>") +
              Reg("None", 8, "<Cachable>NoCache</Cachable>"));
    for (const auto& [name, readsAfter] : {std::pair{"Through", 0}, {"Around", 1}, {"None", 2}}) {
        t.port->reads = 0;
        t.Int(name)->SetValue(3);
        t.Int(name)->GetValue();
        t.Int(name)->GetValue();
        EXPECT_EQ(t.port->reads, readsAfter) << name;
    }
}

/// Registers that share bytes see one another's writes, and an equal one costs one read for all.
TEST(Cache, SharedBytes) {
    const std::string common = "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>";
    TestMap t(
        "<StructReg Comment=\"S\"><Address>16</Address>" + common +
        "<Endianess>LittleEndian</Endianess><StructEntry Name=\"Low\"><LSB>0</LSB><MSB>7</MSB></StructEntry>"
        "<StructEntry Name=\"High\"><LSB>8</LSB><MSB>15</MSB></StructEntry></StructReg>" +
        Reg("Whole", 16) +
        "<IntReg Name=\"Byte\"><Address>17</Address><Length>1</Length><AccessMode>RW</AccessMode></IntReg>"
        "<Register "
        "Name=\"Table\"><Address>0</Address><Length>200</Length><AccessMode>RW</AccessMode></Register>");
    t.port->Poke(16, 0x0201);
    EXPECT_EQ(t.Int("Low")->GetValue(), 1);
    EXPECT_EQ(t.Int("High")->GetValue(), 2);
    EXPECT_EQ(t.Int("Whole")->GetValue(), 0x201);
    EXPECT_EQ(t.port->reads, 1);
    EXPECT_EQ(t.Int("Byte")->GetValue(), 2);
    t.Int("High")->SetValue(5);
    EXPECT_EQ(t.Int("Whole")->GetValue(), 0x501);
    EXPECT_EQ(t.Int("Byte")->GetValue(), 5);
    t.Int("Byte")->SetValue(6);
    EXPECT_EQ(t.Int("High")->GetValue(), 6);
    std::vector<std::uint8_t> table(200, 9);
    t.Get<IRegister>("Table")->Set(table.data(), 200);
    EXPECT_EQ(t.Int("Whole")->GetValue(), 0x09090909);
    t.Int("Whole")->SetValue(1);
    t.Get<IRegister>("Table")->Get(table.data(), 200);
    EXPECT_EQ(table[16], 1);
    EXPECT_EQ(table[20], 9);
}

TEST(Cache, WhatForgets) {
    TestMap t("<Integer Name=\"Selector\"><Value>0</Value><pSelected>Selected</pSelected></Integer>" +
              Reg("Behind", 0) + "<Integer Name=\"Selected\"><pValue>Behind</pValue></Integer>" +
              Reg("Invalidated", 4, "<pInvalidator>Go</pInvalidator>") +
              "<Command Name=\"Go\"><pValue>GoReg</pValue><CommandValue>1</CommandValue></Command>" +
              Reg("GoReg", 8) +
              "<IntReg Name=\"Indexed\"><Address>16</Address><pIndex "
              "Offset=\"4\">Selector</pIndex><Length>4</Length>"
              "<AccessMode>RW</AccessMode></IntReg>"
              "<IntSwissKnife Name=\"Last\"><pVariable "
              "Name=\"A\">Invalidated</pVariable><Formula>A</Formula></IntSwissKnife>");
    const auto expect = [&t](const char* name, std::int64_t value) {
        EXPECT_EQ(t.Int(name)->GetValue(), value) << name;
    };
    t.port->Poke(16, 100);
    t.port->Poke(20, 200);
    expect("Selected", 0);
    expect("Last", 0);
    expect("Indexed", 100);
    t.port->Poke(0, 1);
    t.port->Poke(4, 2);
    expect("Selected", 0); // cached
    t.Int("Selector")->SetValue(1);
    expect("Selected", 1);
    expect("Indexed", 200);
    t.Int("Indexed")->SetValue(201);
    EXPECT_EQ(t.port->Peek(20), 201u);
    expect("Last", 0);
    t.Get<ICommand>("Go")->Execute();
    expect("Last", 2);
    t.port->Poke(0, 7);
    t.Get<INode>("Selected")->InvalidateNode(); // reaches down to the register
    expect("Selected", 7);
}

TEST(Cache, FailuresAreNotKept) {
    TestMap t(Reg("A", 0) +
              "<Integer Name=\"Gated\"><pIsAvailable>A</pIsAvailable><Value>1</Value></Integer>");
    t.port->Poke(0, 1);
    t.port->failing = true;
    EXPECT_EQ(t.Access("Gated"), NA);
    EXPECT_EQ(ErrorOf([&] { t.Int("A")->GetValue(); }), "A: reading 4 bytes at 0x0 failed: no answer");
    t.port->failing = false;
    EXPECT_EQ(t.Access("Gated"), RW);
    t.Int("A")->SetValue(1);
    t.port->failing = true;
    EXPECT_THROW(t.Int("A")->SetValue(2), Exception);
    t.port->failing = false;
    t.port->Poke(0, 9); // how far the failed write came is the device's secret
    EXPECT_EQ(t.Int("A")->GetValue(), 9);
}

TEST(Cache, Polling) {
    TestMap t(Reg("Polled", 0, "<PollingTime>100</PollingTime>") +
              Reg("Twin", 0, "<PollingTime>100</PollingTime>") +
              Reg("Blocked", 4, "<PollingTime>100</PollingTime>") +
              "<Integer Name=\"Over\"><pValue>Polled</pValue></Integer>");
    t.Int("Over")->GetValue();
    t.port->Poke(0, 5);
    t.map->Poll(60);
    EXPECT_EQ(t.Int("Over")->GetValue(), 0);
    t.port->reads = 0;
    t.map->Poll(60);
    EXPECT_EQ(t.port->reads, 1); // one for both nodes, none for what nobody has asked for
    EXPECT_EQ(t.Int("Over")->GetValue(), 5);
    EXPECT_EQ(t.port->reads, 1);
}

/// A port whose reads wait until they are let through.
class StuckPort final : public IPort {
public:
    EAccessMode GetAccessMode() const override { return RW; }
    void Read(void* buffer, std::int64_t, std::int64_t length) override {
        entered.set_value();
        released.get_future().wait();
        std::memset(buffer, 0, static_cast<std::size_t>(length));
    }
    void Write(const void*, std::int64_t, std::int64_t) override {}

    std::promise<void> entered;
    std::promise<void> released;
};

/// While one thread waits for the device, another still sees what is cached, and what a write changed.
TEST(Cache, AnswersWhileTheDeviceIsAsked) {
    const auto port = std::make_shared<StuckPort>();
    const auto map = CreateNodeMap(
        Describe(Reg("A", 0) + Reg("Slow", 4) + Reg("Behind", 8) +
                 "<FloatReg Name=\"F\"><Address>12</Address><Length>4</Length><AccessMode>RW</AccessMode>"
                 "<pPort>Device</pPort></FloatReg>"
                 "<Boolean Name=\"B\"><pValue>Behind</pValue></Boolean>"
                 "<Enumeration Name=\"E\"><EnumEntry Name=\"One\"><Value>1</Value></EnumEntry>"
                 "<pValue>Behind</pValue></Enumeration>"
                 "<Integer Name=\"Locked\"><pIsLocked>Behind</pIsLocked><pValue>A</pValue></Integer>"),
        port);
    const CIntegerPtr a = map->GetNode("A");
    const CFloatPtr f = map->GetNode("F");
    const CBooleanPtr b = map->GetNode("B");
    const CEnumerationPtr e = map->GetNode("E");
    const CIntegerPtr locked = map->GetNode("Locked");
    a->SetValue(7);
    f->SetValue(0.5);
    CIntegerPtr(map->GetNode("Behind"))->SetValue(1);
    // Once with the lock, so that all of it is cached.
    const auto expectAll = [&](std::int64_t value) {
        EXPECT_EQ(a->GetValue(), value);
        EXPECT_EQ(f->GetValue(), 0.5);
        EXPECT_TRUE(b->GetValue());
        EXPECT_EQ(e->GetIntValue(), 1);
        EXPECT_EQ(locked->GetAccessMode(), RO);
        EXPECT_EQ(locked->GetValue(), value);
    };
    expectAll(7);
    a->SetValue(8);
    expectAll(8);
    auto slow = std::async(std::launch::async, [&] { return CIntegerPtr(map->GetNode("Slow"))->GetValue(); });
    port->entered.get_future().wait();
    expectAll(8);
    port->released.set_value();
    EXPECT_EQ(slow.get(), 0);
}

/// A device that takes its time for every register.
class SlowPort final : public IPort {
public:
    EAccessMode GetAccessMode() const override { return RW; }
    void Read(void* buffer, std::int64_t address, std::int64_t length) override {
        std::this_thread::sleep_for(std::chrono::milliseconds(4));
        std::memset(buffer, 1, static_cast<std::size_t>(length));
        const std::lock_guard lock(m_mutex);
        ++m_reads[address];
    }
    void Write(const void*, std::int64_t, std::int64_t) override {}
    std::map<std::int64_t, int> Reads() const {
        const std::lock_guard lock(m_mutex);
        return m_reads;
    }

private:
    mutable std::mutex m_mutex;
    std::map<std::int64_t, int> m_reads;
};

/// Long series of reads, polling and reading ahead, let others in between any two registers.
TEST(Cache, SeriesLetOthersIn) {
    std::string nodes = Reg("Wanted", 0, "<Cachable>NoCache</Cachable>");
    std::string features;
    for (int i = 1; i <= 40; ++i) {
        const auto name = "R" + std::to_string(i);
        nodes += Reg(name, 4 * i, "<PollingTime>100</PollingTime>");
        features += "<pFeature>" + name + "</pFeature>";
    }
    nodes += "<Category Name=\"Group\">" + features + "<pFeature>Wanted</pFeature></Category>";
    auto description = Describe(nodes);
    description.replace(description.find("<Category Name=\"Root\"/>"), 23,
                        "<Category Name=\"Root\"><pFeature>Group</pFeature></Category>");
    const auto port = std::make_shared<SlowPort>();
    const auto map = CreateNodeMap(description, port);
    const CIntegerPtr wanted = map->GetNode("Wanted");
    const auto readsUntil = [&](const std::future<void>& end) {
        int reads = 0;
        for (; end.wait_for(std::chrono::seconds(0)) != std::future_status::ready; ++reads) {
            EXPECT_EQ(wanted->GetValue(), 0x01010101);
        }
        return reads;
    };

    std::promise<void> done;
    {
        const Prefetch prefetch({map.get()}, map, [&] { done.set_value(); });
        EXPECT_GE(readsUntil(done.get_future()), 10);
        EXPECT_TRUE(prefetch.WaitFor(std::chrono::milliseconds(0)));
    }
    auto reads = port->Reads();
    reads.erase(0); // what is not cached is not read ahead
    EXPECT_EQ(reads.size(), 40u);
    for (int i = 1; i <= 40; ++i) {
        EXPECT_EQ(CIntegerPtr(map->GetNode("R" + std::to_string(i)))->GetValue(), 0x01010101);
    }
    for (const auto& [address, count] : port->Reads()) {
        EXPECT_TRUE(address == 0 || count == 1) << address;
    }
    const auto polling = std::async(std::launch::async, [&] { map->Poll(100); });
    EXPECT_GE(readsUntil(polling), 10);
}

/// Whoever gives a reading up does not wait for the device, and the maps live as long as they are read.
TEST(Cache, ReadingAheadIsGivenUpWithoutTheDevice) {
    auto description = Describe(Reg("A", 0) + Reg("B", 4));
    description.replace(description.find("<Category Name=\"Root\"/>"), 23,
                        "<Category Name=\"Root\"><pFeature>A</pFeature><pFeature>B</pFeature></Category>");
    const auto port = std::make_shared<StuckPort>(); // whose second read would throw
    auto map = CreateNodeMap(description, port);
    const std::weak_ptr<INodeMap> watched = map;
    const auto handle = Register(map->GetNode("A"), [](INode*) { FAIL() << "it was deregistered"; });
    bool called = false;
    {
        INodeMap* const raw = map.get();
        const Prefetch prefetch({raw}, std::move(map), [&] { called = true; });
        port->entered.get_future().wait();
        EXPECT_TRUE(Deregister(handle)); // nor for ending a callback
        EXPECT_FALSE(prefetch.WaitFor(std::chrono::milliseconds(0)));
    }
    EXPECT_FALSE(watched.expired());
    port->released.set_value();
    Prefetch::AwaitGivenUp();
    EXPECT_TRUE(watched.expired());
    EXPECT_FALSE(called);
}

TEST(Cache, AuditCountsWhatChangedBehindTheCache) {
    CacheAudit audit;
    NodeMapOptions options;
    options.cacheAudit = &audit;
    TestMap t(Reg("A", 0) + "<Integer Name=\"Locked\"><pIsLocked>A</pIsLocked><Value>1</Value></Integer>",
              options);
    t.Int("A")->GetValue();
    t.Access("Locked");
    EXPECT_EQ(audit.differences, 0u);
    t.port->Poke(0, 1);
    t.Access("Locked");
    EXPECT_GT(audit.differences, 0u);
}

/// Random writes through every kind, with every cached answer compared with the port.
TEST(Cache, AuditFindsNoDifference) {
    std::ifstream file(std::string(FIXTURES) + "/genapi/kinds.xml");
    std::stringstream text;
    text << file.rdbuf();
    CacheAudit audit;
    NodeMapOptions options;
    options.cacheAudit = &audit;
    const auto port = std::make_shared<CountingPort>();
    const auto map = CreateNodeMap(text.str(), port, options);
    node_vector nodes;
    map->GetNodes(nodes);
    std::mt19937 random(1);
    for (int i = 0; i < 3000; ++i) {
        INode* const written = nodes[random() % nodes.size()];
        ErrorOf([&] {
            if (const CIntegerPtr integer = written) {
                integer->SetValue(random() % 300, false);
            } else if (const CFloatPtr number = written) {
                number->SetValue(random() % 300, false);
            } else if (const CValuePtr value = written) {
                value->FromString(i % 2 ? "1" : "On");
            }
        });
        INode* const read = nodes[random() % nodes.size()];
        read->GetAccessMode();
        ErrorOf([&] {
            CValuePtr(read)->ToString();
            if (const CIntegerPtr integer = read) {
                integer->GetMax();
            }
        });
    }
    EXPECT_GT(audit.reads, 1000u);
    EXPECT_EQ(audit.differences, 0u);
}

} // namespace
} // namespace Norvane::GenApi
