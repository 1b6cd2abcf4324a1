#include "ui/theme_palette.h"

#include <QColor>

QPalette themePalette()
{
    const QColor background(0x14, 0x07, 0x04);
    const QColor card(0x2a, 0x13, 0x08);
    const QColor input(0x3b, 0x1d, 0x0f);
    const QColor button(0x5d, 0x28, 0x0f);
    const QColor line(0x7d, 0x3d, 0x0c);
    const QColor accent(0xff, 0x8f, 0x1f);
    const QColor title(0xff, 0xb2, 0x5b);
    const QColor text(0xff, 0xf4, 0xde);
    const QColor disabledInputText(0xbe, 0x9a, 0x7a);
    const QColor disabledButtonText(0xd0, 0xa7, 0x84);

    QPalette palette;
    palette.setColor(QPalette::Window, background);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, input);
    palette.setColor(QPalette::AlternateBase, card);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::PlaceholderText, disabledInputText);
    palette.setColor(QPalette::Button, button);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, text);
    palette.setColor(QPalette::ToolTipBase, card);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, background);
    palette.setColor(QPalette::Link, title);
    palette.setColor(QPalette::LinkVisited, title);

    // Frames, scroll bars and base lines are drawn in these
    palette.setColor(QPalette::Light, line);
    palette.setColor(QPalette::Midlight, button);
    palette.setColor(QPalette::Mid, line);
    palette.setColor(QPalette::Dark, line);
    palette.setColor(QPalette::Shadow, line);

    palette.setColor(QPalette::Disabled, QPalette::WindowText, disabledInputText);
    palette.setColor(QPalette::Disabled, QPalette::Text, disabledInputText);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, disabledButtonText);
    return palette;
}
