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

class StateSurvivalTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aClientKilledWhileSavingStartsAgain();
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

void StateSurvivalTest::aClientKilledWhileSavingStartsAgain()
{
    const support::MessageCatcher messages;
    const quint32 seed = QRandomGenerator::global()->generate();
    QRandomGenerator random(seed);
    int whole = 0;
    for (int round = 0; round < 200; ++round) {
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
        whole += isWhole ? 1 : 0;
        const QString where = u"seed %1, round %2: %3"_s.arg(seed).arg(round).arg(QString::fromUtf8(left));
        TarnwickClientWindow next;
        const support::WindowView view(next);
        QVERIFY2(view.line(u"Tarnwick URL")->text().startsWith(survivalOrigin) == isWhole, qPrintable(where));
        QCOMPARE(view.status(),
                 isWhole ? u"Checking linked Tarnwick session..."_s : u"Ready to link your Tarnwick account."_s);
        next.close();
        QVERIFY2(!home.stateObject().value(u"device_id"_s).toString().isEmpty(), qPrintable(where));
        QCOMPARE(home.stateObject().value(u"device_id"_s).toString() == u"desk-1"_s, isWhole);
    }
    QCOMPARE(messages.messages(), QStringList());
    qInfo("seed %u: %d of 200 files whole", seed, whole);
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
