// The service's texts are shown as they are, whatever they contain and wherever they appear.
#include "support/client_test.h"

#include <QAbstractItemView>
#include <QJsonArray>
#include <QJsonObject>
#include <QScreen>

#include <algorithm>
#include <array>
#include <ctime>

#if defined(Q_OS_LINUX)
#include <sys/inotify.h>
#include <unistd.h>
#endif

using support::Call;
using support::Reply;

namespace {

/// The processor time that a text may take in one place. A busy machine does not count.
#if defined(__SANITIZE_ADDRESS__)
constexpr std::clock_t serviceTextPatience = 20 * CLOCKS_PER_SEC;
#else
constexpr std::clock_t serviceTextPatience = 5 * CLOCKS_PER_SEC;
#endif

/// How long this may take on a busy machine.
constexpr int serviceTextWaitMs = 30000;

} // namespace

/// An image file that records whether it was opened. On Linux only; elsewhere wasOpened() is always false.
class Lure
{
public:
#if defined(Q_OS_LINUX)
    static constexpr bool isSupported = true;

    Lure() : handle(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        QPixmap picture(4, 4);
        picture.fill(Qt::red);
        picture.save(path());
        ::inotify_add_watch(handle, QFile::encodeName(path()).constData(), IN_OPEN);
    }
    ~Lure()
    {
        ::close(handle);
    }
    Q_DISABLE_COPY_MOVE(Lure)

    /// Since the last call.
    bool wasOpened() const
    {
        std::array<char, 4096> events{};
        return ::read(handle, events.data(), events.size()) > 0;
    }
#else
    static constexpr bool isSupported = false;
    bool wasOpened()
    {
        return false;
    }
#endif

    QString path() const
    {
        return folder.filePath(QStringLiteral("lure.png"));
    }

private:
    QTemporaryDir folder;
    int handle = -1;
};

class ServiceTextsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Otherwise the other test could never fail.
    void theLureTellsWhenItIsOpened()
    {
        if (!Lure::isSupported) {
            QSKIP("This system does not report when a file is opened.");
        }
        QVERIFY(!lure.wasOpened());
        QLabel label(u"<img src=\"%1\">"_s.arg(lure.path()));
        label.show();
        QVERIFY(support::waitFor([this] { return lure.wasOpened(); }));
    }

    void aTextIsShownAsItIs_data()
    {
        const QString image = u"<img src=\"%1\">"_s.arg(lure.path());
        QTest::addColumn<QString>("text");
        QTest::newRow("tags") << u"<b>bold</b><br><h1>large</h1><script>x</script>"_s;
        QTest::newRow("a table of markup") << u"<table width=9000><tr><td>"_s + QString(4000, u'x') + u"</table>"_s;
        QTest::newRow("a picture") << image;
        QTest::newRow("a picture behind a mark of markup") << u"<!DOCTYPE html><html>"_s + image;
        QTest::newRow("a background") << u"<body background=\"%1\" style=\"background:url(%1)\">x"_s.arg(lure.path());
        QTest::newRow("markdown") << u"# Large\n![x](%1) [y](z) `q`"_s.arg(lure.path());
        QTest::newRow("ampersands") << u"&File && &&& E&xit"_s;
        QTest::newRow("placeholders") << u"%1 %2 %n %L1 %%"_s;
        QTest::newRow("a quarter of a megabyte in one line") << QString(qsizetype{256} * 1024, u'x');
        QTest::newRow("a quarter of a megabyte of words") << u"word "_s.repeated(50000) + u"end"_s;
        QTest::newRow("a quarter of a megabyte of marks") << u"<"_s.repeated(qsizetype{256} * 1024);
        QTest::newRow("right to left") << u"\u202etxet desrever\u202c \u200f\u2067x\u2069 שלום"_s;
        QTest::newRow("a thousand turns of direction") << u"\u202ea\u202db"_s.repeated(1000);
        QTest::newRow("control characters") << u"a\u0001\u0007\b\u001b[31mred\u007f\u0085b"_s;
        QTest::newRow("zero-width and combined") << u"\u200b\ufeffZ"_s + QString(2000, QChar(0x0301));
        QTest::newRow("half a surrogate pair") << QString(QChar(0xd83d)) + u"x"_s + QString(QChar(0xdd25));
        QTest::newRow("outside of Unicode's characters") << u"\uffff\ufffe\ufdd0"_s;
    }

    void aTextIsShownAsItIs()
    {
        QFETCH(QString, text);
        support::ClientRun run;
        QVERIFY(run.startSignedIn());
        const support::WindowView view = run.view();
        run.window().resize(1220, 860);
        run.window().show();
        QVERIFY(QTest::qWaitForWindowExposed(&run.window()));
        lure.wasOpened(); // resets it

        showAccountAndProjects(run, text);
        QTRY_COMPARE_WITH_TIMEOUT(view.status(), u"Loaded 2 Tarnwick project(s)."_s, serviceTextWaitMs);
        QCOMPARE(view.account(), QStringList({u"Signed in as "_s + text, u"Plan: "_s + text, u"Limit: "_s + text}));
        QCOMPARE(view.combo(u"Core")->currentText(), text);
        QCOMPARE(view.row(1), QStringList({text, text, text, text}));
        paint(run);
        paintOpenCoreList(run);

        run.server.reply(callPath(Call::Instances), Reply::json(500, QJsonObject{{u"message"_s, text}}));
        run.press(u"Refresh");
        QTRY_COMPARE_WITH_TIMEOUT(view.status(), text, serviceTextWaitMs);
        paint(run);

        run.server.reply(callPath(Call::LinkStart), Reply::json(200, QJsonObject{{u"code"_s, text}}));
        // The code is part of each poll's address, whose length a server limits: so no poll is sent.
        run.pollTimer()->blockSignals(true);
        run.press(u"Generate Link Code");
        QTRY_VERIFY_WITH_TIMEOUT(view.status().startsWith(u"Code "_s + text + u" is ready."_s), serviceTextWaitMs);
        // The maximum length of a QLineEdit.
        QCOMPARE(view.line(u"Link code")->text(), text.left(32767));
        paint(run);

        QVERIFY(run.markerComesBack());
        QVERIFY(run.opened.isEmpty());
    }

