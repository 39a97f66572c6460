#include "imaging/RowReader.h"

#include "imaging/ColorRows.h"
#include "imaging/LumaChroma.h"
#include "imaging/Scratch.h"
#include "imaging/Unpack.h"

namespace Norvane::Imaging {
namespace {

PackedSamples SamplesOfRow(const PixelView& view, const PixelLayout& layout, std::size_t row) {
    PackedSamples samples{view.data, view.data + view.size, 0, layout.packing, layout.info.significantBits};
    if (view.stride != 0) {
        samples.bytes += row * view.stride;
    } else {
        const bool gev = layout.packing == Packing::Gev10 || layout.packing == Packing::Gev12;
        samples.bitOffset = row * ComponentsPerRow(layout, view.width) * (gev ? 12 : samples.bits);
    }
    return samples;
}

bool IsLumaChroma(Components components) {
    return components >= Components::YCbCr;
}

} // namespace

RowReader::RowReader(const PixelView& view, const char* purpose)
    : m_view(view), m_layout(&RequireReadable(view, purpose)) {}

template <class T>
const T* RowReader::Direct(std::size_t y) const noexcept {
    const bool sameDepth = sizeof(T) == 1
                               ? m_layout->packing == Packing::Byte
                               : m_layout->packing == Packing::Word && m_layout->info.significantBits == 16;
    const std::uint8_t* row = m_view.data + y * m_view.stride;
    if (!sameDepth || (IsColor() && m_layout->components != Components::Bgr) ||
        reinterpret_cast<std::uintptr_t>(m_view.data) % alignof(T) != 0 || m_view.stride % alignof(T) != 0) {
        return nullptr;
    }
    return reinterpret_cast<const T*>(row);
}

template <class T>
void RowReader::Read(std::size_t y, T* out) const {
    if (IsColor()) {
        ReadColor(y, out);
    } else {
        UnpackFullScale(SamplesOfRow(m_view, *m_layout, y), m_view.width, out);
    }
}

void RowReader::ReadNumbers(std::size_t y, std::uint16_t* out) const {
    UnpackNumbers(SamplesOfRow(m_view, *m_layout, y), ComponentsPerRow(*m_layout, m_view.width), out);
}

template <class T>
void RowReader::ReadColor(std::size_t y, T* out) const {
    const std::size_t width = m_view.width;
    const std::size_t count = ComponentsPerRow(*m_layout, width);
    Scratch scratch;
    if (PlaneCount(*m_layout) == 3) {
        T* plane = scratch.Take<T>(width);
        for (std::size_t c = 0; c < 3; ++c) {
            UnpackFullScale(SamplesOfRow(m_view, *m_layout, c * m_view.height + y), width, plane);
            for (std::size_t x = 0; x < width; ++x) {
                out[3 * x + 2 - c] = plane[x];
            }
        }
        return;
    }
    const PackedSamples samples = SamplesOfRow(m_view, *m_layout, y);
    if (IsLumaChroma(m_layout->components)) {
        if constexpr (sizeof(T) == 1) {
            if (samples.bits == 8) {
                auto* bytes = scratch.Take<std::uint8_t>(count);
                UnpackFullScale(samples, count, bytes);
                LumaChromaToBgr(bytes, width, m_layout->components, m_layout->matrix, out);
                return;
            }
        }
        auto* numbers = scratch.Take<std::uint16_t>(count);
        UnpackFullScale(samples, count, numbers);
        LumaChromaToBgr(numbers, width, m_layout->components, m_layout->matrix, samples.bits, out);
        return;
    }
    T* row = out;
    if (count != 3 * width) {
        row = scratch.Take<T>(count);
        UnpackFullScale(samples, count, row);
        DropAlpha(row, width, out);
    } else {
        UnpackFullScale(samples, count, out);
    }
    if (m_layout->components == Components::Rgb || m_layout->components == Components::Rgba) {
        SwapRedBlue(out, width, out);
    }
}

bool RowReader::RowsAreJoined() const noexcept {
    const bool gev = m_layout->packing == Packing::Gev10 || m_layout->packing == Packing::Gev12;
    const std::size_t samples = ComponentsPerRow(*m_layout, m_view.width);
    return !IsColor() && (m_view.stride == 0 || (m_view.stride == RowBytes(*m_layout, m_view.width) &&
                                                 samples % (gev ? 2 : 8) == 0));
}

template <class T>
void RowReader::ReadJoined(std::size_t y, std::size_t rows, T* out) const {
    UnpackFullScale(SamplesOfRow(m_view, *m_layout, y), rows * m_view.width, out);
}

template const std::uint8_t* RowReader::Direct(std::size_t) const noexcept;
template const std::uint16_t* RowReader::Direct(std::size_t) const noexcept;
template void RowReader::ReadJoined(std::size_t, std::size_t, std::uint8_t*) const;
template void RowReader::ReadJoined(std::size_t, std::size_t, std::uint16_t*) const;
template void RowReader::Read(std::size_t, std::uint8_t*) const;
template void RowReader::Read(std::size_t, std::uint16_t*) const;

} // namespace Norvane::Imaging
