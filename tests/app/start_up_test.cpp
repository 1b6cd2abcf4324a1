// What a start of the client looks like before anything has been pressed.
#include "app/tarnwick_client_window.h"

#include "api/service_host.h"
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"
#include "support/temporary_home.h"
#include "ui/theme_style_sheet.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QNetworkAccessManager>
#include <QTest>
#include <QTimer>

#include <memory>
#include <type_traits>

class StartUpTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void opensAtItsFixedSize();
    void cannotBeMadeSmallerThanItsMinimum();
    void everyStartOpensAtTheSameSize();
    void isAPlainMainWindow();
    void ownsOneNetworkManagerAndOnePollTimerThatRests();
    void theSheetIsTheWholeApplications();
    void aFirstStartShowsTheDefaults();
    void aFirstStartWritesNothingUntilItCloses();
    void anUnlinkedStartSendsNothing();
    void onlyTheControlsOfAnUnlinkedDesktopAreEnabled();
    void aStoredOriginIsShownInTheUrlField();
    void aBrokenStateFileStopsNothing();

private:
    std::unique_ptr<support::MessageCatcher> messages;
};

void StartUpTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
}

void StartUpTest::cleanup()
{
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void StartUpTest::opensAtItsFixedSize()
{
    const support::TemporaryHome home;
    TarnwickClientWindow window;
    QCOMPARE(window.windowTitle(), u"Tarnwick Client"_s);
    QCOMPARE(window.size(), QSize(1220, 860));
    QCOMPARE(window.minimumSize(), QSize(1060, 760));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.size(), QSize(1220, 860));
}

void StartUpTest::cannotBeMadeSmallerThanItsMinimum()
{
    const support::TemporaryHome home;
    TarnwickClientWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.resize(1059, 759);
    QCOMPARE(window.size(), QSize(1060, 760));
    window.resize(10, 2000);
    QCOMPARE(window.size(), QSize(1060, 2000));
}

void StartUpTest::everyStartOpensAtTheSameSize()
{
    const support::TemporaryHome home;
    {
        TarnwickClientWindow window;
        window.show();
        window.setGeometry(30, 40, 1500, 1000);
        QVERIFY(window.close());
    }
    QCOMPARE(home.stateObject().keys(), (QStringList{u"device_id"_s, u"origin"_s}));
    const TarnwickClientWindow window;
    QCOMPARE(window.size(), QSize(1220, 860));
    QVERIFY(!window.testAttribute(Qt::WA_Moved));
}

void StartUpTest::isAPlainMainWindow()
{
    static_assert(std::is_base_of_v<QMainWindow, TarnwickClientWindow>);
    static_assert(std::is_convertible_v<TarnwickClientWindow*, QMainWindow*>);
    static_assert(std::has_virtual_destructor_v<TarnwickClientWindow>);
    static_assert(!std::is_copy_constructible_v<TarnwickClientWindow>);

    const support::TemporaryHome home;
    const TarnwickClientWindow window;
    QCOMPARE(window.metaObject(), &QMainWindow::staticMetaObject);
    QCOMPARE(window.parent(), nullptr);
    const QMainWindow plain;
    QCOMPARE(window.windowFlags(), plain.windowFlags());
}

void StartUpTest::ownsOneNetworkManagerAndOnePollTimerThatRests()
{
    const support::TemporaryHome home;
    const TarnwickClientWindow window;
    QCOMPARE(window.findChildren<QNetworkAccessManager*>(Qt::FindDirectChildrenOnly).size(), 1);
    const auto timers = window.findChildren<QTimer*>(Qt::FindDirectChildrenOnly);
    QCOMPARE(timers.size(), 1);
    QCOMPARE(timers.constFirst()->interval(), 2000);
    QVERIFY(!timers.constFirst()->isSingleShot());
    QVERIFY(!timers.constFirst()->isActive());
}

