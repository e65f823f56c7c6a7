#pragma once

#include <QByteArray>
#include <QString>

#include "client/cli/output/ErrorText.h"
#include "client/cli/output/ExitCode.h"

namespace ovsync {
namespace output {

/// What goes to standard error. On a terminal it is TerminalText. Thread-safe.

/// How failures are told. A plain value.
struct ErrorStyle {
    /// An object on a line of its own.
    bool isJson = false;
    /// With what is left out where it is for people: the details.
    bool isVerbose = false;
};

/// A line of its own, with the program's name before it.
void Complain(const QString& message);

/// A failure that the program will end with `exitCode` for.
void Complain(const ErrorMessage& error, ExitCode exitCode, const ErrorStyle& style);

/// What a program goes on in spite of.
void Warn(const ErrorMessage& warning, const ErrorStyle& style);

/// `text` as it may be shown there.
QByteArray ShownInErrors(const QString& text);

}  // namespace output
}  // namespace ovsync
