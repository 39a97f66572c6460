#pragma once

namespace Norvane::Transport::Emulator {

/// Letters of 5 x 7 dots: capitals, digits and common signs of ASCII. Small letters show as capitals, what is
/// missing as a box.
class BitmapFont {
public:
    static constexpr int kWidth = 5, kHeight = 7, kAdvance = 6; ///< dots
    /// Whether the dot of a character is set; column 0 is left, row 0 is top.
    static bool Dot(char character, int column, int row);
};

} // namespace Norvane::Transport::Emulator
