#include "client/cli/output/Complaint.h"

#include <unistd.h>

#include <iostream>
#include <nlohmann/json.hpp>

#include "client/cli/output/TerminalText.h"

namespace ovsync {
namespace output {

namespace {

void WriteText(const ErrorMessage& message, bool isVerbose) {
    Complain(message.text);
    if (isVerbose && !message.detail.isEmpty()) {
        Complain(message.detail);
    }
}

/// `json` begins with what kind of message it is.
void WriteJson(nlohmann::ordered_json json, const ErrorMessage& message) {
    if (message.status != 0) {
        json["status"] = message.status;
    }
    if (!message.detail.isEmpty()) {
        json["detail"] = message.detail.toStdString();
    }
    const QByteArray line = QByteArray::fromStdString(json.dump()) + '\n';
    std::cerr << (isatty(STDERR_FILENO) == 1 ? TerminalJson(line) : line).toStdString();
}

}  // namespace

void Complain(const QString& message) {
    std::cerr << "ovsync: " + ShownInErrors(message).toStdString() + '\n';
}

void Complain(const ErrorMessage& error, ExitCode exitCode, const ErrorStyle& style) {
    if (style.isJson) {
        WriteJson(
            {{"error", error.text.toStdString()}, {"kind", error.kind}, {"exitStatus", static_cast<int>(exitCode)}},
            error);
    } else {
        WriteText(error, style.isVerbose);
    }
}

void Warn(const ErrorMessage& warning, const ErrorStyle& style) {
    if (style.isJson) {
        WriteJson({{"warning", warning.text.toStdString()}, {"kind", warning.kind}}, warning);
    } else {
        WriteText(warning, style.isVerbose);
    }
}

QByteArray ShownInErrors(const QString& text) {
    const QString visible = VisibleText(text);
    return (isatty(STDERR_FILENO) == 1 ? TerminalText(visible) : visible).toUtf8();
}

}  // namespace output
}  // namespace ovsync
