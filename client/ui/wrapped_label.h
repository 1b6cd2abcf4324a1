#pragma once

#include <QHash>
#include <QLabel>
#include <QString>

class QEvent;

/**
 * A label that wraps its text, and lays it out once for each width.
 *
 * While the window finds its sizes, the layouts ask again and again how high the text would be at a few widths.
 */
class WrappedLabel : public QLabel
{
public:
    explicit WrappedLabel(const QString& text) : QLabel(text) { setWordWrap(true); }

    int heightForWidth(int width) const override
    {
        if (measuredText != text()) {
            heights.clear();
            measuredText = text();
        }
        const auto known = heights.constFind(width);
        if (known != heights.constEnd()) {
            return *known;
        }
        const int height = QLabel::heightForWidth(width);
        heights.insert(width, height);
        return height;
    }

protected:
    /// The font or the style may have changed.
    void changeEvent(QEvent* event) override
    {
        heights.clear();
        QLabel::changeEvent(event);
    }

private:
    mutable QHash<int, int> heights;
    mutable QString measuredText;
};
