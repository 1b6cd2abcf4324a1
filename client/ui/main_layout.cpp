#include "app/tarnwick_client_window.h"
#include "ui/card.h"
#include "ui/scrolling_page.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QVBoxLayout>

/// Builds the widget tree and connects the controls. Colours and fonts come from the style sheet.
void TarnwickClientWindow::buildUi()
{
    auto* central = new QWidget(this);
    auto* outer = new QVBoxLayout(central);
    outer->setContentsMargins(20, 20, 20, 20);
    outer->setSpacing(18);
    outer->addWidget(buildHeaderCard());
    outer->addWidget(buildStatusCard());
    outer->addLayout(buildLinkRow());

    auto* tabs = new QTabWidget;
    tabs->setDocumentMode(true);
    tabs->tabBar()->setAccessibleName(u"Sections"_s);
    tabs->addTab(newScrollingPage(buildListPage()), u"Your GDPS List"_s);
    QWidget* createPage = buildCreatePage();
    fillCoreCombo();
    tabs->addTab(newScrollingPage(createPage), u"Create GDPS"_s);
    outer->addWidget(tabs, 1);
    setCentralWidget(central);
    addFocusFrame();

    connectControls();
}

QFrame* TarnwickClientWindow::buildHeaderCard()
{
    QFrame* card = newCardFrame(u"PanelCard"_s);
    auto* row = new QHBoxLayout(card);
    row->setContentsMargins(22, 22, 22, 22);
    row->setSpacing(18);

    logoLabel = new QLabel(u"Tarnwick"_s);
    logoLabel->setObjectName(u"LogoPanel"_s);
    logoLabel->setFixedSize(190, 96);
    logoLabel->setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
    row->addWidget(logoLabel, 0, Qt::AlignTop);

    auto* titles = new QVBoxLayout;
    titles->setSpacing(6);
    auto* heroTitle = new QLabel(u"Tarnwick Desktop Client"_s);
    heroTitle->setObjectName(u"HeroTitle"_s);
    titles->addWidget(heroTitle);
    titles->addWidget(newMutedLabel(u"A layout-based Qt build for linking your Tarnwick account, browsing projects, "
                                    "and creating new GDPS servers without the old raylib UI drift."_s));
    titles->addStretch(1);
    row->addLayout(titles, 1);
    return card;
}

QFrame* TarnwickClientWindow::buildStatusCard()
{
    const auto [card, column] = newCard(u"StatusCard"_s, {18, 14, 18, 14});
    statusLabel = newServiceTextLabel({}, u"StatusText"_s);
    statusLabel->setWordWrap(true);
    column->addWidget(statusLabel);
    return card;
}

QBoxLayout* TarnwickClientWindow::buildLinkRow()
{
    auto* row = new QHBoxLayout;
    row->setSpacing(18);
    row->addWidget(buildLinkCard(), 1);
    row->addWidget(buildAccountCard(), 1);
    return row;
}

void TarnwickClientWindow::connectControls()
{
    connect(generateLinkButton, &QAbstractButton::clicked, this, [this] { requestLinkCode(); });
    connect(openPairingPageButton, &QAbstractButton::clicked, this, [this] { openPairingPage(); });
    connect(refreshButton, &QAbstractButton::clicked, this, [this] { refreshProjects(); });
    connect(unlinkButton, &QAbstractButton::clicked, this, [this] { unlink(); });
    connect(openProjectButton, &QAbstractButton::clicked, this, [this] { openSelectedProject(); });
    connect(createButton, &QAbstractButton::clicked, this, [this] { createInstance(); });
    connect(projectTable, &QTableWidget::itemSelectionChanged, this, [this] { updateControls(); });
}
