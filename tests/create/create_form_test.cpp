#include "support/client_test.h"

#include <QStandardItemModel>

#include <functional>
#include <utility>

using support::Call;
using support::callPath;

namespace {

/// The items of a combo box. Calls the test when the first of them is read next.
class ReadWatch : public QStandardItemModel
{
public:
    explicit ReadWatch(std::function<void()> notify) : m_notify(std::move(notify)) {}

    QVariant data(const QModelIndex& index, int role) const override
    {
        if (std::exchange(isWatching, false)) {
            m_notify();
        }
        return QStandardItemModel::data(index, role);
    }

    mutable bool isWatching = false;

private:
    std::function<void()> m_notify;
};

} // namespace

/// What the creation form checks and shows before its request is sent.
class CreateFormTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anUnlinkedDesktopIsTurnedAwayFirst_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("without a name") << QString();
        QTest::newRow("with a name") << u"Neon"_s;
    }

    void anUnlinkedDesktopIsTurnedAwayFirst()
    {
        QFETCH(QString, name);
        Run run;
        run.start();
        run.view().line(u"GDPS Name")->setText(name);
        run.forcePress(u"Create GDPS");
        QCOMPARE(run.view().status(), u"Link the desktop client first."_s);
        QCOMPARE(run.view().line(u"GDPS Name")->text(), name);
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(), 1);
    }

    void aMissingNameIsTurnedAway_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("empty") << QString();
        QTest::newRow("blanks") << u"   "_s;
        QTest::newRow("a tab and a wide blank") << u"\t\u3000"_s;
    }

    void aMissingNameIsTurnedAway()
    {
        QFETCH(QString, name);
        Run run;
        QVERIFY(run.startSignedIn());
        support::fillCreationForm(run.view());
        run.view().line(u"GDPS Name")->setText(name);
        const QStringList before = support::creationFormIn(run.view()).words();
        run.view().tabs()->setCurrentIndex(1);
        run.window().show();
        QVERIFY(QTest::qWaitForWindowActive(&run.window()));
        run.view().line(u"Accent")->setFocus();
        run.press(u"Create GDPS");
        QCOMPARE(run.view().status(), u"Enter a GDPS name first."_s);
        QCOMPARE(support::creationFormIn(run.view()).words(), before);
        QVERIFY(run.view().button(u"Create GDPS")->isEnabled());
        QVERIFY(run.view().line(u"Accent")->hasFocus());
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(callPath(Call::CreateInstance)), 0);
    }

    void aMissingNameIsNoticedWhileCreatingToo()
    {
        Run run;
        QVERIFY(run.prepare(Call::CreateInstance));
        QVERIFY(run.holdCall(Call::CreateInstance));
        run.view().line(u"GDPS Name")->clear();
        run.forcePress(u"Create GDPS");
        QCOMPARE(run.view().status(), u"Enter a GDPS name first."_s);
    }

    void nothingIsCreatedWhenTheTokenGoesInBetween()
    {
        Run run;
        QVERIFY(run.prepare(Call::CreateInstance));
        ReadWatch presets([&run] { support::WindowInside(run.window()).setState({}); });
        presets.appendRow(new QStandardItem(u"own"_s));
        run.view().combo(u"Preset")->setModel(&presets);
        presets.isWatching = true;
        run.press(u"Create GDPS");
        QVERIFY(!presets.isWatching);
        QCOMPARE(run.view().status(), u"Creating your GDPS from the Tarnwick desktop client..."_s);
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(callPath(Call::CreateInstance)), 0);
    }

private:
    using Run = support::ClientRun;
};

TARNWICK_TEST(CreateFormTest)
#include "create_form_test.moc"
