#pragma once

#include <QString>

class QFrame;
class QLabel;
class QMargins;
class QVBoxLayout;

// The pieces that the window's cards are made of. Each is parentless until a layout adopts it.

/// A frame whose border and background the style sheet draws by its name.
QFrame* newCardFrame(const QString& objectName);

/// A card's frame and the column of widgets in it, which the margins keep away from the border.
struct Card
{
    QFrame* frame;
    QVBoxLayout* column;
};
Card newCard(const QString& objectName, const QMargins& margins);

/// A card's heading.
QLabel* newCardTitle(const QString& text);

/// An explanatory text that wraps.
QLabel* newMutedLabel(const QString& text);

/**
 * A label for a text that comes from the service: it is shown as it was sent.
 *
 * Drawn as markup, a tag in it could open local files or keep the window busy for ever.
 */
QLabel* newServiceTextLabel(const QString& text, const QString& objectName);
