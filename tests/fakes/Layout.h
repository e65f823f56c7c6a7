#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

/// How classes lie in memory, as what was built with their headers takes it to be.

namespace tests {

/// At which bytes of `object` its `members` begin.
template <typename Object>
std::vector<std::size_t> OffsetsIn(const Object& object, const std::vector<const void*>& members) {
    std::vector<std::size_t> offsets;
    offsets.reserve(members.size());
    for (const void* const member : members) {
        offsets.push_back(
            static_cast<std::size_t>(static_cast<const char*>(member) - reinterpret_cast<const char*>(&object)));
    }
    return offsets;
}

/// The place of a virtual operation in the virtual table. In the C++ ABI of every compiler but Microsoft's, a pointer
/// to a virtual member function holds one more than the offset of the operation.
template <typename Operation>
std::size_t SlotOf(Operation operation) {
    static_assert(sizeof(operation) == 2 * sizeof(std::ptrdiff_t), "not a pointer to a member function");
    std::ptrdiff_t representation = 0;
    std::memcpy(&representation, &operation, sizeof(representation));
    EXPECT_EQ(representation % 2, 1) << "not virtual";
    return static_cast<std::size_t>(representation - 1) / sizeof(void*);
}

/// Adds one virtual operation, so that its place tells how many there are.
template <typename Class>
class Behind : public Class {
public:
    static std::size_t Slot() { return SlotOf(&Behind::_Next); }

private:
    virtual void _Next() {}
};

/// How many places the virtual table of `Class` has.
template <typename Class>
std::size_t SlotCountOf() {
    return Behind<Class>::Slot();
}

}  // namespace tests
