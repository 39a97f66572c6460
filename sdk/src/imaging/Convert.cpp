#include "imaging/Convert.h"

#include "imaging/ColorRows.h"
#include "imaging/Demosaic/Demosaic.h"
#include "imaging/Pack.h"
#include "imaging/RowPool.h"
#include "imaging/RowReader.h"
#include "imaging/Scratch.h"

#include "norvane/Exception.h"

#include <hwy/cache_control.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace Norvane::Imaging {
namespace {

/// Rows that a thread takes at least where each costs a few microseconds.
constexpr std::size_t kPlainGrain = 64;

/// From this size on a target's beginning has left the caches again, or what else is needed has, when its end
/// is written; its lines are then written without being read first. 5 Mpixels of 8-bit colour stay below.
constexpr std::size_t kStreamedBytes = std::size_t{24} << 20;

[[noreturn]] void RefusePair(const PixelLayout& from, const PixelLayout& to, const char* why) {
    throw Exception(Error::ImageConversion, "Image conversion: " + std::string(from.info.name) + " to " +
                                                std::string(to.info.name) + " is not possible, " + why);
}

BayerPhase ExchangeRedBlue(BayerPhase phase) {
    switch (phase) {
    case BayerPhase::GR:
        return BayerPhase::GB;
    case BayerPhase::RG:
        return BayerPhase::BG;
    case BayerPhase::GB:
        return BayerPhase::GR;
    case BayerPhase::BG:
        return BayerPhase::RG;
    case BayerPhase::None:
        break;
    }
    return BayerPhase::None;
}

/// Takes rows of the working shape (one sample, or blue, green, red; red, green, blue for an RGB target) and
/// brings them into the target: in place where the shapes agree, else through a row of scratch memory. One
/// object serves one band.
template <class T>
class TargetRows final : public ColorSink<T> {
public:
    TargetRows(const PixelTarget& target, const PixelLayout& layout, bool fromColor, Scratch& scratch)
        : m_target(target), m_layout(layout), m_makeGrey(fromColor && layout.components == Components::One),
          m_addAlpha(layout.components == Components::Rgba || layout.components == Components::Bgra) {
        const bool sameDepth = layout.info.significantBits == 8 * sizeof(T);
        const bool aligned =
            reinterpret_cast<std::uintptr_t>(target.data) % sizeof(T) == 0 && target.stride % sizeof(T) == 0;
        if (m_makeGrey || m_addAlpha || !sameDepth || !aligned) {
            m_row = scratch.Take<T>(4 * std::size_t{target.width});
            m_shaped = scratch.Take<T>(4 * std::size_t{target.width});
        } else {
            m_pastCaches =
                target.height * ComponentsPerRow(layout, target.width) * sizeof(T) >= kStreamedBytes;
        }
    }

    ~TargetRows() {
        if (m_pastCaches) {
            hwy::FlushStream(); // before anybody hears that the band is done
        }
    }

    T* BeginRow(std::size_t y) override { return m_row ? m_row : reinterpret_cast<T*>(RowBytes(y)); }

    /// Whether the rows are written where they belong, one behind the other.
    bool AreJoined() const {
        return !m_row && m_target.stride == ComponentsPerRow(m_layout, m_target.width) * sizeof(T);
    }

    bool PastCaches() const override { return m_pastCaches; }

    void EndRow(std::size_t y) override {
        if (!m_row) {
            return;
        }
        T* shaped = m_row;
        if (m_makeGrey) {
            BgrToGrey(m_row, m_target.width, m_shaped);
            shaped = m_shaped;
        } else if (m_addAlpha) {
            AppendAlpha(m_row, m_target.width, m_shaped);
            shaped = m_shaped;
        }
        const std::size_t count = ComponentsPerRow(m_layout, m_target.width);
        const unsigned drop = 8 * sizeof(T) - m_layout.info.significantBits;
        if (drop != 0) {
            std::transform(shaped, shaped + count, shaped, [drop](T v) { return static_cast<T>(v >> drop); });
        }
        std::memcpy(RowBytes(y), shaped, count * sizeof(T));
    }

private:
    std::uint8_t* RowBytes(std::size_t y) const { return m_target.data + y * m_target.stride; }

