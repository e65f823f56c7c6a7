#pragma once

#include "client/store/StoreError.h"

namespace ovsync {
namespace store {

/// Another process has the records of the synced folder open.
class FolderBusy : public StoreError {
public:
    using StoreError::StoreError;
};

}  // namespace store
}  // namespace ovsync
