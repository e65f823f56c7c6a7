#include "dvsync/CaughtException.h"

#include <exception>

namespace sync {
namespace dv {
namespace dvsync {

QString TextOfCaughtException() {
    try {
        throw;
    } catch (const std::exception& e) {
        return QString::fromUtf8(e.what());
    } catch (...) {
        return QLatin1String("Caught unknown, unexpected exception.  Swallowing exception.");
    }
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