void StartUpTest::theSheetIsTheWholeApplications()
{
    const support::TemporaryHome home;
    qApp->setStyleSheet(QString());
    const TarnwickClientWindow window;
    QCOMPARE(qApp->styleSheet(), themeStyleSheet.toString());
    QCOMPARE(window.styleSheet(), QString());
}

void StartUpTest::aFirstStartShowsTheDefaults()
{
    const support::TemporaryHome home;
    const TarnwickClientWindow window;
    const support::WindowView view(window);
    QCOMPARE(view.status(), u"Ready to link your Tarnwick account."_s);
    QCOMPARE(view.line(u"Tarnwick URL")->text(), defaultBaseUrl());
    QCOMPARE(view.line(u"Link code")->text(), QString());
    QCOMPARE(view.account(), (QStringList{u"Not linked yet"_s, u"Plan: -"_s, u"Limit: -"_s}));
    QCOMPARE(view.table()->rowCount(), 0);
    QCOMPARE(view.combo(u"Core")->currentText(), u"No cores available"_s);
}

void StartUpTest::aFirstStartWritesNothingUntilItCloses()
{
    const support::TemporaryHome home;
    TarnwickClientWindow window;
    QVERIFY(QDir(home.stateFolder()).exists());
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(!QFile::exists(home.stateFile()));
    QVERIFY(window.close());
    QCOMPARE(home.stateObject().value(u"origin"_s).toString(), defaultBaseUrl());
    QVERIFY(home.stateObject().value(u"device_id"_s).toString().startsWith(u"twqt-"_s));
}

void StartUpTest::anUnlinkedStartSendsNothing()
{
    support::ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    bench.startUnlinked();
    bench.window().show();
    QVERIFY(QTest::qWaitForWindowExposed(&bench.window()));
    QCOMPARE(bench.view().status(), u"Ready to link your Tarnwick account."_s);

    // The request that a press causes is the first one of all.
    bench.bringAbout(support::Call::LinkStart);
    QTRY_COMPARE(bench.view().line(u"Link code")->text(), u"TWPC-TEST01"_s);
    QCOMPARE(server.count(), 1);
    QCOMPARE(server.connectionCount(), 1);
}

void StartUpTest::onlyTheControlsOfAnUnlinkedDesktopAreEnabled()
{
    const support::TemporaryHome home;
    const TarnwickClientWindow window;
    const support::WindowView view(window);
    QVERIFY(view.button(u"Generate Link Code")->isEnabled());
    QVERIFY(view.button(u"Open Public Pairing Page")->isEnabled());
    QVERIFY(!view.button(u"Refresh")->isEnabled());
    QVERIFY(!view.button(u"Unlink")->isEnabled());
    QVERIFY(!view.button(u"Open Selected Project")->isEnabled());
    QVERIFY(!view.button(u"Create GDPS")->isEnabled());
    QVERIFY(!view.line(u"GDPS Name")->isEnabled());
}

void StartUpTest::aStoredOriginIsShownInTheUrlField()
{
    const support::TemporaryHome home;
    home.writeState(R"({"origin":" http://stored.example/// "})");
    const TarnwickClientWindow window;
    // Shown as it was stored, but for the white space around it; only requests and saves normalise it.
    QCOMPARE(support::WindowView(window).line(u"Tarnwick URL")->text(), u"http://stored.example///"_s);
}

void StartUpTest::aBrokenStateFileStopsNothing()
{
    const support::TemporaryHome home;
    QVERIFY(QDir().mkpath(home.stateFile()));
    TarnwickClientWindow window;
    const support::WindowView view(window);
    QCOMPARE(view.status(), u"Ready to link your Tarnwick account."_s);
    QCOMPARE(view.line(u"Tarnwick URL")->text(), defaultBaseUrl());
    window.show();
    QVERIFY(window.close());
    QVERIFY(QDir(home.stateFile()).exists());
}

QTEST_MAIN(StartUpTest)
#include "start_up_test.moc"
