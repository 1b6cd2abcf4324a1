#include "api/service_host.h"
#include "app/tarnwick_client_window.h"
#include "ui/card.h"

#include <QFormLayout>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

/// A label that is cut off when its text is too long, instead of making its card wider than the link card.
QLabel* newAccountLabel(const QString& text, const QString& objectName)
{
    QLabel* label = newServiceTextLabel(text, objectName);
    label->setSizePolicy(QSizePolicy::Ignored, label->sizePolicy().verticalPolicy());
    return label;
}

} // namespace

QFrame* TarnwickClientWindow::buildLinkCard()
{
    const auto [card, column] = newCard(u"PanelCard"_s, {22, 20, 22, 22});
    column->setSpacing(12);
    column->addWidget(newCardTitle(u"Link Tarnwick Account"_s));
    column->addWidget(
        newMutedLabel(u"Generate a one-time link code, then approve it at "_s + publicHost() + u"/link/pc."_s));

    auto* form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignLeft);
    form->setFormAlignment(Qt::AlignTop);
    form->setSpacing(10);
    originEdit = new QLineEdit(state.origin);
    originEdit->setPlaceholderText(defaultBaseUrl());
    form->addRow(u"Tarnwick URL"_s, originEdit);
    linkCodeEdit = new QLineEdit;
    linkCodeEdit->setPlaceholderText(u"TWPC-ABC123"_s);
    linkCodeEdit->setReadOnly(true);
    form->addRow(u"Link code"_s, linkCodeEdit);
    column->addLayout(form);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(10);
    generateLinkButton = new QPushButton(u"Generate Link Code"_s);
    buttons->addWidget(generateLinkButton);
    openPairingPageButton = new QPushButton(u"Open Public Pairing Page"_s);
    buttons->addWidget(openPairingPageButton);
    column->addLayout(buttons);
    column->addStretch(1);
    return card;
}

QFrame* TarnwickClientWindow::buildAccountCard()
{
    const auto [card, column] = newCard(u"PanelCard"_s, {22, 20, 22, 22});
    column->setSpacing(12);
    column->addWidget(newCardTitle(u"Linked Account"_s));
    column->addWidget(newMutedLabel(u"Once linked, the desktop client can load your account plan, available cores, "
                                    "and current GDPS list."_s));

    accountNameLabel = newAccountLabel(accountNameText, u"PrimaryValue"_s);
    column->addWidget(accountNameLabel);
    planLabel = newAccountLabel(planText, u"MutedValue"_s);
    column->addWidget(planLabel);
    limitLabel = newAccountLabel(limitText, u"MutedValue"_s);
    column->addWidget(limitLabel);
    column->addStretch(1);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(10);
    refreshButton = new QPushButton(u"Refresh"_s);
    buttons->addWidget(refreshButton);
    unlinkButton = new QPushButton(u"Unlink"_s);
    buttons->addWidget(unlinkButton);
    column->addLayout(buttons);
    return card;
}
