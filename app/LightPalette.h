#pragma once

#include <QPalette>

/// The colours of the style sheet as a palette, for what a style draws from the palette whatever the sheet
/// says: the marks of check boxes and radio buttons, scroll bars, placeholder text. Without it a dark desktop
/// draws dark marks on dark boxes inside our light panels.
QPalette lightPalette();
