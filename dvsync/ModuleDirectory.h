#pragma once

#include <QString>

namespace sync {
namespace dv {
namespace dvsync {

/// The absolute directory of a module that is loaded into this process, named without directory and extension
/// ("OvSyncCore"); empty when there is none. Thread-safe.
QString GetModuleDirectory(QString moduleName);

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
