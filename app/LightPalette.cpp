#include "LightPalette.h"

QPalette lightPalette() {
    const QColor ink(0x22, 0x32, 0x4a);
    const QColor pale(0x98, 0xa3, 0xb3);
    // Shades between light and shadow are derived from the button's colour.
    QPalette palette(QColor(0xe6, 0xea, 0xf1), QColor(0xf2, 0xf4, 0xf8));
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, ink);
        palette.setColor(QPalette::Disabled, role, pale);
    }
    palette.setColor(QPalette::PlaceholderText, QColor(0x75, 0x80, 0x90));
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::AlternateBase, QColor(0xf2, 0xf4, 0xf8));
    palette.setColor(QPalette::ToolTipBase, QColor(0xff, 0xfd, 0xf2));
    palette.setColor(QPalette::Highlight, QColor(0x2f, 0x7f, 0xd6));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x1f, 0x63, 0xb0));
    palette.setColor(QPalette::LinkVisited, QColor(0x5b, 0x4b, 0x93));
    return palette;
}
