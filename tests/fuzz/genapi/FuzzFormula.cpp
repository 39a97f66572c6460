// Any bytes as a formula, calculated in both arithmetics.
#include "genapi/Formula.h"
#include "norvane/Exception.h"

#include <cstddef>
#include <cstdint>

using namespace Norvane;
using namespace Norvane::GenApi;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto half = text.substr(0, size / 2);
    const Formula::Names names{{"A", "B"}, {{"C", 0.5}}, {{"X", half}, {"Y", "X+X"}}};
    for (const auto kind : {Formula::Kind::Integer, Formula::Kind::Float}) {
        try {
            std::pmr::monotonic_buffer_resource memory;
            const auto formula = Formula::Compile(text, names, kind, memory);
            for (const std::int64_t value : {std::int64_t{0}, std::int64_t{-1}, INT64_MIN, INT64_MAX}) {
                const auto load = [value](std::size_t index) { return index ? value : value / 2 + 1; };
                try {
                    formula.EvaluateInteger(load);
                } catch (const Exception&) {
                }
                formula.EvaluateFloat(load);
            }
        } catch (const Exception&) {
            // Refusing is what broken input deserves.
        }
    }
    return 0;
}
