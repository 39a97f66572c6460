// Each measurement of ours stands beside Aravis's engine doing the same in the same run.
#include "AravisEngine.h"
#include "GeneratedDescription.h"

#include "norvane/genapi/GenApi.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

namespace {

using namespace Norvane::GenApi;

class PlainPort final : public IPort {
public:
    EAccessMode GetAccessMode() const override { return RW; }
    void Read(void* buffer, std::int64_t address, std::int64_t length) override {
        ++reads;
        std::memcpy(buffer, bytes.data() + address, static_cast<std::size_t>(length));
    }
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override {
        std::memcpy(bytes.data() + address, buffer, static_cast<std::size_t>(length));
    }

    std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(0x40000, 0);
    long reads = 0;
};

std::vector<std::string> FeatureNames(int count) {
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i) {
        names.push_back("Feature" + std::to_string(i));
    }
    return names;
}

/// A feature with its interfaces looked up, as a feature tree keeps it.
struct Feature {
    INode* node;
    IInteger* integer;
    IFloat* real;
    IBoolean* boolean;
    IString* text;
    IEnumeration* enumeration;
};

std::vector<Feature> Features(INodeMap& map, int count) {
    std::vector<Feature> features;
    for (const auto& name : FeatureNames(count)) {
        INode* const node = map.GetNode(name);
        features.push_back({node, dynamic_cast<IInteger*>(node), dynamic_cast<IFloat*>(node),
                            dynamic_cast<IBoolean*>(node), dynamic_cast<IString*>(node),
                            dynamic_cast<IEnumeration*>(node)});
    }
    return features;
}

void ReadAll(const std::vector<Feature>& features) {
    for (const auto& feature : features) {
        if (!IsReadable(feature.node->GetAccessMode())) {
            continue;
        }
        if (feature.integer) {
            benchmark::DoNotOptimize(feature.integer->GetValue());
        } else if (feature.real) {
            benchmark::DoNotOptimize(feature.real->GetValue());
        } else if (feature.boolean) {
            benchmark::DoNotOptimize(feature.boolean->GetValue());
        } else if (feature.text) {
            benchmark::DoNotOptimize(feature.text->GetValue());
        } else if (feature.enumeration) {
            benchmark::DoNotOptimize(feature.enumeration->GetIntValue());
        }
    }
}

void Build_Norvane(benchmark::State& state) {
    const auto description = GeneratedDescription(static_cast<int>(state.range(0)));
    const auto port = std::make_shared<PlainPort>();
    for (auto _ : state) {
        benchmark::DoNotOptimize(CreateNodeMap(description, port));
    }
}

void Build_Aravis(benchmark::State& state) {
    const auto description = GeneratedDescription(static_cast<int>(state.range(0)));
    const auto port = std::make_shared<PlainPort>();
    for (auto _ : state) {
        benchmark::DoNotOptimize(AravisEngine(description, port).Good());
    }
}

void FirstRead_Norvane(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const auto description = GeneratedDescription(count);
    const auto port = std::make_shared<PlainPort>();
    for (auto _ : state) {
        state.PauseTiming();
        auto map = CreateNodeMap(description, port);
        const auto features = Features(*map, count);
        state.ResumeTiming();
        ReadAll(features);
        state.PauseTiming();
        map.reset();
        state.ResumeTiming();
    }
}

void FirstRead_Aravis(benchmark::State& state) {
    const auto names = FeatureNames(static_cast<int>(state.range(0)));
    const auto description = GeneratedDescription(static_cast<int>(state.range(0)));
    const auto port = std::make_shared<PlainPort>();
    for (auto _ : state) {
        state.PauseTiming();
        auto engine = std::make_unique<AravisEngine>(description, port);
        state.ResumeTiming();
        for (const auto& name : names) {
            engine->Touch(name);
        }
        state.PauseTiming();
        engine.reset();
        state.ResumeTiming();
    }
}

void SecondRead_Norvane(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const auto port = std::make_shared<PlainPort>();
    const auto map = CreateNodeMap(GeneratedDescription(count), port);
    const auto features = Features(*map, count);
    ReadAll(features);
    port->reads = 0;
    for (auto _ : state) {
        ReadAll(features);
    }
    state.counters["port_reads"] = static_cast<double>(port->reads);
}

void SecondRead_Aravis(benchmark::State& state) {
    const auto names = FeatureNames(static_cast<int>(state.range(0)));
    const AravisEngine engine(GeneratedDescription(static_cast<int>(state.range(0))),
                              std::make_shared<PlainPort>());
    for (auto _ : state) {
        for (const auto& name : names) {
            engine.Touch(name);
        }
    }
}

/// A write that a hundred features hang on, with all of them told and read again.
void Write_Norvane(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const auto port = std::make_shared<PlainPort>();
    const auto map = CreateNodeMap(GeneratedDescription(count), port);
    const auto features = Features(*map, count);
    static std::vector<INode*> changed;
    for (const auto& feature : features) {
        Register(feature.node, [](INode* node) { changed.push_back(node); });
    }
    ReadAll(features);
    const CIntegerPtr hub = map->GetNode("Hub");
    std::int64_t value = 0;
    for (auto _ : state) {
        changed.clear();
        hub->SetValue(value++ & 1);
        for (INode* node : changed) {
            benchmark::DoNotOptimize(node->GetAccessMode());
        }
    }
    state.counters["dependants"] = static_cast<double>(changed.size());
}

BENCHMARK(Build_Norvane)->Arg(500)->Arg(2000)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(Build_Aravis)->Arg(500)->Arg(2000)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(FirstRead_Norvane)->Arg(500)->Arg(2000)->Arg(5000)->Unit(benchmark::kMillisecond)->Iterations(20);
BENCHMARK(FirstRead_Aravis)->Arg(500)->Arg(2000)->Arg(5000)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(SecondRead_Norvane)->Arg(500)->Arg(2000)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(SecondRead_Aravis)->Arg(500)->Arg(2000)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(Write_Norvane)->Arg(500)->Arg(5000)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
