#include "client/cli/input/NumberRange.h"

#include <CLI/CLI.hpp>
#include <QString>
#include <string>

namespace ovsync {
namespace input {

namespace {

/// `read` makes a number of a text, and says whether it is one.
template <typename Limit, typename Reader>
CLI::Validator RangeOf(Limit least, Limit most, Reader read) {
    const QString range = QStringLiteral("%1 to %2").arg(QString::number(least), QString::number(most));
    return CLI::Validator(
        [=](std::string& text) {
            bool isNumber = false;
            const Limit number = read(QString::fromStdString(text), &isNumber);
            return isNumber && number >= least && number <= most ? std::string()
                                                                 : QStringLiteral("\"%1\" is not a number from %2")
                                                                       .arg(QString::fromStdString(text), range)
                                                                       .toStdString();
        },
        range.toStdString());
}

}  // namespace

CLI::Validator WholeNumber(qint64 least, qint64 most) {
    return RangeOf(least, most, [](const QString& text, bool* isNumber) { return text.toLongLong(isNumber); });
}

CLI::Validator Number(double least, double most) {
    return RangeOf(least, most, [](const QString& text, bool* isNumber) { return text.toDouble(isNumber); });
}

}  // namespace input
}  // namespace ovsync
