#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QWidget>

namespace support {

/**
 * The client's window as a user sees it: controls are found by the texts on or beside them.
 *
 * Each function returns null if the window has no such control. The widgets belong to the window.
 */
class WindowView
{
public:
    explicit WindowView(const QWidget& window) : root(window) {}

    QPushButton* button(QStringView text) const { return withText<QPushButton>(text); }
    QCheckBox* checkBox(QStringView text) const { return withText<QCheckBox>(text); }
    QLabel* label(const QString& objectName) const { return root.findChild<QLabel*>(objectName); }
    QTableWidget* table() const { return root.findChild<QTableWidget*>(); }
    QTabWidget* tabs() const { return root.findChild<QTabWidget*>(); }

    /// The field of a form label, found as a screen reader finds it.
    template <typename Field>
    Field* field(QStringView labelText) const
    {
        const QLabel* label = withText<QLabel>(labelText);
        return label != nullptr ? qobject_cast<Field*>(label->buddy()) : nullptr;
    }
    QLineEdit* line(QStringView labelText) const { return field<QLineEdit>(labelText); }
    QComboBox* combo(QStringView labelText) const { return field<QComboBox>(labelText); }
    QPlainTextEdit* description() const { return root.findChild<QPlainTextEdit*>(); }

    /// The fields and the button of the creation form, in reading order.
    QList<QWidget*> creationForm() const
    {
        return {line(u"GDPS Name"),
                description(),
                line(u"Emoji"),
                line(u"Accent"),
                line(u"Tags"),
                combo(u"Core"),
                combo(u"Preset"),
                checkBox(u"Show this GDPS in the public recent list"),
                checkBox(u"Start this GDPS in maintenance mode"),
                button(u"Create GDPS")};
    }

    /// The text in the status card.
    QString status() const { return label(QStringLiteral("StatusText"))->text(); }
    /// The linked account's name, plan and limit, as shown in the card.
    QStringList account() const
    {
        QStringList texts{label(QStringLiteral("PrimaryValue"))->text()};
        const auto values = root.findChildren<QLabel*>(QStringLiteral("MutedValue"));
        for (const QLabel* value : values) {
            texts.append(value->text());
        }
        return texts;
    }
    /// The texts of one row of the project table.
    QStringList row(int number) const
    {
        QStringList texts;
        for (int column = 0; column < table()->columnCount(); ++column) {
            texts.append(table()->item(number, column)->text());
        }
        return texts;
    }

private:
    template <typename Widget>
    Widget* withText(QStringView text) const
    {
        const auto widgets = root.findChildren<Widget*>();
        for (Widget* widget : widgets) {
            if (widget->text() == text) {
                return widget;
            }
        }
        return nullptr;
    }

    const QWidget& root;
};

} // namespace support
