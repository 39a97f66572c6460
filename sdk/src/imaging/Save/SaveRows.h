#pragma once

#include "imaging/RowReader.h"
#include "imaging/Scratch.h"

#include <cstddef>

namespace Norvane::Imaging {

/// The rows of an image in the order in which the savers want them, without a copy where the image's own
/// bytes will do. T is std::uint8_t or std::uint16_t. One thread.
template <class T>
class SaveRows {
public:
    enum class Order { Bgr, Rgb };

    SaveRows(const RowReader& reader, std::size_t width, Order order);

    /// Width * SamplesPerPixel() samples, valid until the next call.
    const T* Row(std::size_t y);

private:
    const RowReader& m_reader;
    std::size_t m_width;
    bool m_swap;
    Scratch m_scratch;
    T* m_line;
};

/// Whether the image has more than 8 bits to keep.
inline bool IsDeep(const RowReader& reader) {
    return reader.Layout().info.significantBits > 8;
}

} // namespace Norvane::Imaging
