#include "client/cli/Complaint.h"

#include <unistd.h>

#include <iostream>

#include "client/cli/TerminalText.h"

namespace ovsync {
namespace cli {

void Complain(const QString& message) {
    std::cerr << "ovsync: " + ShownInErrors(message).toStdString() + '\n';
}

QByteArray ShownInErrors(const QString& text) {
    return (isatty(STDERR_FILENO) == 1 ? TerminalText(text) : text).toUtf8();
}

}  // namespace cli
}  // namespace ovsync
