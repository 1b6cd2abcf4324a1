#include "support/client_test.h"

#include "widget_tree.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QObject>
#include <QProxyStyle>

/// Every widget and layout in a new window, and everything in which they differ from Qt's defaults.
class WindowTreeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = QDir::currentPath();
        QDir::setCurrent(QDir::tempPath()); // no logo is found there
        m_style = QApplication::style()->name();
        QApplication::setStyle(new OtherDesktop);
    }
    void cleanup()
    {
        qApp->setStyleSheet({});
        QApplication::setStyle(m_style);
        QApplication::setPalette({});
        QDir::setCurrent(m_folder);
    }

    void theNewWindowIsAsStated()
    {
        Run run;
        run.setOrigin(u" hosting.example// "_s); // the field shows it trimmed
        run.start();
        // Only what the window sets itself: the style sheet would hide fonts and colours.
        qApp->setStyleSheet({});
        QFile table(QFINDTESTDATA("new_window.txt"));
        QVERIFY(table.open(QIODevice::ReadOnly));
        const QString stated = QString::fromUtf8(table.readAll())
                                   .replace(u"PUBLIC-HOST"_s, support::publicHost())
                                   .replace(u"PLATFORM"_s, platformName());
        QCOMPARE(support::widgetTree(&run.window()), stated.split(u'\n', Qt::SkipEmptyParts));
    }

private:
    /// A desktop whose defaults differ from all values that the client sets itself.
    class OtherDesktop : public QProxyStyle
    {
    public:
        int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                      QStyleHintReturn* data) const override
        {
            switch (hint) {
            case SH_FormLayoutLabelAlignment:
                return int(Qt::AlignRight);
            case SH_FormLayoutFormAlignment:
                return int(Qt::AlignCenter);
            default:
                return QProxyStyle::styleHint(hint, option, widget, data);
            }
        }
        int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override
        {
            switch (metric) {
            case PM_LayoutHorizontalSpacing:
            case PM_LayoutVerticalSpacing:
                return 5;
            default:
                return QProxyStyle::pixelMetric(metric, option, widget);
            }
        }
    };

    using Run = support::ClientRun;

    static QString platformName()
    {
#if defined(Q_OS_MACOS)
        return u"macOS"_s;
#elif defined(Q_OS_WIN)
        return u"Windows"_s;
#elif defined(Q_OS_LINUX)
        return u"Linux"_s;
#else
        return u"Unix"_s;
#endif
    }

    QString m_folder;
    QString m_style;
};

TARNWICK_TEST(WindowTreeTest)
#include "window_tree_test.moc"
