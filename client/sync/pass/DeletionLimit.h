#pragma once

#include <QString>
#include <limits>
#include <optional>

namespace ovsync {
namespace pass {

/// The most files that one pass may delete: a service that is half restored, or a listing that lies, deletes most of
/// them. A plain value.
class DeletionLimit {
public:
    static const int MostFiles = std::numeric_limits<int>::max();

    /// Half of the files, from ten on.
    DeletionLimit() = default;
    /// "12" for so many files, "30%" for such a part of them. None for anything else.
    static std::optional<DeletionLimit> Read(const QString& text);

    bool IsRead() const { return _unit != Unit::None; }

    /// `isAnyLeft`: whether the side that lacks files has any at all. That everything is gone is believed only of a
    /// limit that was read.
    bool Allows(int deletions, int files, bool isAnyLeft) const;

private:
    enum class Unit { None, Files, Percent };

    Unit _unit = Unit::None;
    int _number = 0;
};

/// For people: what to do first where the limit is not the only thing that is in the way of deletions.
QString TransfersFirst();

}  // namespace pass
}  // namespace ovsync
