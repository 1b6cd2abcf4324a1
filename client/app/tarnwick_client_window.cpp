#include "app/tarnwick_client_window.h"

#include "api/service_host.h"
#include "ui/theme_style_sheet.h"

#include <QApplication>
#include <QLabel>
#include <QNetworkAccessManager>
#include <QPalette>
#include <QTimer>

/// The start-up sequence. Missing or invalid values get their defaults; none of them stops it.
TarnwickClientWindow::TarnwickClientWindow()
{
    resetAccountTexts();
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

    // Before the widgets exist, so that no widget has to handle a palette change.
    QApplication::setPalette(themePalette());
    buildUi();
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
