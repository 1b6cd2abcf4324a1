// Texts of the service are shown as they are, whatever is in them and wherever they appear.
#include "app/tarnwick_client_window.h"
#include "faults/lure.h"
#include "support/message_catcher.h"
#include "support/opened_urls.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"
#include "support/wait_for.h"

#include <QAbstractItemView>
#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <ctime>
#include <memory>

using support::Call;
using support::callPath;
using support::Reply;

namespace {

/// The processor time that a text may take. A busy machine is no fault.
#if defined(__SANITIZE_ADDRESS__)
constexpr std::clock_t serviceTextPatience = 20 * CLOCKS_PER_SEC;
#else
constexpr std::clock_t serviceTextPatience = 5 * CLOCKS_PER_SEC;
#endif

/// How long a busy machine may take over what is allowed that much processor time.
constexpr int serviceTextWaitMs = 30000;

} // namespace

class ServiceTextsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void anErrorText_data() { addTexts(); }
    void anErrorText();
    void theAccountTexts_data() { addTexts(); }
    void theAccountTexts();
    void theTextsOfAProject_data() { addTexts(); }
    void theTextsOfAProject();
    void theLabelOfACore_data() { addTexts(); }
    void theLabelOfACore();
    void theOpenListOfCores_data() { addTexts(); }
    void theOpenListOfCores();
    void theLinkCode_data() { addTexts(); }
    void theLinkCode();
    void theLureTellsWhenItIsOpened();

private:
    void addTexts() const;
    /// Has a request fail, and reads that from the status line. False when it does not get there.
    bool answers();
    /// Paints everything, on both pages. False when that harms.
    bool paints();
    /// Paints the list of the cores, open as a pop-up. False when that harms, or when it is wider than the screen.
    bool paintsOpenCoreList();
    /// False when a text has taken too long, moved the window's edges or opened the lure.
    bool isUnharmed();
    /// Has a code approved, upon which the account is shown and the list loaded once more. False when they are not.
    bool linksAnew();
    /// Has the account offer one core of that label. False when it is not there, or not the current one.
    bool offersCore(const QString& label);

    faults::Lure lure;
    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<support::ScriptedServer> server;
    std::unique_ptr<support::OpenedUrls> opened;
    std::unique_ptr<support::ServiceBench> bench;
    std::clock_t started = 0;
    QSize size;
};

void ServiceTextsTest::addTexts() const
{
    const QString image = u"<img src=\"%1\">"_s.arg(lure.path());
    QTest::addColumn<QString>("text");
    QTest::newRow("tags") << u"<b>bold</b><br><h1>large</h1><script>x</script>"_s;
    QTest::newRow("a table of markup") << u"<table width=9000><tr><td>"_s + QString(4000, u'x') + u"</table>"_s;
    QTest::newRow("a picture") << image;
    QTest::newRow("a picture from a file address") << u"<img src=\"file://%1\">"_s.arg(lure.path());
    QTest::newRow("a picture behind a mark of markup") << u"<!DOCTYPE html><html>"_s + image;
    QTest::newRow("a background") << u"<body background=\"%1\" style=\"background:url(%1)\">x"_s.arg(lure.path());
    QTest::newRow("a link") << u"<a href=\"https://elsewhere.example\">here</a>"_s;
    QTest::newRow("markdown") << u"# Large\n![x](%1) [y](z) `q`"_s.arg(lure.path());
    QTest::newRow("entities") << u"&lt;b&gt; &amp;amp; &#65; &nbsp;"_s;
    QTest::newRow("ampersands") << u"&File && &&& E&xit"_s;
    QTest::newRow("placeholders") << u"%1 %2 %n %L1 %%"_s;
    QTest::newRow("a megabyte in one line") << QString(qsizetype{1024} * 1024, u'x');
    QTest::newRow("a megabyte of words") << u"word "_s.repeated(1024 * 1024 / 5) + u"end"_s;
    QTest::newRow("a megabyte of marks") << u"<"_s.repeated(qsizetype{1024} * 1024);
    QTest::newRow("right to left") << u"\u202etxet desrever\u202c \u200f\u2067x\u2069 שלום"_s;
    QTest::newRow("a thousand turns of direction") << u"\u202ea\u202db"_s.repeated(1000);
    QTest::newRow("control characters") << u"a\u0001\u0007\b\u001b[31mred\u007f\u0085b"_s;
    QTest::newRow("zero-width and combined") << u"\u200b\ufeffZ"_s + QString(2000, QChar(0x0301));
    QTest::newRow("half a surrogate pair") << QString(QChar(0xd83d)) + u"x"_s + QString(QChar(0xdd25));
    QTest::newRow("outside of Unicode's characters") << u"\uffff\ufffe\ufdd0"_s;
}

void ServiceTextsTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
    server = std::make_unique<support::ScriptedServer>();
    opened = std::make_unique<support::OpenedUrls>();
    bench = std::make_unique<support::ServiceBench>(*server, [] { return std::make_unique<TarnwickClientWindow>(); });
    QVERIFY(bench->settleLinked());
    bench->window().resize(1220, 860);
    bench->window().show();
    QVERIFY(QTest::qWaitForWindowExposed(&bench->window()));
    size = bench->window().size();
    lure.forget();
    started = std::clock();
}

void ServiceTextsTest::cleanup()
{
    const bool isAnswering = QTest::currentTestFailed() || answers();
    const bool isNothingOpened = opened->isEmpty();
    bench.reset();
    opened.reset();
    server.reset();
    const QStringList printed = messages->messages();
    messages.reset();
    // Only now, so that the next test finds nothing of this one whatever comes out.
    QVERIFY(isAnswering);
    QVERIFY(isNothingOpened);
    QCOMPARE(printed, QStringList());
}

bool ServiceTextsTest::answers()
{
    server->reply(callPath(Call::LinkStart), Reply::json(500, R"({"message":"It still answers."})"));
    bench->view().button(u"Generate Link Code")->click();
    return support::waitFor([this] { return bench->view().status() == u"It still answers."_s; });
}

bool ServiceTextsTest::paints()
{
    for (const int page : {1, 0}) {
        bench->view().tabs()->setCurrentIndex(page);
        QCoreApplication::processEvents();
        if (bench->window().grab().isNull()) {
            return false;
        }
    }
    QCoreApplication::processEvents();
    return isUnharmed();
}

bool ServiceTextsTest::isUnharmed()
{
    return bench->window().size() == size && !lure.wasOpened() && std::clock() - started < serviceTextPatience;
}

bool ServiceTextsTest::paintsOpenCoreList()
{
    bench->view().tabs()->setCurrentIndex(1);
    QComboBox* cores = bench->view().combo(u"Core");
    const support::MessageCatcher popUpMessages;
    cores->showPopup();
    QWidget* popUp = cores->view()->window();
    const bool isPainted = popUp != &bench->window() && popUp->isVisible() && !popUp->grab().isNull();
    const bool fits = popUp->width() <= popUp->screen()->geometry().width();
    cores->hidePopup();
    QCoreApplication::processEvents();
    // Without a screen, a window cannot be raised, and Qt says so.
    const QStringList printed = popUpMessages.messages();
    return isPainted && fits && isUnharmed() && std::all_of(printed.begin(), printed.end(), [](const QString& line) {
               return line.startsWith("This plugin does not support "_L1);
           });
}

bool ServiceTextsTest::linksAnew()
{
    server->reply(callPath(Call::LinkPoll), Reply::json(200, R"({"access_token":"token-2"})"));
    bench->view().button(u"Generate Link Code")->click();
    if (!support::waitFor([this] { return !bench->view().line(u"Link code")->text().isEmpty(); })) {
        return false;
    }
    bench->tickPollTimer();
    return support::waitFor([this] { return bench->view().status() == u"Loaded 1 Tarnwick project(s)."_s; });
}

