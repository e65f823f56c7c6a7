#include "client/cli/output/Complaint.h"

#include <unistd.h>

#include <iostream>
#include <nlohmann/json.hpp>

#include "client/cli/output/TerminalText.h"

namespace ovsync {
namespace output {

void Complain(const QString& message) {
    std::cerr << "ovsync: " + ShownInErrors(message).toStdString() + '\n';
}

void Complain(const ErrorMessage& error, ExitCode exitCode, const ErrorStyle& style) {
    if (!style.isJson) {
        Complain(error.text);
        if (style.isVerbose && !error.detail.isEmpty()) {
            Complain(error.detail);
        }
        return;
    }
    nlohmann::ordered_json json{
        {"error", error.text.toStdString()}, {"kind", error.kind}, {"exitStatus", static_cast<int>(exitCode)}};
    if (error.status != 0) {
        json["status"] = error.status;
    }
    if (!error.detail.isEmpty()) {
        json["detail"] = error.detail.toStdString();
    }
    const QByteArray line = QByteArray::fromStdString(json.dump()) + '\n';
    std::cerr << (isatty(STDERR_FILENO) == 1 ? TerminalJson(line) : line).toStdString();
}

QByteArray ShownInErrors(const QString& text) {
    return (isatty(STDERR_FILENO) == 1 ? TerminalText(text) : text).toUtf8();
}

}  // namespace output
}  // namespace ovsync
