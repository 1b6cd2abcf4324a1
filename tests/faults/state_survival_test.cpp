// The client may be killed at any moment, also in the midst of a save: its next start works all the same.
#include "app/tarnwick_client_window.h"
#include "support/message_catcher.h"
#include "support/service_bench.h"
#include "support/temporary_home.h"
#include "support/window_view.h"

#include <QApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QTest>

#include <chrono>
#include <cstdio>
#include <thread>

/// What the killed clients left.
struct SurvivalCounts
{
    int whole = 0;
    int empty = 0;
    int torn = 0;
};

class StateSurvivalTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aClientKilledWhileSavingStartsAgain();

private:
    /// Kills a client in the midst of its saves, counts the state file that it left, and starts the next one.
    static void killAndStartAgain(QRandomGenerator& random, SurvivalCounts& counts);
};

namespace {

/// Nobody listens there, and nobody has to: no event loop runs.
const QString survivalOrigin = u"http://127.0.0.1:1"_s;

/// The client's process: saves for ever, each time something of another length.
int survivalSaveOn(int argc, char** argv)
{
    const QApplication application(argc, argv);
    TarnwickClientWindow window;
    const support::WindowView view(window);
    std::puts("ready");
    static_cast<void>(std::fflush(stdout));
    for (int round = 0;; ++round) {
        view.line(u"Tarnwick URL")->setText(survivalOrigin + u'/' + QString(round * 37 % 2000, u'x'));
        window.close();
    }
    return 0;
}

} // namespace

void StateSurvivalTest::killAndStartAgain(QRandomGenerator& random, SurvivalCounts& counts)
{
    const support::TemporaryHome home;
    home.writeState(support::storedState(survivalOrigin, u"token-1"_s));
    QProcess client;
    client.start(QCoreApplication::applicationFilePath(), {u"save on"_s});
    QVERIFY(client.waitForReadyRead(60000));
    // The moment is the point here; nothing is waited for.
    std::this_thread::sleep_for(std::chrono::microseconds(random.bounded(3000)));
    client.kill();
    QVERIFY(client.waitForFinished());
    QCOMPARE(client.exitStatus(), QProcess::CrashExit);

    const QByteArray left = home.readState();
    const bool isWhole = QJsonDocument::fromJson(left).isObject();
    ++(isWhole ? counts.whole : left.isEmpty() ? counts.empty : counts.torn);
    TarnwickClientWindow next;
    const support::WindowView view(next);
    QVERIFY2(view.line(u"Tarnwick URL")->text().startsWith(survivalOrigin) == isWhole, left.constData());
    QCOMPARE(view.status(),
             isWhole ? u"Checking linked Tarnwick session..."_s : u"Ready to link your Tarnwick account."_s);
    next.close();
    QVERIFY2(!home.stateObject().value(u"device_id"_s).toString().isEmpty(), left.constData());
    QCOMPARE(home.stateObject().value(u"device_id"_s).toString() == u"desk-1"_s, isWhole);
}

void StateSurvivalTest::aClientKilledWhileSavingStartsAgain()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    QRandomGenerator random(seed);
    SurvivalCounts counts;
    QStringList printed;
    for (int round = 0; round < 200 && !QTest::currentTestFailed(); ++round) {
        const support::MessageCatcher messages;
        killAndStartAgain(random, counts);
        printed += messages.messages();
    }
    qInfo("seed %u: %d files whole, %d empty, %d torn", seed, counts.whole, counts.empty, counts.torn);
    QCOMPARE(printed, QStringList());
}

int main(int argc, char** argv)
{
    if (argc == 2 && QByteArray(argv[1]) == "save on") {
        return survivalSaveOn(argc, argv);
    }
    QApplication application(argc, argv);
    StateSurvivalTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "state_survival_test.moc"
