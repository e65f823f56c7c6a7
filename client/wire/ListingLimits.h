#pragma once

#include <QString>

namespace ovsync {
namespace wire {

/// How large a listing may become. A plain value.
struct ListingLimits {
    struct Limit {
        qint64 value;
        /// Who set it, or what sets it, as an error names it.
        QString source;
    };

    Limit entries = {5000000, QStringLiteral("this client")};
    /// Of the answer's body, uncompressed.
    Limit bytes = {qint64(4) * 1024 * 1024 * 1024, QStringLiteral("this client")};
};

}  // namespace wire
}  // namespace ovsync
