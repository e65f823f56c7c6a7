#include "client/sync/report/OfferedCommand.h"

namespace ovsync {
namespace report {

QString ShellWord(QString word) {
    const QLatin1Char quote('\'');
    return quote + word.replace(quote, QLatin1String("'\\''")) + quote;
}

QString OfferedCommand(const QString& command, const QString& user, const QString& caFile) {
    // A value may begin with a '-'.
    return QStringLiteral("ovsync ") + command +
           (user.isEmpty() ? QString() : QStringLiteral(" --user=") + ShellWord(user)) +
           (caFile.isEmpty() ? QString() : QStringLiteral(" --ca-file=") + ShellWord(caFile));
}

}  // namespace report
}  // namespace ovsync
