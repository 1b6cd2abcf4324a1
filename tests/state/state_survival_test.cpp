// The client may be killed at any moment, even during a save: its next start still works.
#include "support/client_test.h"

#include <QApplication>
#include <QProcess>
#include <QRandomGenerator>

#include <chrono>
#include <cstdio>
#include <thread>

namespace {

/// Nothing listens there, and nothing needs to: no event loop runs.
const QString survivalOrigin = u"http://127.0.0.1:1"_s;

/// The client's process: saves in an endless loop, each time with a different length.
int survivalSaveOn(int argc, char** argv)
{
    const QApplication application(argc, argv);
    const auto window = support::newClientWindow();
    const support::WindowView view(*window);
    std::puts("ready");
    static_cast<void>(std::fflush(stdout));
    for (int round = 0;; ++round) {
        view.line(u"Tarnwick URL")->setText(survivalOrigin + u'/' + QString(round * 37 % 2000, u'x'));
        window->close();
    }
    return 0;
}

quint32 survivalSeed()
{
    return qEnvironmentVariableIsSet("TARNWICK_TEST_SEED")
               ? static_cast<quint32>(qEnvironmentVariableIntValue("TARNWICK_TEST_SEED"))
               : QRandomGenerator::global()->generate();
}

} // namespace

class StateSurvivalTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aClientKilledWhileSavingStartsAgain_data()
    {
        QTest::addColumn<quint32>("seed");
        const quint32 seed = survivalSeed();
        QTest::addRow("seed %u", seed) << seed;
    }

    void aClientKilledWhileSavingStartsAgain()
    {
        QFETCH(quint32, seed);
        constexpr int enough = 20;
        QRandomGenerator random(seed);
        int whole = 0;
        int broken = 0;
        // Until there were enough of both: complete files and incomplete ones.
        for (int round = 0; round < 2000 && (whole < enough || broken < enough); ++round) {
            const support::TemporaryHome home;
            home.writeState(support::storedState(survivalOrigin, u"token-1"_s));
            QProcess client;
            client.start(QCoreApplication::applicationFilePath(), {u"save-on"_s});
            QVERIFY(client.waitForReadyRead(60000));
            // A random moment is the purpose of this sleep; it does not wait for anything.
            std::this_thread::sleep_for(std::chrono::microseconds(random.bounded(3000)));
            client.kill();
            QVERIFY(client.waitForFinished());
            QCOMPARE(client.exitStatus(), QProcess::CrashExit);

            const QByteArray left = home.readState();
            const bool isWhole = home.stateObject().contains(u"device_id"_s);
            ++(isWhole ? whole : broken);
            const auto next = support::newClientWindow();
            QVERIFY2(support::WindowView(*next).status() == (isWhole ? u"Checking linked Tarnwick session..."_s
                                                                     : u"Ready to link your Tarnwick account."_s),
                     left.constData());
            next->close();
            const QString device = home.stateObject().value(u"device_id"_s).toString();
            QVERIFY2(isWhole ? device == u"desk-1"_s : device.startsWith(u"twqt-"_s), left.constData());
        }
        QVERIFY2(whole >= enough, qPrintable(QString::number(whole)));
        QVERIFY2(broken >= enough, qPrintable(QString::number(broken)));
    }
};

TARNWICK_CHILD("save-on", survivalSaveOn)
TARNWICK_TEST(StateSurvivalTest)
#include "state_survival_test.moc"
