#include "test_registry.h"

#include <QApplication>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <filesystem>
#include <map>
#include <string>

using Qt::StringLiterals::operator""_s;

namespace support {

namespace {

std::map<std::string, TestMaker>& registeredTests()
{
    static std::map<std::string, TestMaker> tests;
    return tests;
}

std::map<std::string, ChildProcess>& registeredChildren()
{
    static std::map<std::string, ChildProcess> children;
    return children;
}

/// Neither the client nor Qt may print anything that a test does not expect. QtTest writes all messages to its log.
QStringList unexpectedMessages(const QString& log)
{
    QFile file(log);
    if (!file.open(QIODevice::ReadOnly)) {
        return {u"No log at %1"_s.arg(log)};
    }
    static const QRegularExpression message(u"^Q(WARN|DEBUG|INFO|CRITICAL|SYSTEM|FATAL) *:"_s);
    return QString::fromUtf8(file.readAll()).split(u'\n').filter(message);
}

int runTest(QObject& test, const QStringList& arguments)
{
    const QTemporaryDir folder;
    const QString log = folder.filePath(u"log"_s);
    const int failures = QTest::qExec(&test, arguments + QStringList{u"-o"_s, log + u",txt"_s, u"-o"_s, u"-,txt"_s});
    const QStringList messages = unexpectedMessages(log);
    if (!messages.isEmpty()) {
        std::printf("FAIL!  : nothing may be printed, but these were:\n%s\n", qPrintable(messages.join(u'\n')));
    }
    return failures + (messages.isEmpty() ? 0 : 1);
}

} // namespace

TestRegistration::TestRegistration(std::string_view file, TestMaker maker)
{
    registeredTests().emplace(std::filesystem::path(file).stem().string(), std::move(maker));
}

ChildRegistration::ChildRegistration(std::string_view name, ChildProcess process)
{
    registeredChildren().emplace(name, std::move(process));
}

} // namespace support

int main(int argc, char** argv)
{
    const std::string name = argc > 1 ? argv[1] : "";
    if (const auto child = support::registeredChildren().find(name); child != support::registeredChildren().end()) {
        return child->second(argc - 1, argv + 1);
    }
    const auto test = support::registeredTests().find(name);
    if (test == support::registeredTests().end()) {
        std::puts("Name one of these tests:");
        for (const auto& [known, maker] : support::registeredTests()) {
            std::puts(known.c_str());
        }
        return 2;
    }
    QApplication application(argc, argv);
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    QStringList arguments = QCoreApplication::arguments();
    arguments.removeAt(1);
    return support::runTest(*test->second(), arguments);
}
