#include "support/client_test.h"

using support::Call;
using support::callPath;
using support::Reply;

/// The request that "Create GDPS" sends: which fields, in which order, and how each of them is read from the form.
class CreateRequestTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theDefaultFormSendsSevenPairsInOrder()
    {
        Run run;
        QVERIFY(startWithCores(run, ""));
        QCOMPARE(sentBody(run), "display_name=Neon&description=&emoji_badge=%F0%9F%94%A5&accent_color=%23ff8f1f"
                                "&tags=&preset_name=balanced&public_listing=true");
    }

    void theFullFormSendsNinePairsInOrder()
    {
        Run run;
        QVERIFY(startWithCores(run, "{'key':'a'},{'key':'core-b'}"));
        support::fillCreationForm(run.view());
        run.view().checkBox(publicBox)->setChecked(true);
        QCOMPARE(sentBody(run), "display_name=Neon%20Burst&description=Bright%0Aand%20loud&emoji_badge=%E2%AD%90"
                                "&accent_color=%23123456&tags=stars,%20cube&preset_name=hardcore&core_key=core-b"
                                "&public_listing=true&maintenance_mode=true");
    }

    void theLeastFormSendsSixPairsInOrder()
    {
        Run run;
        QVERIFY(startWithCores(run, ""));
        run.view().checkBox(publicBox)->setChecked(false);
        QCOMPARE(sentBody(run), "display_name=Neon&description=&emoji_badge=%F0%9F%94%A5&accent_color=%23ff8f1f"
                                "&tags=&preset_name=balanced");
    }

    void maintenanceAloneIsSentAlone()
    {
        Run run;
        QVERIFY(startWithCores(run, ""));
        run.view().checkBox(publicBox)->setChecked(false);
        run.view().checkBox(u"Start this GDPS in maintenance mode")->setChecked(true);
        QVERIFY(sentBody(run).endsWith("&preset_name=balanced&maintenance_mode=true"));
    }

    void lineFieldsAreTrimmed_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QByteArray>("pair");
        const auto row = [](const char* name, const QString& field, const QString& typed, const char* pair) {
            QTest::newRow(name) << field << typed << QByteArray(pair);
        };
        row("name", u"GDPS Name"_s, u" \t Neon  Burst  "_s, "display_name=Neon%20%20Burst");
        row("emoji", u"Emoji"_s, u" x "_s, "emoji_badge=x");
        row("no emoji", u"Emoji"_s, {}, "emoji_badge=%F0%9F%94%A5");
        row("emoji of blanks", u"Emoji"_s, u"   "_s, "emoji_badge=%F0%9F%94%A5");
        row("accent that is no colour", u"Accent"_s, u" Orange! "_s, "accent_color=Orange!");
        row("no accent", u"Accent"_s, {}, "accent_color=%23ff8f1f");
        row("accent of blanks", u"Accent"_s, u"  "_s, "accent_color=%23ff8f1f");
        row("tags, as they were typed", u"Tags"_s, u"  hardcore, stars ,cube,,cube "_s,
            "tags=hardcore,%20stars%20,cube,,cube");
        row("tags of blanks", u"Tags"_s, u"  "_s, "tags=");
    }

    void lineFieldsAreTrimmed()
    {
        QFETCH(QString, field);
        QFETCH(QString, typed);
        QFETCH(QByteArray, pair);
        Run run;
        QVERIFY(startWithCores(run, ""));
        run.view().line(field)->setText(typed);
        QCOMPARE(pairOf(sentBody(run), pair), pair);
    }

    void theDescriptionIsTrimmedAndKeepsItsLines_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QByteArray>("pair");
        QTest::newRow("lines") << u"\n  first \n\nthird  \n "_s << QByteArray("description=first%20%0A%0Athird");
        QTest::newRow("blanks") << u" \n "_s << QByteArray("description=");
    }

    void theDescriptionIsTrimmedAndKeepsItsLines()
    {
        QFETCH(QString, typed);
        QFETCH(QByteArray, pair);
        Run run;
        QVERIFY(startWithCores(run, ""));
        run.view().description()->setPlainText(typed);
        QCOMPARE(pairOf(sentBody(run), pair), pair);
    }

    void thePresetIsSentExactlyAsTheComboShowsIt()
    {
        Run run;
        QVERIFY(startWithCores(run, ""));
        run.view().combo(u"Preset")->addItem(u"  of my own "_s, u"data"_s);
        run.view().combo(u"Preset")->setCurrentIndex(3);
        QCOMPARE(pairOf(sentBody(run), "preset_name="), "preset_name=%20%20of%20my%20own%20");
    }

    void theCoreIsSentAsItsKeyUntrimmed_data()
    {
        QTest::addColumn<QByteArray>("core");
        QTest::addColumn<QByteArray>("pair");
        QTest::newRow("key and label") << QByteArray("{'key':'b','label':'B'}") << QByteArray("core_key=b");
        QTest::newRow("blanks around") << QByteArray("{'key':' b '}") << QByteArray("core_key=%20b%20");
        QTest::newRow("nothing but blanks") << QByteArray("{'key':'  '}") << QByteArray("core_key=%20%20");
    }

    void theCoreIsSentAsItsKeyUntrimmed()
    {
        QFETCH(QByteArray, core);
        QFETCH(QByteArray, pair);
        Run run;
        QVERIFY(startWithCores(run, core));
        QCOMPARE(pairOf(sentBody(run), "core_key="), pair);
    }

    void theFieldsAreReadAtThePress()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        run.view().line(u"GDPS Name")->setText(u"Before"_s);
        run.view().line(u"Tarnwick URL")->setText(u" "_s + run.server.origin() + u"/a b// "_s);
        run.press(u"Create GDPS");
        run.view().line(u"Tarnwick URL")->setText(run.server.origin());
        run.view().line(u"GDPS Name")->setText(u"After"_s);
        run.view().line(u"Tags")->setText(u"late"_s);
        QTRY_COMPARE(run.server.count("/a%20b/api/pc/instances/create"), 1);
        const QByteArray body = run.server.requests("/a%20b/api/pc/instances/create").constFirst().body;
        QCOMPARE(pairOf(body, "display_name="), "display_name=Before");
        QCOMPARE(pairOf(body, "tags="), "tags=");
    }

private:
    using Run = support::ClientRun;
    static constexpr QStringView publicBox = u"Show this GDPS in the public recent list";

    /// A complete form; the account has these cores.
    static bool startWithCores(Run& run, const QByteArray& cores)
    {
        run.server.reply(callPath(Call::Session), Reply::json(200, support::json("{'available_cores':[") +
                                                                       support::json(cores.constData()) + "]}"));
        const bool isSignedIn = run.startSignedIn();
        run.view().line(u"GDPS Name")->setText(u"Neon"_s);
        return isSignedIn;
    }
    /// Presses the button and returns the body that the service received.
    static QByteArray sentBody(Run& run)
    {
        return run.holdCall(Call::CreateInstance)
                   ? run.server.requests(callPath(Call::CreateInstance)).constFirst().body
                   : QByteArray("nothing has come");
    }
    /// The field with this name, still encoded.
    static QByteArray pairOf(const QByteArray& body, const QByteArray& pair)
    {
        const QByteArray name = pair.first(pair.indexOf('=') + 1);
        const qsizetype begin = ('&' + body).indexOf('&' + name);
        return begin < 0 ? QByteArray() : body.mid(begin, body.indexOf('&', begin) - begin);
    }
};

TARNWICK_TEST(CreateRequestTest)
#include "create_request_test.moc"
