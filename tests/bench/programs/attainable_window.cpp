// The attainable limit: the client's own widget tree, palette and style sheet, compiled from its own files, without any
// logic. No state file, no network, no logo; the buttons do nothing.
//
// BENCH_SHEET is 0 in the program that shows the cost of the style sheet. BENCH_LOGO and BENCH_NETWORK are 1 in those
// that show the cost of the logo and the network library. With BENCH_NETWORK and an address as argument, the program
// sends one request and ignores the reply.

#include "app/tarnwick_client_window.h"

#include "api/service_host.h"
#include "ui/theme_style_sheet.h"

#include <QApplication>
#include <QCoreApplication>
#include <QLabel>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QPalette>
#include <QUrl>

TarnwickClientWindow::TarnwickClientWindow()
    : accountNameText(u"Not linked yet"_s),
      planText(u"Plan: -"_s),
      limitText(u"Limit: -"_s)
{
    state.origin = defaultBaseUrl();
    setWindowTitle(u"Tarnwick Client"_s);
    resize(1220, 860);
    setMinimumSize(1060, 760);
    if constexpr (BENCH_NETWORK != 0) {
        networkManager = new QNetworkAccessManager(this);
    }
    QApplication::setPalette(themePalette());
    buildUi();
    if constexpr (BENCH_SHEET != 0) {
        qApp->setStyleSheet(themeStyleSheet.toString());
    }
    if constexpr (BENCH_LOGO != 0) {
        loadLogo();
    }
    updateControls();
    statusLabel->setText(u"Ready to link your Tarnwick account."_s);
    if constexpr (BENCH_NETWORK != 0) {
        if (QCoreApplication::arguments().size() > 1) {
            networkManager->get(QNetworkRequest(QUrl(QCoreApplication::arguments().at(1))));
        }
    }
}

TarnwickClientWindow::~TarnwickClientWindow() = default;

void TarnwickClientWindow::closeEvent(QCloseEvent* /*event*/) {}

bool TarnwickClientWindow::isBusy(TaskKind /*kind*/) const
{
    return false;
}

void TarnwickClientWindow::requestLinkCode() {}

void TarnwickClientWindow::openPairingPage() const {}

void TarnwickClientWindow::refreshProjects() {}

void TarnwickClientWindow::unlink() {}

void TarnwickClientWindow::openSelectedProject() const {}

void TarnwickClientWindow::createInstance() {}

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    TarnwickClientWindow window;
    window.show();
    return QApplication::exec();
}
