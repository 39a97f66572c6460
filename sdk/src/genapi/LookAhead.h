#pragma once

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>

namespace Norvane::GenApi {

/// How many nodes the loader reads ahead.
constexpr std::size_t kAhead = 16;
/// Bytes of a cache line.
constexpr std::size_t kLine = 64;
/// What most nodes take.
constexpr std::size_t kNodeBytes = 256;

// These only ask the processor for memory that will be needed; any address will do. The compiler drops calls
// of functions that do nothing else, so they have to stand in their callers.

/// Asks for `bytes` of memory, `distance` behind `near`.
template <std::size_t bytes = 1>
[[gnu::always_inline]] inline void AskFor(const void* near, std::uintptr_t distance = 0) {
    for (std::size_t at = 0; at < bytes; at += kLine) {
        __builtin_prefetch(
            reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(near) + distance + at));
    }
}

/// The parser has made the document in the text's order, so what some elements later needs stands behind this
/// one, and so does its text. Both in cache lines, for as far as the caller goes from one call to the next.
template <std::size_t documentLines = 1, std::size_t textLines = 1>
[[gnu::always_inline]] inline void AskForMore(pugi::xml_node element) {
    AskFor<documentLines * kLine>(element.internal_object(), 3072);
    AskFor<textLines * kLine>(element.name(), 1024);
}

} // namespace Norvane::GenApi
