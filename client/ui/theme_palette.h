#pragma once

#include <QPalette>

/**
 * The application's palette, in the style sheet's own colours.
 *
 * The sheet leaves alternate rows, scroll bars, pop-up lists, placeholders and the tab bar's base line to the
 * desktop; on a light desktop they would be cream text on white.
 */
QPalette themePalette();
