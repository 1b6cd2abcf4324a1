#include "app/tarnwick_client_window.h"

#include "support/opened_urls.h"
#include "support/temporary_home.h"
#include "support/window_view.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <QUrlQuery>

#include <memory>

namespace {

constexpr int serviceStartLimitMs = 10000;

/// The local stand-in of the service, as a process of its own with nothing in its memory but its seed.
class LocalService
{
public:
    LocalService()
    {
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QStringLiteral(TARNWICK_SERVICE_PROGRAM), QStringList());
        while (!process.canReadLine() && process.waitForReadyRead(serviceStartLimitMs)) {
        }
        const QString greeting = QString::fromUtf8(process.readLine()).trimmed();
        address = greeting.mid(greeting.indexOf("http://"_L1));
    }
    ~LocalService()
    {
        process.terminate();
        process.waitForFinished(serviceStartLimitMs);
    }
    Q_DISABLE_COPY_MOVE(LocalService)

    QString origin() const { return address; }

private:
    QProcess process;
    QString address;
};

/// A visitor of the service's pages who accepts cookies and sends forms, and has no scripts.
class PageVisitor
{
public:
    QString open(const QUrl& url) { return body(manager.get(QNetworkRequest(url))); }

    QString submit(const QUrl& url, const QUrlQuery& form)
    {
        QNetworkRequest request(url);
        request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/x-www-form-urlencoded"_s);
        request.setRawHeader("Origin", url.toString(QUrl::RemovePath | QUrl::RemoveQuery).toUtf8());
        return body(manager.post(request, form.toString(QUrl::FullyEncoded).toUtf8()));
    }

    static QString hiddenField(const QString& page, const QString& name)
    {
        const QRegularExpression field(u"name=\"%1\" value=\"([^\"]+)\""_s.arg(name));
        return field.match(page).captured(1);
    }

private:
    static QString body(QNetworkReply* reply)
    {
        const std::unique_ptr<QNetworkReply> owner(reply);
        return QTest::qWaitFor([reply] { return reply->isFinished(); }) ? QString::fromUtf8(reply->readAll())
                                                                        : QString();
    }

    QNetworkAccessManager manager;
};

} // namespace

class FirstUseTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aNewDesktopIsPairedListsCreatesAndIsUnlinked();

private:
    static void approve(const QUrl& pairingPage, const QString& code);
};

void FirstUseTest::approve(const QUrl& pairingPage, const QString& code)
{
    PageVisitor visitor;
    const QString page = visitor.open(pairingPage);
    QVERIFY2(page.contains(code), qPrintable(page));

    QUrlQuery form;
    form.addQueryItem(u"form_token"_s, PageVisitor::hiddenField(page, u"form_token"_s));
    form.addQueryItem(u"code"_s, code);
    form.addQueryItem(u"decision"_s, u"approve"_s);
    const QString answer = visitor.submit(pairingPage.adjusted(QUrl::RemoveQuery), form);
    // The page that follows is fetched after the decision; the desktop may have been quicker to ask for it.
    QVERIFY2(answer.contains(u"Desktop approved") || answer.contains(u"Desktop linked"), qPrintable(answer));
}

void FirstUseTest::aNewDesktopIsPairedListsCreatesAndIsUnlinked()
{
    const LocalService service;
    QVERIFY(service.origin().startsWith(u"http://127.0.0.1:"));
    const support::TemporaryHome home;
    support::OpenedUrls browser;
    TarnwickClientWindow window;
    const support::WindowView view(window);
    view.line(u"Tarnwick URL")->setText(service.origin());

    view.button(u"Generate Link Code")->click();
    QTRY_VERIFY(view.status().startsWith(u"Code TWPC-"));
    const QString code = view.line(u"Link code")->text();
    view.button(u"Open Public Pairing Page")->click();
    QCOMPARE(browser.count(), 1);
    approve(browser.last(), code);
    QVERIFY(!QTest::currentTestFailed());

    QTRY_COMPARE(view.status(), u"Loaded 2 Tarnwick project(s)."_s);
    QCOMPARE(view.account(), QStringList({u"Signed in as Robin Vale"_s, u"Plan: Creator"_s, u"Limit: 2 of 5"_s}));
    QVERIFY(view.combo(u"Core")->count() > 1);

    view.line(u"GDPS Name")->setText(u"Ämber & <Quartz>"_s);
    view.checkBox(u"Start this GDPS in maintenance mode")->setChecked(true);
    view.button(u"Create GDPS")->click();
    QTRY_COMPARE(view.status(), u"Loaded 3 Tarnwick project(s)."_s);
    QCOMPARE(view.row(2).constFirst(), u"Ämber & <Quartz>"_s);
    QCOMPARE(view.row(2).constLast(), u"maintenance"_s);
    QCOMPARE(view.line(u"GDPS Name")->text(), QString());

    view.table()->selectRow(2);
    view.button(u"Open Selected Project")->click();
    QCOMPARE(browser.count(), 2);
    QVERIFY(PageVisitor().open(browser.last()).contains(u"Ämber &amp; &lt;Quartz&gt;"));

    view.button(u"Unlink")->click();
    QCOMPARE(view.status(), u"Tarnwick desktop client unlinked."_s);
    QCOMPARE(view.table()->rowCount(), 0);
    QVERIFY(!home.stateObject().contains(u"access_token"));
}

QTEST_MAIN(FirstUseTest)
#include "first_use_test.moc"
