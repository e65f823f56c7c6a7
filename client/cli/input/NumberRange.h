#pragma once

#include <QtGlobal>

namespace CLI {
class Validator;
}

/// What a numeric option may be; what else it is given is refused with the range. Thread-safe.

namespace ovsync {
namespace input {

CLI::Validator WholeNumber(qint64 least, qint64 most);
CLI::Validator Number(double least, double most);

}  // namespace input
}  // namespace ovsync
