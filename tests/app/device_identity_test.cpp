// The identifier by which the service knows this installation.
#include "support/client_test.h"

#include <QRegularExpression>

#include <chrono>

class DeviceIdentityTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyNewIdentifierIsTheMonotonicClockInHexadecimal()
    {
        const QRegularExpression form(u"^twqt-([1-9a-f][0-9a-f]*)$"_s);
        for (int start = 0; start < 2; ++start) {
            const support::TemporaryHome home;
            const qint64 before = clock();
            support::newClientWindow()->close();
            const qint64 after = clock();
            const QString identifier = home.stateObject().value(u"device_id"_s).toString();
            const QRegularExpressionMatch match = form.match(identifier);
            QVERIFY2(match.hasMatch(), qPrintable(identifier));
            const qint64 ticks = match.captured(1).toLongLong(nullptr, 16);
            QVERIFY(before <= ticks && ticks <= after);
        }
    }

private:
    static qint64 clock() { return std::chrono::steady_clock::now().time_since_epoch().count(); }
};

TARNWICK_TEST(DeviceIdentityTest)
#include "device_identity_test.moc"
