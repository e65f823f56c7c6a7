#pragma once

#include <cstddef>

namespace ovsync {
namespace wire {

/// Whether `rows` has one row for each enumerator from 0 to `last`, in their order, so that an enumerator is the index
/// of its row. `member` is the enumerator in a row.
template <typename Row, typename Enumerator, std::size_t Size>
constexpr bool HasRowOfEach(const Row (&rows)[Size], Enumerator Row::*member, Enumerator last) {
    for (std::size_t i = 0; i < Size; ++i) {
        if (static_cast<std::size_t>(rows[i].*member) != i) {
            return false;
        }
    }
    return Size == static_cast<std::size_t>(last) + 1;
}

}  // namespace wire
}  // namespace ovsync
