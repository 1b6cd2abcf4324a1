#include "widget_tree.h"

#include "widget_facts.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QFocusFrame>
#include <QFormLayout>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSet>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTableWidget>

#include <algorithm>
#include <map>
#include <memory>
#include <string>

using Qt::StringLiterals::operator""_s;

namespace support {

namespace {

using NewWidget = std::unique_ptr<QWidget>;

template <typename Widget>
NewWidget newPlain(const QString& /*text*/)
{
    return std::make_unique<Widget>();
}

template <typename Widget>
NewWidget newWithText(const QString& text)
{
    return std::make_unique<Widget>(text);
}

NewWidget newCombo(const QString& /*text*/)
{
    auto combo = std::make_unique<QComboBox>();
    combo->view(); // creates the list
    return combo;
}

/// A new widget of the same class, constructed with the same arguments.
NewWidget newWidgetLike(const QWidget* widget)
{
    static const std::map<std::string, NewWidget (*)(const QString&)> makers{
        {"QWidget", newPlain<QWidget>},
        {"QFrame", newPlain<QFrame>},
        {"QLabel", newWithText<QLabel>},
        {"QLineEdit", newWithText<QLineEdit>},
        {"QPlainTextEdit", newPlain<QPlainTextEdit>},
        {"QPushButton", newWithText<QPushButton>},
        {"QCheckBox", newWithText<QCheckBox>},
        {"QComboBox", newCombo},
        {"QTableWidget",
         [](const QString&) -> NewWidget {
             return std::make_unique<QTableWidget>(0, 4);
         }},
        {"QTabWidget", newPlain<QTabWidget>},
        {"QScrollArea", newPlain<QScrollArea>},
        {"QFocusFrame", newPlain<QFocusFrame>},
        {"QMainWindow", newPlain<QMainWindow>}};
    return makers.at(widget->metaObject()->className())(widget->property("text").toString());
}

QLayout* newLayoutLike(const QLayout* layout, QWidget* parent)
{
    if (const auto* grid = qobject_cast<const QGridLayout*>(layout)) {
        auto* newOne = new QGridLayout(parent);
        newOne->setRowStretch(grid->rowCount() - 1, 0); // as many rows and columns
        newOne->setColumnStretch(grid->columnCount() - 1, 0);
        return newOne;
    }
    if (qobject_cast<const QFormLayout*>(layout) != nullptr) {
        return new QFormLayout(parent);
    }
    return qobject_cast<const QVBoxLayout*>(layout) != nullptr ? static_cast<QLayout*>(new QVBoxLayout(parent))
                                                               : new QHBoxLayout(parent);
}

/// Qt shows and hides these itself: scroll bars and scroll buttons, and the corner button of a table.
bool isQtsOwnAffair(const QWidget* widget)
{
    static const QStringList names{u"qt_scrollarea_hcontainer"_s, u"qt_scrollarea_vcontainer"_s, u"ScrollLeftButton"_s,
                                   u"ScrollRightButton"_s};
    static const QStringList classes{u"QTableCornerButton"_s, u"QComboBoxPrivateScroller"_s};
    return names.contains(widget->objectName()) ||
           classes.contains(QString::fromLatin1(widget->metaObject()->className()));
}

QString inWords(const QWidget* widget)
{
    QString words = QString::fromLatin1(widget->metaObject()->className());
    if (!widget->objectName().isEmpty()) {
        words += u'#' + widget->objectName();
    }
    const QString text = widget->property("text").toString();
    if (!text.isEmpty()) {
        words += u" \""_s + text + u'"';
    }
    const auto labels = widget->window()->findChildren<QLabel*>();
    for (const QLabel* label : labels) {
        if (label->buddy() == widget) {
            words += u", labelled "_s + label->text();
        }
    }
    return words;
}

/// The position of an item in its layout.
QString placeOf(const QLayout* layout, int index)
{
    QString words;
    int row = 0;
    int column = 0;
    int rows = 1;
    int columns = 1;
    if (const auto* box = qobject_cast<const QBoxLayout*>(layout)) {
        words = box->stretch(index) != 0 ? u", stretch %1"_s.arg(box->stretch(index)) : QString();
    } else if (const auto* form = qobject_cast<const QFormLayout*>(layout)) {
        QFormLayout::ItemRole role = QFormLayout::LabelRole;
        form->getItemPosition(index, &row, &role);
        words = u", row %1 "_s.arg(row) + (role == QFormLayout::LabelRole ? u"label"_s : u"field"_s);
    } else if (const auto* grid = qobject_cast<const QGridLayout*>(layout)) {
        grid->getItemPosition(index, &row, &column, &rows, &columns);
        words = u", cell %1 %2"_s.arg(row).arg(column);
    }
    if (rows != 1 || columns != 1) {
        words += u" of %1 x %2"_s.arg(rows).arg(columns);
    }
    const Qt::Alignment alignment = layout->itemAt(index)->alignment();
    return alignment == Qt::Alignment() ? words : words + u", "_s + keysOf(alignment);
}

class TreeWriter
{
public:
    QStringList lines() const { return m_lines; }

