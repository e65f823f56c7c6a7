#pragma once

#include "host/core/SyncException.h"

namespace ovsync {
namespace input {

/// The command line asks for something that makes no sense; the message says what.
class UsageError : public sync::core::SyncException {
public:
    using SyncException::SyncException;
};

}  // namespace input
}  // namespace ovsync
