// Linked with the client's own main(). Reports on standard output what main() does, and behaves as TARNWICK_ENTRY_WISH
// says.
#include <QApplication>
#include <QMainWindow>
#include <QTextStream>
#include <QTimer>

using Qt::StringLiterals::operator""_s;

namespace {

void report(const QString& line)
{
    QTextStream(stdout) << line << Qt::endl;
}

/// Called as soon as the event loop runs.
void obey(const QByteArray& wish)
{
    qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& text) { report(u"printed "_s + text); });
    const QWidgetList widgets = QApplication::topLevelWidgets();
    QWidgetList windows;
    std::copy_if(widgets.cbegin(), widgets.cend(), std::back_inserter(windows),
                 [](const QWidget* widget) { return qobject_cast<const QMainWindow*>(widget) != nullptr; });
    QWidget* window = windows.constFirst();
    report(u"windows %1, %2"_s.arg(windows.size()).arg(window->isVisible() ? u"shown"_s : u"hidden"_s));
    report(u"arguments "_s + QCoreApplication::arguments().sliced(1).join(u' '));
    QObject::connect(window, &QObject::destroyed, window, [] {
        report(qApp != nullptr ? u"window destroyed before the application"_s : u"window outlived it"_s);
    });
    if (wish == "close") {
        window->close();
    } else if (wish.startsWith("exit ")) {
        QCoreApplication::exit(wish.mid(5).toInt());
    }
}

/// Called by the application object while main() constructs it.
void begin()
{
    report(u"names "_s + QCoreApplication::organizationName() + u' ' + QCoreApplication::applicationName());
    qAddPostRoutine([] { report(u"application ends"_s); });
    QTimer::singleShot(0, qApp, [] { obey(qgetenv("TARNWICK_ENTRY_WISH")); });
}
Q_COREAPP_STARTUP_FUNCTION(begin)

} // namespace
