// The client right after its start, before anything is pressed.
#include "support/client_test.h"

#include <QApplication>
#include <QEvent>
#include <QMainWindow>

namespace {

/// Counts the labels that the main window contains when it gets a style change event.
class StyleChangeWatcher : public QObject
{
public:
    StyleChangeWatcher() { qApp->installEventFilter(this); }

    qsizetype labels = -1;

protected:
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::StyleChange && qobject_cast<QMainWindow*>(object) != nullptr) {
            labels = object->findChildren<QLabel*>().size();
        }
        return false;
    }
};

} // namespace

class StartUpTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyStartOpensAtTheSameSize()
    {
        const support::TemporaryHome home;
        for (int start = 0; start < 2; ++start) {
            const auto window = support::newClientWindow();
            QCOMPARE(window->windowTitle(), u"Tarnwick Client"_s);
            window->show();
            QVERIFY(QTest::qWaitForWindowExposed(window.get()));
            QCOMPARE(window->size(), QSize(1220, 860));
            QVERIFY(!window->testAttribute(Qt::WA_Moved));
            window->setGeometry(30, 40, 1500, 1000);
            QVERIFY(window->close());
        }
    }

    void isAPlainMainWindow()
    {
        const support::TemporaryHome home;
        const auto window = support::newClientWindow();
        QCOMPARE(window->metaObject(), &QMainWindow::staticMetaObject);
        QCOMPARE(window->parent(), nullptr);
        const QMainWindow plain;
        QCOMPARE(window->windowFlags(), plain.windowFlags());
    }

    void theSheetIsTheWholeApplicationsAndComesAfterTheWidgets()
    {
        const support::TemporaryHome home;
        qApp->setStyleSheet(QString());
        const StyleChangeWatcher watcher;
        const auto window = support::newClientWindow();
        QVERIFY(qApp->styleSheet().contains(u"QLabel#HeroTitle"_s));
        QCOMPARE(window->styleSheet(), QString());
        QCOMPARE(watcher.labels, window->findChildren<QLabel*>().size());
    }
};

TARNWICK_TEST(StartUpTest)
#include "start_up_test.moc"
