#pragma once

#include <QString>

class QFrame;
class QLabel;
class QMargins;
class QVBoxLayout;

// The parts of the window's cards. They have no parent until they are added to a layout.

/// A frame that the style sheet draws by its object name.
QFrame* newCardFrame(const QString& objectName);

/// A card's frame and its layout.
struct Card
{
    QFrame* frame;
    QVBoxLayout* column;
};
Card newCard(const QString& objectName, const QMargins& margins);

/// A card's heading.
QLabel* newCardTitle(const QString& text);

/// An explanatory text, with word wrap.
QLabel* newMutedLabel(const QString& text);

/// A label for a text of the service, as plain text: markup in it could open local files or block the window.
QLabel* newServiceTextLabel(const QString& text, const QString& objectName);
