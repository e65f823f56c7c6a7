#pragma once

#include <QCoreApplication>

namespace ovsync {
namespace input {

/// The process's QCoreApplication, for what needs an event loop. There can be one at a time.
class Application {
public:
    Application() : _application(_argumentCount, _arguments) {}

private:
    int _argumentCount = 1;
    char _program[7] = "ovsync";
    char* _arguments[2] = {_program, nullptr};
    const QCoreApplication _application;
};

}  // namespace input
}  // namespace ovsync
