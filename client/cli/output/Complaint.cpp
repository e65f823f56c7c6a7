#include "client/cli/output/Complaint.h"

#include <unistd.h>

#include <iostream>

#include "client/cli/output/TerminalText.h"

namespace ovsync {
namespace output {

void Complain(const QString& message) {
    std::cerr << "ovsync: " + ShownInErrors(message).toStdString() + '\n';
}

QByteArray ShownInErrors(const QString& text) {
    return (isatty(STDERR_FILENO) == 1 ? TerminalText(text) : text).toUtf8();
}

}  // namespace output
}  // namespace ovsync
