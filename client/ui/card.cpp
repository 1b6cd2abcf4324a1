#include "ui/card.h"

#include <QFrame>
#include <QLabel>
#include <QMargins>
#include <QVBoxLayout>

using Qt::StringLiterals::operator""_s;

QFrame* newCardFrame(const QString& objectName)
{
    auto* frame = new QFrame;
    frame->setObjectName(objectName);
    frame->setFrameShape(QFrame::NoFrame);
    return frame;
}

Card newCard(const QString& objectName, const QMargins& margins)
{
    auto* frame = newCardFrame(objectName);
    auto* column = new QVBoxLayout(frame);
    column->setContentsMargins(margins);
    return {frame, column};
}

QLabel* newCardTitle(const QString& text)
{
    auto* label = new QLabel(text);
    label->setObjectName(u"CardTitle"_s);
    return label;
}

QLabel* newMutedLabel(const QString& text)
{
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    label->setObjectName(u"MutedLabel"_s);
    return label;
}

QLabel* newServiceTextLabel(const QString& text, const QString& objectName)
{
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setText(text);
    label->setObjectName(objectName);
    return label;
}
