// Vector helpers of the demosaicing kernels; included once per instruction set (see hwy/foreach_target.h).
#if defined(NORVANE_DEMOSAIC_VECTOR_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef NORVANE_DEMOSAIC_VECTOR_INL_H
#undef NORVANE_DEMOSAIC_VECTOR_INL_H
#else
#define NORVANE_DEMOSAIC_VECTOR_INL_H
#endif

#include "hwy/highway.h"
#include "imaging/Demosaic/WindowKernels.h"
#include "imaging/Interleave-inl.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <type_traits>

HWY_BEFORE_NAMESPACE();
namespace Norvane::Imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// True in the columns whose mosaic sample is green; vectors begin at even columns.
template <class D>
HWY_INLINE auto GreenMask(D d, bool greenFirst) {
    using T = hn::TFromD<D>;
    const auto odd = hn::And(hn::Iota(d, T{0}), hn::Set(d, T{1}));
    return hn::Eq(odd, hn::Set(d, greenFirst ? T{0} : T{1}));
}

/// Each even lane's value and the next one's change places.
template <class D, class V>
HWY_INLINE V SwapPairs(D d, V v) {
    const hn::Repartition<std::uint8_t, D> d8;
    const auto from = hn::Xor(hn::Iota(d8, 0), hn::Set(d8, sizeof(hn::TFromD<D>)));
    return hn::BitCast(d, hn::TableLookupBytes(hn::BitCast(d8, v), hn::And(from, hn::Set(d8, 15))));
}

/// (a + b + c + e + 2) / 4 without widening, given the rounded means of a, b and of c, e: those are too large
/// together by what the last bits tell.
template <class D, class V>
HWY_INLINE V MeanOfFour(D d, V a, V b, V meanAB, V c, V e, V meanCE) {
    const V excess = hn::And(hn::And(hn::Or(hn::Xor(a, b), hn::Xor(c, e)), hn::Xor(meanAB, meanCE)),
                             hn::Set(d, hn::TFromD<D>{1}));
    return hn::Sub(hn::AverageRound(meanAB, meanCE), excess);
}

/// A vector of samples that several operations use. Left to itself the compiler makes each of them read
/// memory again.
template <class D, class T>
HWY_INLINE hn::Vec<D> LoadOnce(D d, const T* from) {
    hn::Vec<D> v = hn::LoadU(d, from);
#if HWY_ARCH_X86 && HWY_COMPILER_GCC
    asm("" : "+v"(v.raw));
#endif
    return v;
}

/// Of a function object in a row's inner loop. Called once per vector it would load its constants each time.
#define NORVANE_INNER HWY_ATTR __attribute__((always_inline))

/// Copies less than a vector's colours. In a loop the compiler would take what it knows of the size for a
/// reason to use string instructions, which start slowly.
template <class T>
HWY_NOINLINE void CopyPart(const T* from, std::size_t count, T* to) {
    std::memcpy(to, from, count * sizeof(T));
}

/// Calls `pixels(x, own, green, other)` for each vector of the row and stores what it gives: the row's own
/// colour (red in a red row), green, and the colour of the rows beside it.
template <class D, class T, class Function>
HWY_INLINE void ForColorVectors(D d, const WindowRow<T>& row, Function&& pixels) {
    using V = hn::Vec<D>;
    constexpr std::size_t kMost = HWY_MAX_BYTES / sizeof(T);
    const std::size_t lanes = hn::Lanes(d);
    const std::size_t width = row.width;
    T* const out = row.out;
    const std::size_t before = row.pastCaches ? ColumnsBeforeLine(out, width) : 0;
    const bool stream =
        row.pastCaches && reinterpret_cast<std::uintptr_t>(out + 3 * before) % kCacheLine == 0;
    HWY_ALIGN T part[3 * kMost];
    const auto finish = [&](std::size_t x, std::size_t count) HWY_ATTR {
        if (count < lanes || x < before) {
            CopyPart(part, 3 * count, out + 3 * x);
        } else {
            for (std::size_t i = 0; i < 3 * lanes; i += lanes) {
                hn::Stream(hn::Load(d, part + i), d, out + 3 * x + i);
            }
        }
    };
    const auto all = [&](auto redRow) NORVANE_INNER {
        const auto store = [&](std::size_t x, T* to) NORVANE_INNER {
            V own, green, other;
            pixels(x, own, green, other);
            StoreThree(d, redRow ? other : own, green, redRow ? own : other, to);
        };
        std::size_t x = 0;
        if (!stream) {
            for (; x + lanes <= width; x += lanes) {
                store(x, out + 3 * x);
            }
        }
        // The last vector may cover some columns again, except that no line should be written in both ways.
        const bool overlap = !stream && width % 2 == 0 && width >= lanes;
        for (const std::size_t end : {before, width}) {
            for (; x < end; x += lanes) {
                x = overlap ? width - lanes : x;
                store(x, overlap ? out + 3 * x : part);
                if (!overlap) {
                    finish(x, std::min(lanes, end - x));
                }
            }
            x = stream ? end : x; // else no column comes before the first line
        }
    };
    if (row.phase.redRow) {
        all(std::true_type());
    } else {
        all(std::false_type());
    }
}

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
