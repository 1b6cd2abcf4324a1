#include "support/client_test.h"

#include <QAccessible>
#include <QObject>

/// Names for screen readers. window_tree_test has those that never change.
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

private:
    using Run = support::ClientRun;

    static QString nameOf(QWidget* widget)
    {
        return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
    }
};

TARNWICK_TEST(AccessibilityTest)
#include "accessibility_test.moc"
