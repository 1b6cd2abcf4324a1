#include "app/tarnwick_client_window.h"

#include <QColor>
#include <QPalette>

/**
 * The palette of the application, in colours of the style sheet.
 *
 * The sheet does not style alternate rows, scroll bars, pop-up lists and the tab bar's base line. On a light desktop
 * these would be light, under the sheet's cream text.
 */
QPalette TarnwickClientWindow::themePalette()
{
    const QColor background(u"#140704"_s);
    const QColor card(u"#2a1308"_s);
    const QColor input(u"#3b1d0f"_s);
    const QColor button(u"#5d280f"_s);
    const QColor line(u"#7d3d0c"_s);
    const QColor accent(u"#ff8f1f"_s);
    const QColor title(u"#ffb25b"_s);
    const QColor text(u"#fff4de"_s);
    const QColor disabledInputText(u"#be9a7a"_s);
    const QColor disabledButtonText(u"#d0a784"_s);

    QPalette palette;
    palette.setColor(QPalette::Window, background);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, input);
    palette.setColor(QPalette::AlternateBase, card);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, button);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, text);
    palette.setColor(QPalette::ToolTipBase, card);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, background);
#if QT_VERSION >= QT_VERSION_CHECK(6, 6, 0)
    palette.setColor(QPalette::Accent, accent);
#endif
    palette.setColor(QPalette::Link, title);
    palette.setColor(QPalette::LinkVisited, title);

    // Frames, scroll bars and base lines
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
