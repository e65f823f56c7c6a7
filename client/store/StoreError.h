#pragma once

#include "host/core/SyncException.h"

namespace ovsync {
namespace store {

/// The records cannot be read or written. The message names the database and says why.
class StoreError : public sync::core::SyncException {
public:
    using SyncException::SyncException;
};

}  // namespace store
}  // namespace ovsync
