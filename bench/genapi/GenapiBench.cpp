// Each measurement of ours stands beside Aravis's engine doing the same in the same run.
#include "AravisEngine.h"
#include "GeneratedDescription.h"

#include "norvane/genapi/GenApi.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <ctime>
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

double ProcessorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// How much longer a description of 5000 features takes than one of 500 (`time`, in processor time), beside
/// how much more there is of it (`bytes`, `nodes`). Each iteration builds both, so that what else the machine
/// does meets both alike; the median counts.
template <class Build>
void Growth(benchmark::State& state, Build&& build) {
    constexpr int kTimes = 10;
    const auto port = std::make_shared<PlainPort>();
    const auto small = GeneratedDescription(500);
    const auto large = GeneratedDescription(500 * kTimes);
    std::vector<double> ratios;
    for (auto _ : state) {
        const auto start = ProcessorSeconds();
        for (int i = 0; i < kTimes; ++i) {
            build(small, port);
        }
        const auto between = ProcessorSeconds();
        build(large, port);
        ratios.push_back(kTimes * (ProcessorSeconds() - between) / (between - start));
    }
    const auto middle = ratios.begin() + static_cast<std::ptrdiff_t>(ratios.size() / 2);
    std::nth_element(ratios.begin(), middle, ratios.end());
    const auto nodes = [&](const std::string& description) {
        return static_cast<double>(CreateNodeMap(description, port)->GetNumNodes());
    };
    state.counters["time"] = *middle;
    state.counters["bytes"] = static_cast<double>(large.size()) / static_cast<double>(small.size());
    state.counters["nodes"] = nodes(large) / nodes(small);
}

void BuildGrowth_Norvane(benchmark::State& state) {
    Growth(state, [](const std::string& description, const std::shared_ptr<IPort>& port) {
        benchmark::DoNotOptimize(CreateNodeMap(description, port));
    });
}

void BuildGrowth_Aravis(benchmark::State& state) {
    Growth(state, [](const std::string& description, const std::shared_ptr<IPort>& port) {
        benchmark::DoNotOptimize(AravisEngine(description, port).Good());
    });
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
BENCHMARK(BuildGrowth_Norvane)->Unit(benchmark::kMillisecond)->Iterations(25);
BENCHMARK(BuildGrowth_Aravis)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(FirstRead_Norvane)->Arg(500)->Arg(2000)->Arg(5000)->Unit(benchmark::kMillisecond)->Iterations(20);
BENCHMARK(FirstRead_Aravis)->Arg(500)->Arg(2000)->Arg(5000)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(SecondRead_Norvane)->Arg(500)->Arg(2000)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(SecondRead_Aravis)->Arg(500)->Arg(2000)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(Write_Norvane)->Arg(500)->Arg(5000)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
