#include "support/client_test.h"

using support::Call;
using support::callPath;
using support::Reply;

/// What a successful session check shows in the window.
class SessionCheckTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theAccountCardShowsTheUser_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QStringList>("card");
        const QStringList defaults{u"Signed in as Tarnwick user"_s, u"Plan: Free"_s, u"Limit: -"_s};
        QTest::newRow("all given")
            << support::json("{'user':{'display_name':'Ann','plan_name':'Pro','gdps_limit_label':'3 of 5'}}")
            << QStringList{u"Signed in as Ann"_s, u"Plan: Pro"_s, u"Limit: 3 of 5"_s};
        QTest::newRow("empty user") << support::json("{'user':{}}") << defaults;
        QTest::newRow("user is an array") << support::json("{'user':[],'display_name':'Ann'}") << defaults;
        QTest::newRow("outside of user")
            << support::json("{'plan_name':'Pro','display_name':'Ann','gdps_limit_label':'9','user':{}}") << defaults;
        QTest::newRow("other types") << support::json(
                                            "{'user':{'display_name':1,'plan_name':null,'gdps_limit_label':true}}")
                                     << defaults;
        QTest::newRow("empty texts") << support::json(
                                            "{'user':{'display_name':'','plan_name':'','gdps_limit_label':''}}")
                                     << QStringList{u"Signed in as "_s, u"Plan: "_s, u"Limit: "_s};
        QTest::newRow("blanks and placeholders")
            << support::json("{'user':{'display_name':' %1 ','plan_name':' %2 ','gdps_limit_label':' %3 '}}")
            << QStringList{u"Signed in as  %1 "_s, u"Plan:  %2 "_s, u"Limit:  %3 "_s};
    }

    void theAccountCardShowsTheUser()
    {
        QFETCH(QByteArray, body);
        QFETCH(QStringList, card);
        Run run;
        run.server.reply(callPath(Call::Session), Reply::json(200, body));
        QVERIFY(run.startSignedIn());
        QCOMPARE(run.view().account(), card);
    }

    void theCoreListOffersTheAvailableCores_data()
    {
        QTest::addColumn<QByteArray>("cores");
        QTest::addColumn<Choices>("choices");
        QTest::newRow("key alone, label alone, both")
            << support::json("[{'key':'a'},{'label':'B'},{'key':'c','label':'C'}]")
            << Choices{{u"a"_s, u"a"_s}, {u"c"_s, u"C"_s}};
        QTest::newRow("the service's order, and duplicates")
            << support::json("[{'key':'z','label':'A'},{'key':'a','label':'Z'},{'key':'z','label':'A'}]")
            << Choices{{u"z"_s, u"A"_s}, {u"a"_s, u"Z"_s}, {u"z"_s, u"A"_s}};
        QTest::newRow("empty key") << support::json("[{'key':'','label':'A'},{'key':'b'}]")
                                   << Choices{{u"b"_s, u"b"_s}};
        QTest::newRow("blanks stay") << support::json("[{'key':' '},{'key':'b','label':' B '}]")
                                     << Choices{{u" "_s, u" "_s}, {u"b"_s, u" B "_s}};
        QTest::newRow("key of another type")
            << support::json("[{'key':1,'label':'One'},{'key':'b'}]") << Choices{{u"b"_s, u"b"_s}};
        QTest::newRow("label of another type") << support::json("[{'key':'a','label':7}]") << Choices{{u"a"_s, u"a"_s}};
        QTest::newRow("empty label stays") << support::json("[{'key':'a','label':''}]") << Choices{{u"a"_s, QString()}};
        QTest::newRow("elements of other types")
            << support::json("[7,'a',null,['a'],{'key':'b'}]") << Choices{{u"b"_s, u"b"_s}};
        QTest::newRow("no array") << support::json("{'key':'a'}") << Choices{{QString(), u"No cores available"_s}};
    }

    void theCoreListOffersTheAvailableCores()
    {
        QFETCH(QByteArray, cores);
        QFETCH(Choices, choices);
        Run run;
        // Cores inside "user" are ignored.
        run.server.reply(callPath(Call::Session),
                         Reply::json(200, support::json("{'user':{'available_cores':[{'key':'wrong'}]},") +
                                              support::json("'available_cores':") + cores + '}'));
        QVERIFY(run.startSignedIn());
        QCOMPARE(choicesOf(run.view().combo(u"Core")), choices);
        QVERIFY(run.view().combo(u"Core")->itemIcon(0).isNull());
    }

    void theCardThenTheCoresThenTheTextThenTheFetch()
    {
        Run run;
        run.server.reply(callPath(Call::Session), Reply::json(200, R"({"message":"Hello","available_cores":[]})"));
        run.startLinked();
        QStringList steps;
        connect(run.view().combo(u"Core"), &QComboBox::currentTextChanged, this, [&](const QString& text) {
            steps.append(text);
            QCOMPARE(run.view().account().constFirst(), u"Signed in as Tarnwick user"_s);
            QCOMPARE(run.view().status(), u"Checking linked Tarnwick session..."_s);
        });
        const support::EnabledWatch fetch(run.view().button(u"Refresh"), [&](bool enabled) {
            steps.append(enabled ? u"fetched"_s : u"fetching"_s);
            QCOMPARE(run.view().status(), u"Tarnwick desktop session ready."_s);
        });
        QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
        QCOMPARE(steps, (QStringList{QString(), u"No cores available"_s, u"fetching"_s, u"fetched"_s}));
    }

    void aLaterCheckReplacesAccountAndCores()
    {
        Run run;
        run.server.reply(callPath(Call::Session),
                         Reply::json(200, R"({"available_cores":[{"key":"a"},{"key":"core-b"}]})"));
        QVERIFY(run.startSignedIn());
        run.view().combo(u"Core")->setCurrentIndex(1);
        run.server.reply(
            callPath(Call::Session),
            Reply::json(200, R"({"user":{"display_name":"Bob"},"available_cores":[{"key":"x"},{"key":"core-b"}]})"));
        QVERIFY(run.pollWith(Reply::json(200, R"({"access_token":"token-2"})")));
        QTRY_COMPARE(run.server.count(callPath(Call::Instances)), 2);
        QCOMPARE(run.view().account(), (QStringList{u"Signed in as Bob"_s, u"Plan: Free"_s, u"Limit: -"_s}));
        QCOMPARE(choicesOf(run.view().combo(u"Core")), (Choices{{u"x"_s, u"x"_s}, {u"core-b"_s, u"core-b"_s}}));
        // Not the choice made before.
        QCOMPARE(run.view().combo(u"Core")->currentIndex(), 0);
    }

private:
    using Run = support::ClientRun;
    using Choices = QList<std::pair<QString, QString>>;

    /// The items of the core list as (data, text).
    static Choices choicesOf(const QComboBox* combo)
    {
        Choices choices;
        for (int index = 0; index < combo->count(); ++index) {
            choices.append({combo->itemData(index).toString(), combo->itemText(index)});
        }
        return choices;
    }
};

TARNWICK_TEST(SessionCheckTest)
#include "session_check_test.moc"
