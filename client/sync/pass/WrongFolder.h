#pragma once

#include "host/core/SyncException.h"

namespace ovsync {
namespace pass {

/// What was named cannot be synced: it is no folder of the service, or the local folder is in step with another one.
/// The message says so.
class WrongFolder : public sync::core::SyncException {
public:
    using SyncException::SyncException;
};

}  // namespace pass
}  // namespace ovsync