bool ServiceTextsTest::offersCore(const QString& label)
{
    const QJsonObject core{{u"key"_s, u"k"_s}, {u"label"_s, label}};
    server->reply(callPath(Call::Session), Reply::json(200, QJsonObject{{u"available_cores"_s, QJsonArray{core}}}));
    return linksAnew() && bench->view().account().first() == u"Signed in as Tarnwick user"_s &&
           bench->view().combo(u"Core")->currentText() == label;
}

void ServiceTextsTest::anErrorText()
{
    QFETCH(QString, text);
    server->reply(callPath(Call::Instances), Reply::json(500, QJsonObject{{u"message"_s, text}}));
    bench->view().button(u"Refresh")->click();
    QTRY_COMPARE_WITH_TIMEOUT(bench->view().status(), text, serviceTextWaitMs);
    QCOMPARE(bench->view().label(u"StatusText"_s)->textFormat(), Qt::PlainText);
    QVERIFY(paints());
}

void ServiceTextsTest::theAccountTexts()
{
    QFETCH(QString, text);
    const QJsonObject user{{u"display_name"_s, text}, {u"plan_name"_s, text}, {u"gdps_limit_label"_s, text}};
    server->reply(callPath(Call::Session), Reply::json(200, QJsonObject{{u"user"_s, user}}));
    QVERIFY(linksAnew());
    QCOMPARE(bench->view().account(),
             QStringList({u"Signed in as "_s + text, u"Plan: "_s + text, u"Limit: "_s + text}));
    QVERIFY(paints());
}

void ServiceTextsTest::theTextsOfAProject()
{
    QFETCH(QString, text);
    const QJsonObject project{
        {u"display_name"_s, text}, {u"slug"_s, text}, {u"core_label"_s, text}, {u"status"_s, text}};
    server->reply(callPath(Call::Instances),
                  Reply::json(200, QJsonObject{{u"instances"_s, QJsonArray{project, project}}}));
    bench->view().button(u"Refresh")->click();
    QTRY_COMPARE_WITH_TIMEOUT(bench->view().table()->rowCount(), 2, serviceTextWaitMs);
    QCOMPARE(bench->view().row(1), QStringList({text, text, text, text}));
    QVERIFY(paints());
}

void ServiceTextsTest::theLabelOfACore()
{
    QFETCH(QString, text);
    QVERIFY(offersCore(text));
    QVERIFY(paints());
}

void ServiceTextsTest::theOpenListOfCores()
{
    QFETCH(QString, text);
    QVERIFY(offersCore(text));
    QVERIFY(paintsOpenCoreList());
}

void ServiceTextsTest::theLinkCode()
{
    QFETCH(QString, text);
    server->reply(callPath(Call::LinkStart), Reply::json(200, QJsonObject{{u"code"_s, text}}));
    // The code is part of each poll's address, for which a server has a limit: there shall be no poll.
    bench->window().findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly)->blockSignals(true);
    bench->view().button(u"Generate Link Code")->click();
    QTRY_VERIFY_WITH_TIMEOUT(bench->view().status().endsWith(u"/link/pc before it expires."_s), serviceTextWaitMs);
    QVERIFY(bench->view().status().startsWith(u"Code "_s + text + u" is ready."_s));
    // A line field has room for so many characters and no more.
    QCOMPARE(bench->view().line(u"Link code")->text(), text.left(32767));
    QVERIFY(paints());
}

/// Else the other tests would find nothing whatever happened.
void ServiceTextsTest::theLureTellsWhenItIsOpened()
{
    if (!faults::Lure::isSupported) {
        QSKIP("This system does not tell who opens a file.");
    }
    QVERIFY(!lure.wasOpened());
    QLabel label(u"<img src=\"%1\">"_s.arg(lure.path()));
    label.show();
    QTRY_VERIFY(lure.wasOpened());
}

QTEST_MAIN(ServiceTextsTest)
#include "service_texts_test.moc"
