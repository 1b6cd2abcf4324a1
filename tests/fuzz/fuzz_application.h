#pragma once

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

namespace fuzz {

/// Ends the run when something that must hold does not; the input that led to it is kept.
inline void demand(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

/// What a window needs around it: an application without a screen, and a home of its own, in memory if possible.
class FuzzApplication
{
public:
    FuzzApplication()
        : homeFolder((QDir(QStringLiteral("/dev/shm")).exists() ? QStringLiteral("/dev/shm") : QDir::tempPath()) +
                     QStringLiteral("/tarnwick-fuzz-XXXXXX"))
    {
        demand(homeFolder.isValid(), "there is a home");
        qputenv("HOME", homeFolder.path().toUtf8());
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "fuzz";
        static char* argv[] = {name, nullptr};
        application = new QApplication(argc, argv); // ends with the process
    }

    QString stateFolder() const { return homeFolder.path() + QStringLiteral("/Library/Application Support/Tarnwick"); }
    QString stateFile() const { return stateFolder() + QStringLiteral("/pc-client-state.json"); }

private:
    QTemporaryDir homeFolder;
    QApplication* application = nullptr;
};

} // namespace fuzz
