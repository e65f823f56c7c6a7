#pragma once

#include <QString>
#include <exception>

namespace ovsync {
namespace check {

/// Something that was found where two sides are not known to be the same. A plain value.
struct CheckFinding {
    enum class Kind {
        /// What is neither a file nor a folder, and no pass ever syncs. Says nothing about the two sides.
        Skipped,
        OnlyHere,
        OnlyThere,
        Different,
        /// It could not be found out.
        Unknown
    };

    Kind kind = Kind::Unknown;
    /// Below the compared folder.
    QString path;
    /// What a person should know besides; may be empty.
    QString detail;
    /// What failed, where something did; `detail` is then its message.
    std::exception_ptr error = nullptr;
};

}  // namespace check
}  // namespace ovsync
