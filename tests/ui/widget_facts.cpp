#include "widget_facts.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QCursor>
#include <QDebug>
#include <QGridLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QList>
#include <QMargins>
#include <QMetaEnum>
#include <QMetaProperty>
#include <QSet>
#include <QShortcut>
#include <QSizePolicy>
#include <QTabBar>
#include <QVariant>

#include <functional>

using Qt::StringLiterals::operator""_s;
using Qt::StringLiterals::operator""_ba;

namespace support {

namespace {

using Facts = QList<std::pair<QString, QString>>;

QString factKeys(const QMetaEnum& keys, int value)
{
    const QByteArray text = keys.isFlag() ? keys.valueToKeys(value) : keys.valueToKey(value);
    return QString::fromLatin1(text).remove(u"|AlignLeading"_s); // the same as AlignLeft
}

template <typename Enum>
QString factKeys(Enum value)
{
    return factKeys(QMetaEnum::fromType<Enum>(), int(value));
}

QString factText(const QVariant& value)
{
    if (value.typeId() == QMetaType::QSize) {
        return u"%1 x %2"_s.arg(value.toSize().width()).arg(value.toSize().height());
    }
    if (value.typeId() == QMetaType::QCursor) {
        return factKeys(value.value<QCursor>().shape());
    }
    if (value.typeId() == QMetaType::QSizePolicy) {
        const auto policy = value.value<QSizePolicy>();
        return factKeys(policy.horizontalPolicy()) + u' ' + factKeys(policy.verticalPolicy()) +
               (policy.retainSizeWhenHidden() ? u" retained"_s : QString()) +
               (policy.horizontalStretch() + policy.verticalStretch() != 0 ? u" stretched"_s : QString());
    }
    if (value.metaType() == QMetaType::fromType<QMargins>()) {
        const auto margins = value.value<QMargins>();
        return u"%1 %2 %3 %4"_s.arg(margins.left()).arg(margins.top()).arg(margins.right()).arg(margins.bottom());
    }
    if (value.canConvert<QString>()) {
        return value.toString();
    }
    QString text;
    QDebug(&text).nospace() << value;
    return text;
}

Facts propertiesOf(const QObject* object)
{
    // A former style sheet may have changed mouse tracking and a viewport's font.
    static const QSet<QByteArray> leftOut{"objectName",
                                          "geometry",
                                          "frameGeometry",
                                          "normalGeometry",
                                          "x",
                                          "y",
                                          "pos",
                                          "frameSize",
                                          "size",
                                          "width",
                                          "height",
                                          "rect",
                                          "frameRect",
                                          "childrenRect",
                                          "childrenRegion",
                                          "minimumWidth",
                                          "minimumHeight",
                                          "maximumWidth",
                                          "maximumHeight",
                                          "sizeHint",
                                          "minimumSizeHint",
                                          "frameWidth",
                                          "visible",
                                          "enabled",
                                          "count",
                                          "spacing",
                                          "mouseTracking"};
    const bool isViewport = object->objectName() == u"qt_scrollarea_viewport"_s;
    Facts facts;
    for (int index = 0; index < object->metaObject()->propertyCount(); ++index) {
        const QMetaProperty property = object->metaObject()->property(index);
        if (leftOut.contains(property.name()) || (isViewport && property.name() == "font"_ba)) {
            continue;
        }
        const QVariant value = property.read(object);
        facts.append({QString::fromLatin1(property.name()),
                      property.isEnumType() ? factKeys(property.enumerator(), value.toInt()) : factText(value)});
    }
    return facts;
}

/// An item of a combo box or a section of a header: its text, and every other role that has a value.
QString rolesOf(const std::function<QVariant(int)>& dataOf)
{
    QStringList texts;
    for (int role = 0; role <= Qt::UserRole; ++role) {
        const QVariant value = dataOf(role);
        if (value.isValid() && role != Qt::EditRole) {
            texts.append((role == Qt::DisplayRole ? QString() : u"role %1 "_s.arg(role)) + factText(value));
        }
    }
    return texts.join(u", "_s);
}

void addFacts(Facts& facts, const QHeaderView* header)
{
    facts.append({u"movable"_s, factText(header->sectionsMovable())});
    facts.append({u"clickable"_s, factText(header->sectionsClickable())});
    for (int section = 0; section < header->count(); ++section) {
        const auto dataOf = [header, section](int role) {
            return header->model()->headerData(section, header->orientation(), role);
        };
        facts.append({u"section %1"_s.arg(section), rolesOf(dataOf) + u' ' +
                                                        factKeys(header->sectionResizeMode(section)) +
                                                        (header->isSectionHidden(section) ? u" hidden"_s : QString())});
    }
}

void addFacts(Facts& facts, const QTabBar* bar)
{
    for (int tab = 0; tab < bar->count(); ++tab) {
        facts.append({u"tab %1"_s.arg(tab),
                      bar->tabText(tab) + bar->tabToolTip(tab) + bar->tabWhatsThis(tab) + bar->accessibleTabName(tab) +
                          bar->tabData(tab).toString() + (bar->tabIcon(tab).isNull() ? QString() : u" icon"_s) +
                          (bar->isTabEnabled(tab) && bar->isTabVisible(tab) ? QString() : u" off"_s)});
    }
}

/// Facts about a widget that are not properties.
Facts otherFactsOf(const QWidget* widget)
{
    Facts facts{{u"disabled"_s, factText(widget->testAttribute(Qt::WA_ForceDisabled))},
                {u"hidden"_s, factText(widget->testAttribute(Qt::WA_WState_ExplicitShowHide) && widget->isHidden())},
                {u"no mouse"_s, factText(widget->testAttribute(Qt::WA_TransparentForMouseEvents))},
                {u"effect"_s, factText(widget->graphicsEffect() != nullptr)},
                {u"actions"_s, factText(widget->actions().size())},
                {u"shortcuts"_s, factText(widget->findChildren<QShortcut*>().size())}};
    if (const auto* line = qobject_cast<const QLineEdit*>(widget)) {
        facts.append({u"validator"_s, factText(line->validator() != nullptr)});
        facts.append({u"completer"_s, factText(line->completer() != nullptr)});
        facts.append({u"text margins"_s, factText(QVariant::fromValue(line->textMargins()))});
    } else if (const auto* combo = qobject_cast<const QComboBox*>(widget)) {
        for (int item = 0; item < combo->count(); ++item) {
            facts.append(
                {u"item %1"_s.arg(item), rolesOf([combo, item](int role) { return combo->itemData(item, role); })});
        }
    } else if (const auto* header = qobject_cast<const QHeaderView*>(widget)) {
        addFacts(facts, header);
    } else if (const auto* bar = qobject_cast<const QTabBar*>(widget)) {
        addFacts(facts, bar);
    }
    return facts;
}

/// Facts about a layout that are not properties, or not in all classes.
Facts otherFactsOf(const QLayout* layout)
{
    Facts facts{{u"disabled"_s, factText(!layout->isEnabled())}};
    if (const auto* box = qobject_cast<const QBoxLayout*>(layout)) {
        facts.append({u"spacing"_s, factText(box->spacing())});
        facts.append({u"direction"_s, factText(int(box->direction()))});
    } else if (const auto* grid = qobject_cast<const QGridLayout*>(layout)) {
        facts.append({u"horizontalSpacing"_s, factText(grid->horizontalSpacing())});
        facts.append({u"verticalSpacing"_s, factText(grid->verticalSpacing())});
        for (int row = 0; row < grid->rowCount(); ++row) {
            facts.append({u"row %1"_s.arg(row), factText(QSize(grid->rowMinimumHeight(row), grid->rowStretch(row)))});
        }
        for (int column = 0; column < grid->columnCount(); ++column) {
            facts.append({u"column %1"_s.arg(column),
                          factText(QSize(grid->columnMinimumWidth(column), grid->columnStretch(column)))});
        }
    }
    return facts;
}

template <typename Object>
QString differencesOf(const Object* found, const Object* newOne)
{
    const Facts facts = propertiesOf(found) + otherFactsOf(found);
    const Facts defaults = propertiesOf(newOne) + otherFactsOf(newOne);
    QStringList texts;
    for (const auto& fact : facts) {
        if (!defaults.contains(fact)) {
            texts.append(fact.first + u' ' + fact.second);
        }
    }
    return texts.isEmpty() ? QString() : u": "_s + texts.join(u"; "_s);
}

} // namespace

QString differences(const QWidget* found, const QWidget* newOne)
{
    return differencesOf(found, newOne);
}

QString differences(const QLayout* found, const QLayout* newOne)
{
    return differencesOf(found, newOne);
}

QString keysOf(Qt::Alignment alignment)
{
    return factKeys(alignment);
}

} // namespace support