    const PixelTarget& m_target;
    const PixelLayout& m_layout;
    bool m_makeGrey, m_addAlpha, m_pastCaches = false;
    T* m_row = nullptr;
    T* m_shaped = nullptr;
};

template <class T>
struct ReaderSource final : MosaicSource<T> {
    explicit ReaderSource(const RowReader& r) : reader(r) {}
    void ReadRow(std::size_t y, T* line) const override { reader.Read(y, line); }
    const T* DirectRow(std::size_t y) const override { return reader.template Direct<T>(y); }
    const RowReader& reader;
};

template <class T>
void ConvertDepth(const RowReader& reader, const PixelTarget& target, const PixelLayout& to,
                  ColorProcessingAlgorithm algorithm) {
    const PixelLayout& from = reader.Layout();
    const bool redFirst = to.components == Components::Rgb || to.components == Components::Rgba;
    const std::size_t width = target.width;

    const bool toSingle = to.components == Components::One;
    const bool mosaic = from.info.bayer != BayerPhase::None;
    if (toSingle && !reader.IsColor() &&
        (!mosaic || to.info.bayer == from.info.bayer || algorithm == NO_COLOR_PROCESSING)) {
        ForRows(target.height, kPlainGrain, [&](std::size_t first, std::size_t last) {
            Scratch scratch;
            TargetRows<T> rows(target, to, false, scratch);
            if (reader.RowsAreJoined() && rows.AreJoined()) {
                reader.ReadJoined(first, last - first, rows.BeginRow(first));
                return;
            }
            for (std::size_t y = first; y < last; ++y) {
                reader.Read(y, rows.BeginRow(y));
                rows.EndRow(y);
            }
        });
        return;
    }
    if (mosaic) {
        const MosaicShape shape{width, target.height,
                                redFirst ? ExchangeRedBlue(from.info.bayer) : from.info.bayer};
        const ReaderSource<T> mosaicRows(reader);
        ForRows(target.height, kDemosaicGrain, [&](std::size_t first, std::size_t last) {
            Scratch scratch;
            TargetRows<T> rows(target, to, true, scratch);
            DemosaicRows(algorithm, shape, mosaicRows, rows, first, last);
        });
        return;
    }
    ForRows(target.height, kPlainGrain, [&](std::size_t first, std::size_t last) {
        Scratch scratch;
        TargetRows<T> rows(target, to, true, scratch);
        T* line = scratch.Take<T>(3 * width);
        const auto rowAt = [&](std::size_t y) {
            if (const T* direct = reader.template Direct<T>(y)) {
                return direct;
            }
            reader.Read(y, line);
            return static_cast<const T*>(line);
        };
        for (std::size_t y = first; y < last; ++y) {
            T* out = rows.BeginRow(y);
            if (!reader.IsColor()) {
                GreyToBgr(rowAt(y), width, out);
            } else if (redFirst) {
                SwapRedBlue(rowAt(y), width, out);
            } else {
                reader.Read(y, out);
            }
            rows.EndRow(y);
        }
    });
}

void CopyRows(const PixelView& source, const PixelLayout& layout, const PixelTarget& target) {
    const std::size_t bytes = RowBytes(layout, source.width);
    ForRows(std::size_t{source.height} * PlaneCount(layout), kPlainGrain,
            [&](std::size_t first, std::size_t last) {
                for (std::size_t y = first; y < last; ++y) {
                    std::memcpy(target.data + y * target.stride, source.data + y * source.stride, bytes);
                }
            });
}

/// Copies an image of a bit packing of which at least one side has rows that follow one another without
/// regard to bytes.
void CopyBits(const RowReader& reader, const PixelView& source, const PixelTarget& target) {
    const PixelLayout& layout = reader.Layout();
    if (source.stride == target.stride) {
        std::memcpy(target.data, source.data,
                    static_cast<std::size_t>(BytesNeeded(layout, source.width, source.height, 0)));
        return;
    }
    const std::size_t perRow = ComponentsPerRow(layout, source.width);
    const std::size_t rows = target.stride == 0 ? source.height : 1; // that are packed as one
    std::vector<std::uint16_t> numbers(perRow * rows);
    for (std::size_t y = 0; y < source.height; y += rows) {
        for (std::size_t row = 0; row < rows; ++row) {
            reader.ReadNumbers(y + row, numbers.data() + row * perRow);
        }
        PackNumbers(numbers.data(), numbers.size(), layout.packing, layout.info.significantBits,
                    target.data + y * target.stride);
    }
}

} // namespace

bool IsConversionTarget(PixelFormatEnums format) noexcept {
    const PixelLayout* layout = FindLayout(format);
    return layout && layout->components <= Components::Bgra &&
           (layout->packing == Packing::Byte || layout->packing == Packing::Word);
}

void ConvertPixels(const PixelView& source, const PixelTarget& target, ColorProcessingAlgorithm algorithm) {
    const RowReader reader(source, "Image conversion");
    const PixelLayout& from = reader.Layout();
    const PixelLayout* to = FindLayout(target.format);
    if (!to) {
        throw Exception(Error::ImageConversion, "Image conversion: the target's pixel format (number " +
                                                    std::to_string(target.format) + ") is not known");
    }
    if (!target.data || target.width != source.width || target.height != source.height) {
        throw Exception(Error::ImageConversion,
                        "Image conversion: the target is " + std::to_string(target.width) + " x " +
                            std::to_string(target.height) + (target.data ? "" : " without memory") +
                            ", the image " + std::to_string(source.width) + " x " +
                            std::to_string(source.height));
    }
    if (target.format == source.format) {
        if (source.stride != 0 && target.stride != 0) {
            CopyRows(source, from, target);
        } else {
            CopyBits(reader, source, target);
        }
        return;
    }
    if (!IsConversionTarget(target.format)) {
        RefusePair(from, *to, "the library writes unpacked mono, Bayer, RGB and BGR only");
    }
    if (to->info.bayer != BayerPhase::None && from.info.bayer != to->info.bayer) {
        RefusePair(from, *to, "a mosaic comes only from a mosaic of the same colour order");
    }
    if (to->packing == Packing::Byte) {
        ConvertDepth<std::uint8_t>(reader, target, *to, algorithm);
    } else {
        ConvertDepth<std::uint16_t>(reader, target, *to, algorithm);
    }
}

} // namespace Norvane::Imaging
