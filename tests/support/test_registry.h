#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <string_view>

/**
 * Several test classes are linked into one program and each runs in its own process: the program's first argument names
 * the class by its file, "link_poll_test" for link_poll_test.cpp.
 */
namespace support {

using TestMaker = std::function<std::unique_ptr<QObject>()>;
/// A child process of a test: gets the arguments after its name and returns the exit status.
using ChildProcess = std::function<int(int argc, char** argv)>;

struct TestRegistration
{
    TestRegistration(std::string_view file, TestMaker maker);
};

struct ChildRegistration
{
    ChildRegistration(std::string_view name, ChildProcess process);
};

} // namespace support

/// Registers the class in the program. Put it at the end of the file, before the .moc.
#define TARNWICK_TEST(Class)                                                                                           \
    static const support::TestRegistration register##Class(__FILE__, [] { return std::make_unique<Class>(); });

/// Registers a function as a child process, started as `program NAME ...`. It runs without an application object.
#define TARNWICK_CHILD(name, function) static const support::ChildRegistration register##function(name, function);
