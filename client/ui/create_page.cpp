#include "app/tarnwick_client_window.h"
#include "ui/card.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextDocument>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace {

constexpr QLatin1StringView formPlatformName()
{
#if defined(Q_OS_MACOS)
    return "macOS"_L1;
#elif defined(Q_OS_WIN)
    return "Windows"_L1;
#elif defined(Q_OS_LINUX)
    return "Linux"_L1;
#else
    return "Unix"_L1;
#endif
}

/**
 * A combo box that takes the wheel only while it has the focus.
 *
 * Otherwise scrolling the page would change the choice when the combo box comes under the pointer. Its width does not
 * depend on its items, whose texts come from the service.
 */
class FormComboBox : public QComboBox
{
public:
    FormComboBox()
    {
        setFocusPolicy(Qt::StrongFocus);
        setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    }

protected:
    void wheelEvent(QWheelEvent* event) override
    {
        if (hasFocus()) {
            QComboBox::wheelEvent(event);
        } else {
            event->ignore();
        }
    }
};

/// A label that is also the field's name for screen readers.
QLabel* newFormLabel(const QString& text, QWidget* field)
{
    auto* label = new QLabel(text);
    label->setBuddy(field);
    return label;
}

/// The same for a combo box. Its list has the focus while it is open, and gets the same name.
QLabel* newFormComboLabel(const QString& text, QComboBox* combo)
{
    combo->view()->setAccessibleName(text);
    return newFormLabel(text, combo);
}

} // namespace

QWidget* TarnwickClientWindow::buildCreatePage()
{
    auto* page = new QWidget;
    auto* pageColumn = new QVBoxLayout(page);
    pageColumn->setContentsMargins(0, 8, 0, 0);
    pageColumn->setSpacing(14);

    const auto [card, column] = newCard(u"PanelCard"_s, {22, 20, 22, 22});
    column->setSpacing(12);
    column->addWidget(newCardTitle(u"Create a New GDPS"_s));
    column->addWidget(newMutedLabel(u"This Qt layout replaces the old fixed-position client, so everything reflows "
                                    "correctly when the window moves or resizes."_s));
    column->addLayout(buildCreateForm());

    auto* checks = new QVBoxLayout;
    checks->setSpacing(8);
    publicListingCheck = new QCheckBox(u"Show this GDPS in the public recent list"_s);
    publicListingCheck->setChecked(true);
    checks->addWidget(publicListingCheck);
    maintenanceCheck = new QCheckBox(u"Start this GDPS in maintenance mode"_s);
    checks->addWidget(maintenanceCheck);
    column->addLayout(checks);

    createButton = new QPushButton(u"Create GDPS"_s);
    column->addWidget(createButton, 0, Qt::AlignLeft);
    auto* buildLabel = new QLabel(u"Current desktop build: "_s + formPlatformName());
    buildLabel->setObjectName(u"MutedLabel"_s);
    column->addWidget(buildLabel);
    column->addStretch(1);

    pageColumn->addWidget(card, 1);
    return page;
}

QGridLayout* TarnwickClientWindow::buildCreateForm()
{
    buildCreateFields();
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(12);
    grid->setVerticalSpacing(10);
    grid->addWidget(newFormLabel(u"GDPS Name"_s, gdpsNameEdit), 0, 0);
    grid->addWidget(gdpsNameEdit, 1, 0, 1, 2);
    grid->addWidget(newFormLabel(u"Description"_s, descriptionEdit), 2, 0);
    grid->addWidget(descriptionEdit, 3, 0, 1, 2);
    grid->addWidget(newFormLabel(u"Emoji"_s, emojiEdit), 4, 0);
    grid->addWidget(newFormLabel(u"Accent"_s, accentEdit), 4, 1);
    grid->addWidget(emojiEdit, 5, 0);
    grid->addWidget(accentEdit, 5, 1);
    grid->addWidget(newFormLabel(u"Tags"_s, tagsEdit), 6, 0, 1, 2);
    grid->addWidget(tagsEdit, 7, 0, 1, 2);
    grid->addWidget(newFormComboLabel(u"Core"_s, coreCombo), 8, 0);
    grid->addWidget(newFormComboLabel(u"Preset"_s, presetCombo), 8, 1);
    grid->addWidget(coreCombo, 9, 0);
    grid->addWidget(presetCombo, 9, 1);
    return grid;
}

/// Creates the fields of the form with their initial contents.
void TarnwickClientWindow::buildCreateFields()
{
    gdpsNameEdit = new QLineEdit;
    gdpsNameEdit->setPlaceholderText(u"Example: Neon Burst GDPS"_s);
    gdpsNameEdit->setMaxLength(80);

    descriptionEdit = new QPlainTextEdit;
    descriptionEdit->setPlaceholderText(u"Short description"_s);
    descriptionEdit->document()->setMaximumBlockCount(6);
    descriptionEdit->setFixedHeight(84);
    // Otherwise keyboard users could not leave the field.
    descriptionEdit->setTabChangesFocus(true);

    emojiEdit = new QLineEdit;
    emojiEdit->setMaxLength(6);
    emojiEdit->setText(u"🔥"_s);
    accentEdit = new QLineEdit;
    accentEdit->setMaxLength(16);
    accentEdit->setText(u"#ff8f1f"_s);
    tagsEdit = new QLineEdit;
    tagsEdit->setPlaceholderText(u"hardcore, stars, cube"_s);
    tagsEdit->setMaxLength(140);

    coreCombo = new FormComboBox;
    presetCombo = new FormComboBox;
    presetCombo->addItems({u"balanced"_s, u"casual"_s, u"hardcore"_s});
}
