#include "support/client_test.h"

#include <QAccessible>
#include <QObject>

using support::Call;
using support::callPath;
using support::Reply;

/// Names for screen readers, and the service's texts as plain text.
class AccessibilityTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aChangedTextIsWhatItsLabelIsCalled()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        QCOMPARE(nameOf(run.view().label(u"StatusText"_s)), u"Loaded 1 Tarnwick project(s)."_s);
        QCOMPARE(nameOf(run.view().label(u"PrimaryValue"_s)), u"Signed in as Ann"_s);
        run.press(u"Unlink");
        QCOMPARE(nameOf(run.view().label(u"StatusText"_s)), u"Tarnwick desktop client unlinked."_s);
        QCOMPARE(nameOf(run.view().label(u"PrimaryValue"_s)), u"Not linked yet"_s);
    }

    void serviceTextsAreShownAsTheyWereSent()
    {
        Run run;
        const QString markup = u"<b>Ann</b><img src=\"file:///etc/hosts\">&amp;"_s;
        const QJsonObject user{{u"display_name"_s, markup}, {u"plan_name"_s, markup}, {u"gdps_limit_label"_s, markup}};
        run.server.reply(callPath(Call::Session), Reply::json(200, QJsonObject{{u"user"_s, user}}));
        run.server.reply(callPath(Call::Instances), Reply::json(500, QJsonObject{{u"message"_s, markup}}));
        run.startLinked();
        QTRY_COMPARE(run.view().status(), markup);
        QCOMPARE(run.view().account(),
                 (QStringList{u"Signed in as "_s + markup, u"Plan: "_s + markup, u"Limit: "_s + markup}));
        QList<QLabel*> labels = run.window().findChildren<QLabel*>(u"MutedValue"_s);
        labels.append(run.view().label(u"PrimaryValue"_s));
        labels.append(run.view().label(u"StatusText"_s));
        QCOMPARE(labels.size(), 4);
        for (QLabel* label : labels) {
            // Every character needs space; as markup, most of them would not be drawn.
            label->setWordWrap(false);
            QVERIFY(label->sizeHint().width() >= label->fontMetrics().horizontalAdvance(label->text()));
        }
    }

private:
    using Run = support::ClientRun;

    static QString nameOf(QWidget* widget)
    {
        return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
    }
};

TARNWICK_TEST(AccessibilityTest)
#include "accessibility_test.moc"