private:
    /// Approves a code; the client then shows the account, cores and projects again.
    void showAccountAndProjects(support::ClientRun& run, const QString& text)
    {
        const QJsonObject user{{u"display_name"_s, text}, {u"plan_name"_s, text}, {u"gdps_limit_label"_s, text}};
        const QJsonArray cores{QJsonObject{{u"key"_s, u"k"_s}, {u"label"_s, text}}};
        const QJsonObject project{
            {u"display_name"_s, text}, {u"slug"_s, text}, {u"core_label"_s, text}, {u"status"_s, text}};
        run.server.reply(callPath(Call::LinkPoll), Reply::json(200, R"({"access_token":"token-2"})"));
        run.server.reply(callPath(Call::Session),
                         Reply::json(200, QJsonObject{{u"user"_s, user}, {u"available_cores"_s, cores}}));
        run.server.reply(callPath(Call::Instances),
                         Reply::json(200, QJsonObject{{u"instances"_s, QJsonArray{project, project}}}));
        QVERIFY(run.showLinkCode(u"TWPC-1"_s));
        started = std::clock();
        run.tick();
    }

    /// Paints both pages. This must not take long, resize the window or open the lure.
    void paint(support::ClientRun& run)
    {
        for (const int page : {1, 0}) {
            run.view().tabs()->setCurrentIndex(page);
            QCoreApplication::processEvents();
            QVERIFY(!run.window().grab().isNull());
        }
        checkHarm(run);
    }

    /// Paints the open list of cores, a pop-up that must not be wider than the screen.
    void paintOpenCoreList(support::ClientRun& run)
    {
        run.view().tabs()->setCurrentIndex(1);
        QComboBox* cores = run.view().combo(u"Core");
        {
            const support::MessageCatcher messages;
            cores->showPopup();
            const QWidget* popUp = cores->view()->window();
            QVERIFY(popUp != &run.window() && popUp->isVisible());
            QVERIFY(popUp->width() <= popUp->screen()->geometry().width());
            QVERIFY(!cores->view()->window()->grab().isNull());
            cores->hidePopup();
            QCoreApplication::processEvents();
            // The offscreen platform cannot raise a window, and Qt prints that.
            const QStringList printed = messages.messages();
            QVERIFY(std::all_of(printed.begin(), printed.end(), [](const QString& line) {
                return line.startsWith("This plugin does not support "_L1);
            }));
        }
        checkHarm(run);
    }

    void checkHarm(support::ClientRun& run)
    {
        QCoreApplication::processEvents();
        QCOMPARE(run.window().size(), QSize(1220, 860));
        QVERIFY(!lure.wasOpened());
        const std::clock_t spent = std::clock() - started;
        QVERIFY2(spent < serviceTextPatience, qPrintable(u"%1 s"_s.arg(double(spent) / CLOCKS_PER_SEC)));
        started = std::clock();
    }

    Lure lure;
    std::clock_t started = 0;
};

TARNWICK_TEST(ServiceTextsTest)
#include "service_texts_test.moc"
