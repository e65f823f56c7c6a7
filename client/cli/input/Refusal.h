#pragma once

#include "host/core/SyncException.h"

namespace ovsync {
namespace input {

/// What the command line asks for cannot be done as things are here; the message says why.
class Refusal : public sync::core::SyncException {
public:
    using SyncException::SyncException;
};

}  // namespace input
}  // namespace ovsync
