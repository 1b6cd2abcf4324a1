// The client right after its start, before anything is pressed.
#include "support/client_test.h"

#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QMainWindow>
#include <QNetworkAccessManager>
#include <QTimer>

using support::ClientRun;

namespace {

/// Counts the labels that the main window contains when it gets a style change event.
class StyleChangeWatcher : public QObject
{
public:
    StyleChangeWatcher() { qApp->installEventFilter(this); }

    qsizetype labels = -1;

protected:
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::StyleChange && qobject_cast<QMainWindow*>(object) != nullptr) {
            labels = object->findChildren<QLabel*>().size();
        }
        return false;
    }
};

} // namespace

class StartUpTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyStartOpensAtTheSameSize()
    {
        const support::TemporaryHome home;
        for (int start = 0; start < 2; ++start) {
            const auto window = support::newClientWindow();
            QCOMPARE(window->windowTitle(), u"Tarnwick Client"_s);
            window->show();
            QVERIFY(QTest::qWaitForWindowExposed(window.get()));
            QCOMPARE(window->size(), QSize(1220, 860));
            QVERIFY(!window->testAttribute(Qt::WA_Moved));
            window->setGeometry(30, 40, 1500, 1000);
            QVERIFY(window->close());
        }
    }

    void cannotBeMadeSmallerThanItsMinimum()
    {
        const support::TemporaryHome home;
        const auto window = support::newClientWindow();
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        window->resize(1059, 759);
        QCOMPARE(window->size(), QSize(1060, 760));
        window->resize(10, 2000);
        QCOMPARE(window->size(), QSize(1060, 2000));
    }

    void isAPlainMainWindow()
    {
        const support::TemporaryHome home;
        const auto window = support::newClientWindow();
        QCOMPARE(window->metaObject(), &QMainWindow::staticMetaObject);
        QCOMPARE(window->parent(), nullptr);
        const QMainWindow plain;
        QCOMPARE(window->windowFlags(), plain.windowFlags());
    }

    void ownsOneNetworkManagerAndOnePollTimerThatRests()
    {
        const support::TemporaryHome home;
        const auto window = support::newClientWindow();
        QCOMPARE(window->findChildren<QNetworkAccessManager*>(Qt::FindDirectChildrenOnly).size(), 1);
        const auto timers = window->findChildren<QTimer*>(Qt::FindDirectChildrenOnly);
        QCOMPARE(timers.size(), 1);
        QCOMPARE(timers.constFirst()->interval(), 2000);
        QVERIFY(!timers.constFirst()->isSingleShot());
        QVERIFY(!timers.constFirst()->isActive());
    }

    void theSheetIsTheWholeApplicationsAndComesAfterTheWidgets()
    {
        const support::TemporaryHome home;
        qApp->setStyleSheet(QString());
        const StyleChangeWatcher watcher;
        const auto window = support::newClientWindow();
        QVERIFY(qApp->styleSheet().contains(u"QLabel#HeroTitle"_s));
        QCOMPARE(window->styleSheet(), QString());
        QCOMPARE(watcher.labels, window->findChildren<QLabel*>().size());
    }

    void aFirstStartShowsTheDefaults()
    {
        const support::TemporaryHome home;
        const auto window = support::newClientWindow();
        const support::WindowView view(*window);
        QCOMPARE(view.status(), u"Ready to link your Tarnwick account."_s);
        QCOMPARE(view.line(u"Tarnwick URL")->text(), support::defaultBaseUrl());
        QCOMPARE(view.line(u"Link code")->text(), QString());
        QCOMPARE(view.account(), (QStringList{u"Not linked yet"_s, u"Plan: -"_s, u"Limit: -"_s}));
        QCOMPARE(view.table()->rowCount(), 0);
        QCOMPARE(view.combo(u"Core")->currentText(), u"No cores available"_s);
        // The constructor has already called updateControls().
        QVERIFY(view.button(u"Generate Link Code")->isEnabled());
        QVERIFY(!view.button(u"Create GDPS")->isEnabled());
    }

    void aFirstStartWritesNothingUntilItCloses()
    {
        const support::TemporaryHome home;
        const auto window = support::newClientWindow();
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        QVERIFY(!QFile::exists(home.stateFile()));
        QVERIFY(window->close());
        QCOMPARE(home.stateObject().keys(), (QStringList{u"device_id"_s, u"origin"_s}));
    }

    void anUnlinkedStartSendsNothing()
    {
        ClientRun run;
        run.start();
        run.window().show();
        QVERIFY(QTest::qWaitForWindowExposed(&run.window()));
        QCOMPARE(run.view().status(), u"Ready to link your Tarnwick account."_s);

        // The request that this press causes is the first one.
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(), 1);
        QCOMPARE(run.server.connectionCount(), 1);
    }

    void aStoredOriginIsShownInTheUrlField()
    {
        const support::TemporaryHome home;
        home.writeState(support::json("{'origin':' http://stored.example/// '}"));
        const auto window = support::newClientWindow();
        // Shown as stored, only trimmed; requests and saves normalise it.
        QCOMPARE(support::WindowView(*window).line(u"Tarnwick URL")->text(), u"http://stored.example///"_s);
    }
};

TARNWICK_TEST(StartUpTest)
#include "start_up_test.moc"
