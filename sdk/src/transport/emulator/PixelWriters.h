#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Norvane::Transport::Emulator {

/// How the samples of a pixel follow one another in memory (PFNC 2.1, sections 4 and 5).
enum class SampleOrder : std::uint8_t {
    Mono,
    BayerGR,
    BayerRG,
    BayerGB,
    BayerBG,
    Rgb,
    Bgr,
    Rgba,
    Bgra,
    Uyv,    ///< 4:4:4
    Uyvy,   ///< 4:2:2
    Yuyv,   ///< 4:2:2
    Uyyvyy, ///< 4:1:1
};

/// How samples become bytes.
enum class Packing : std::uint8_t {
    Bytes,     ///< 8 bits each
    Words,     ///< little-endian 16 bits each, the value in the low bits
    LsbPacked, ///< PFNC's "p": a stream of bits, lowest first
    GevPacked, ///< GigE Vision's "Packed": two samples in three bytes, low bits shared in the middle one
    Packed565, ///< three samples in one little-endian word
};

/// One pixel format that the emulated sensor can deliver.
struct EmulatedFormat {
    std::string_view name;  ///< PFNC name
    std::uint32_t pfncCode; ///< PFNC value
    SampleOrder order;
    Packing packing;
    std::uint8_t bits; ///< of one sample

    bool IsBayer() const { return order >= SampleOrder::BayerGR && order <= SampleOrder::BayerBG; }
    bool IsMono() const { return order == SampleOrder::Mono; }
    /// The mosaic as a number of the camera's features: 1 GR, 2 RG, 3 GB, 4 BG; 0 without one.
    int ColorFilter() const {
        return IsBayer() ? static_cast<int>(order) - static_cast<int>(SampleOrder::BayerGR) + 1 : 0;
    }
    /// Pixels that share bytes, and the bytes that they share. A row starts on a byte and is a whole number
    /// of groups.
    std::uint32_t GroupPixels() const;
    std::uint32_t GroupBytes() const;
    std::size_t RowBytes(std::uint32_t width) const;
    std::uint32_t BitsPerPixel() const { return pfncCode >> 16 & 0xFF; }
};

const std::vector<EmulatedFormat>& EmulatedFormats();
/// Null when the emulator does not deliver the format.
const EmulatedFormat* FindEmulatedFormat(std::string_view name);
const EmulatedFormat* FindEmulatedFormat(std::uint32_t pfncCode);

/// The camera's brightness: one table per colour from the scene's light, in steps of 1/4096, to a 16-bit
/// sample. It holds exposure, gain, black level, white balance, gamma and the user's look-up table at once.
struct ToneCurves {
    std::array<std::array<std::uint16_t, 4096>, 3> rgb;
};

/// Writes rows in one pixel format. Not safe across threads: it keeps a scratch row.
class PixelWriter {
public:
    PixelWriter(const EmulatedFormat& format, const ToneCurves& curves)
        : m_format(format), m_curves(curves) {}

    /// Writes `count` pixels from column `x` of image row `y` into the row that starts at `row`. `light`
    /// holds linear RGB, three 16-bit values a pixel. `x` is a multiple of kColumnStep, and so is `count`
    /// except at the row's end.
    void Write(const std::uint16_t* light, std::uint32_t x, std::uint32_t y, std::uint32_t count,
               std::uint8_t* row);
    /// The same for pixels that are black (0) or white (1) whatever the curves say: the frame counter's
    /// overlay.
    void WriteBinary(const std::uint8_t* white, std::uint32_t x, std::uint32_t count, std::uint8_t* row);

    static constexpr std::uint32_t kColumnStep = 8;

private:
    void Pack(std::uint32_t x, std::uint32_t count, std::uint8_t* row);

    const EmulatedFormat& m_format;
    const ToneCurves& m_curves;
    std::vector<std::uint16_t> m_samples;
};

} // namespace Norvane::Transport::Emulator