    void addWidget(QWidget* widget, const QString& place, int depth)
    {
        addWidget(widget, newWidgetLike(widget).get(), place, depth);
    }

private:
    void addLine(int depth, const QString& text) { m_lines.append(QString(qsizetype{2} * depth, u' ') + text); }

    void addWidget(QWidget* widget, QWidget* newOne, const QString& place, int depth)
    {
        addLine(depth, inWords(widget) + place + differences(widget, newOne));
        QList<QWidget*> children = widget->findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
        const auto qtsChildren = newOne->findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
        for (QWidget* qts : qtsChildren) {
            const auto same = std::find_if(children.cbegin(), children.cend(), [qts](const QWidget* child) {
                return child->metaObject() == qts->metaObject() && child->objectName() == qts->objectName();
            });
            if (same != children.cend()) {
                addQtsWidget(*same, qts, depth + 1);
                children.erase(same);
            }
        }
        if (newOne->layout() == nullptr && widget->layout() != nullptr) {
            QWidget other;
            addLayout(widget->layout(), newLayoutLike(widget->layout(), &other), {}, depth + 1);
        }
        if (const auto* stack = qobject_cast<QStackedWidget*>(widget)) {
            std::sort(children.begin(), children.end(),
                      [stack](QWidget* one, QWidget* other) { return stack->indexOf(one) < stack->indexOf(other); });
        }
        for (QWidget* child : children) {
            if (!m_inLayouts.contains(child)) {
                addWidget(child, {}, depth + 1);
            }
        }
    }

    /// A child widget that Qt itself creates; left out if there is nothing to say about it.
    void addQtsWidget(QWidget* widget, QWidget* newOne, int depth)
    {
        if (isQtsOwnAffair(widget)) {
            return;
        }
        const qsizetype before = m_lines.size();
        addWidget(widget, newOne, {}, depth);
        if (m_lines.size() == before + 1 && differences(widget, newOne).isEmpty()) {
            m_lines.removeLast();
        }
    }

    void addLayout(QLayout* layout, QLayout* newOne, const QString& place, int depth)
    {
        addLine(depth, QString::fromLatin1(layout->metaObject()->className()) + place + differences(layout, newOne));
        for (int index = 0; index < layout->count(); ++index) {
            QLayoutItem* item = layout->itemAt(index);
            const QString itemPlace = placeOf(layout, index);
            if (item->widget() != nullptr) {
                m_inLayouts.insert(item->widget());
                addWidget(item->widget(), itemPlace, depth + 1);
            } else if (item->layout() != nullptr) {
                QWidget other;
                QVBoxLayout outer(&other);
                QLayout* nested = newLayoutLike(item->layout(), nullptr);
                outer.addLayout(nested);
                addLayout(item->layout(), nested, itemPlace, depth + 1);
            } else {
                addLine(depth + 1, u"space"_s + itemPlace);
            }
        }
    }

    QStringList m_lines;
    QSet<const QWidget*> m_inLayouts;
};

} // namespace

QStringList widgetTree(QWidget* window)
{
    TreeWriter writer;
    writer.addWidget(window, {}, 0);
    return writer.lines();
}

} // namespace support
