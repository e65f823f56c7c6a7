#pragma once

#include <QString>

namespace sync {
namespace dv {
namespace dvsync {

/// What the exception that is being handled says of itself. To be called in a handler only. Thread-safe.
QString TextOfCaughtException();

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
