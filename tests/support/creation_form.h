#pragma once

#include "window_view.h"

#include <QString>
#include <QStringList>

namespace support {

/// The contents of the creation form. The defaults are those of a new form without cores.
struct CreationForm
{
    QString name;
    QString description;
    QString emoji = QStringLiteral("🔥");
    QString accent = QStringLiteral("#ff8f1f");
    QString tags;
    QString core = QStringLiteral("No cores available");
    QString preset = QStringLiteral("balanced");
    bool isListed = true;
    bool isInMaintenance = false;

    /// One line for each field.
    QStringList words() const
    {
        return {QStringLiteral("name in the form: ") + name,
                QStringLiteral("description: ") + description,
                QStringLiteral("emoji: ") + emoji,
                QStringLiteral("accent: ") + accent,
                QStringLiteral("tags: ") + tags,
                QStringLiteral("core: ") + core,
                QStringLiteral("preset: ") + preset,
                isListed ? QStringLiteral("listed") : QStringLiteral("not listed"),
                isInMaintenance ? QStringLiteral("in maintenance") : QStringLiteral("not in maintenance")};
    }
};

inline CreationForm creationFormIn(const WindowView& view)
{
    return {.name = view.line(u"GDPS Name")->text(),
            .description = view.description()->toPlainText(),
            .emoji = view.line(u"Emoji")->text(),
            .accent = view.line(u"Accent")->text(),
            .tags = view.line(u"Tags")->text(),
            .core = view.combo(u"Core")->currentText(),
            .preset = view.combo(u"Preset")->currentText(),
            .isListed = view.checkBox(u"Show this GDPS in the public recent list")->isChecked(),
            .isInMaintenance = view.checkBox(u"Start this GDPS in maintenance mode")->isChecked()};
}

/// Changes every field from its default; selects the last core.
inline void fillCreationForm(const WindowView& view)
{
    view.line(u"GDPS Name")->setText(QStringLiteral("Neon Burst"));
    view.description()->setPlainText(QStringLiteral("Bright\nand loud"));
    view.line(u"Emoji")->setText(QStringLiteral("⭐"));
    view.line(u"Accent")->setText(QStringLiteral("#123456"));
    view.line(u"Tags")->setText(QStringLiteral("stars, cube"));
    view.combo(u"Core")->setCurrentIndex(view.combo(u"Core")->count() - 1);
    view.combo(u"Preset")->setCurrentText(QStringLiteral("hardcore"));
    view.checkBox(u"Show this GDPS in the public recent list")->setChecked(false);
    view.checkBox(u"Start this GDPS in maintenance mode")->setChecked(true);
}

} // namespace support
