#include "app/tarnwick_client_window.h"

#include "api/service_host.h"
#include "ui/theme_palette.h"
#include "ui/theme_style_sheet.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QNetworkAccessManager>
#include <QTimer>

/// The client's start-up. Nothing in it stops early: whatever is missing or broken gets its default.
TarnwickClientWindow::TarnwickClientWindow()
    : accountNameText(u"Not linked yet"_s),
      planText(u"Plan: -"_s),
      limitText(u"Limit: -"_s)
{
    setWindowTitle(u"Tarnwick Client"_s);
    resize(1220, 860);
    setMinimumSize(1060, 760);

    loadState();
    if (state.origin.isEmpty()) {
        state.origin = defaultBaseUrl();
    }
    if (state.device_id.isEmpty()) {
        state.device_id = generateDeviceId();
    }

    networkManager = new QNetworkAccessManager(this);
    pollTimer = new QTimer(this);
    pollTimer->setInterval(2000);
    connect(pollTimer, &QTimer::timeout, this, [this] { pollLink(); });

    buildUi();
    // The sheet leaves alternate rows, scroll bars and pop-up lists to the palette, so that comes with it.
    QApplication::setPalette(themePalette());
    qApp->setStyleSheet(themeStyleSheet.toString());
    loadLogo();
    updateControls();

    statusLabel->setText(u"Ready to link your Tarnwick account."_s);
    if (state.isLinked()) {
        statusLabel->setText(u"Checking linked Tarnwick session..."_s);
        checkSession();
    }
}

TarnwickClientWindow::~TarnwickClientWindow() = default;

void TarnwickClientWindow::closeEvent(QCloseEvent* event)
{
    saveState();
    QWidget::closeEvent(event);
}
