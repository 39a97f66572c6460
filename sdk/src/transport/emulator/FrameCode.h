#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

/// The machine-readable frame counter that the emulator draws into the top-left corner of every image of its
/// scene, and its decoder, so that a test can tell from pixels alone which frame it holds.
///
/// The strip is a row of 44 cells, each kCell x kCell pixels, black (0) or white (1), from the image's left
/// edge; where the image is narrower, the row breaks and continues below. In order: the guard 1 0 1 0; the
/// frame number's 32 bits, highest first; their CRC-8 (polynomial x^8+x^2+x+1, start value 0xFF), highest bit
/// first. Exposure, gain, mirroring and the region of interest leave the strip alone. Cells are large enough
/// to survive demosaicing and lossy video.
namespace Norvane::Transport::Emulator::FrameCode {

inline constexpr std::uint32_t kCell = 8; ///< pixels
inline constexpr std::uint32_t kCells = 44;

/// How the strip lies in an image of this width; both 0 where the image is too narrow.
struct Layout {
    std::uint32_t columns, rows; ///< cells
};
constexpr Layout LayoutFor(std::uint32_t width) {
    const std::uint32_t columns = std::min(kCells, width / kCell);
    return {columns, columns == 0 ? 0 : (kCells + columns - 1) / columns};
}

constexpr std::uint8_t Crc8(std::uint32_t number) {
    std::uint8_t crc = 0xFF;
    for (int shift = 24; shift >= 0; shift -= 8) {
        crc = static_cast<std::uint8_t>(crc ^ (number >> shift));
        for (int bit = 0; bit < 8; ++bit) {
            crc = static_cast<std::uint8_t>(crc & 0x80 ? crc << 1 ^ 0x07 : crc << 1);
        }
    }
    return crc;
}

/// The cells of a frame number, one bit each.
constexpr std::array<bool, kCells> Encode(std::uint32_t number) {
    std::array<bool, kCells> cells{true, false, true, false};
    for (std::uint32_t i = 0; i < 32; ++i) {
        cells[4 + i] = number >> (31 - i) & 1;
    }
    const std::uint8_t crc = Crc8(number);
    for (std::uint32_t i = 0; i < 8; ++i) {
        cells[36 + i] = crc >> (7 - i) & 1;
    }
    return cells;
}

/// Reads the strip of an image. `brightness(x, y)` gives a pixel's brightness on any scale that reaches from
/// `black` to `white`. Nothing when there is no strip or its check sum is wrong.
template <class Brightness>
std::optional<std::uint32_t> Decode(std::uint32_t width, std::uint32_t height, const Brightness& brightness,
                                    double black = 0.0, double white = 255.0) {
    const Layout layout = LayoutFor(width);
    if (layout.columns == 0 || layout.rows * kCell > height) {
        return std::nullopt;
    }
    std::uint64_t bits = 0;
    for (std::uint32_t i = 0; i < kCells; ++i) {
        const std::uint32_t left = i % layout.columns * kCell, top = i / layout.columns * kCell;
        double sum = 0.0;
        for (std::uint32_t y = 2; y < kCell - 2; ++y) {
            for (std::uint32_t x = 2; x < kCell - 2; ++x) {
                sum += static_cast<double>(brightness(left + x, top + y));
            }
        }
        bits = bits << 1 | (sum / ((kCell - 4) * (kCell - 4)) > (black + white) / 2 ? 1U : 0U);
    }
    const auto number = static_cast<std::uint32_t>(bits >> 8);
    if (bits >> 40 != 0b1010 || (bits & 0xFF) != Crc8(number)) {
        return std::nullopt;
    }
    return number;
}

} // namespace Norvane::Transport::Emulator::FrameCode
