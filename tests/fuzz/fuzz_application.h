#pragma once

#include "support/client_window.h"
#include "support/temporary_home.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>

namespace fuzz {

/// Aborts if a condition is false; the fuzzer then saves the input.
inline void demand(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

/// What a window needs: a HOME of its own and an application without a screen.
class FuzzApplication
{
public:
    FuzzApplication()
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "fuzz";
        static char* argv[] = {name, nullptr};
        static auto* const application = new QApplication(argc, argv); // ends with the process
        static_cast<void>(application);
    }

    const support::TemporaryHome home;
};

} // namespace fuzz
