#pragma once

#include <QString>
#include <memory>

#include "client/wire/ListingSupplement.h"

namespace ovsync {
namespace wire {

/// How large a listing may become, and where it puts what it cannot hold. A plain value, but for the supplement, which
/// its copies share.
struct ListingLimits {
    struct Limit {
        qint64 value;
        /// Who set it, or what sets it, as an error names it.
        QString source;
    };

    Limit entries = {5000000, QStringLiteral("this client")};
    /// Of the answer's body, uncompressed.
    Limit bytes = {qint64(4) * 1024 * 1024 * 1024, QStringLiteral("this client")};
    std::shared_ptr<ListingSupplement> supplement = std::make_shared<ListingSupplement>();
};

}  // namespace wire
}  // namespace ovsync
