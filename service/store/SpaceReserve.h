#pragma once

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace service::store {

/// Space on the disk that is set aside for when there is no other: a file that is there for its size. So metadata can
/// still be written on a full disk, which reading and removing files takes. Used by one thread at a time.
class SpaceReserve {
public:
    /// `file` is where it lies, or is to lie.
    explicit SpaceReserve(std::string file) : _file(std::move(file)) {}

    /// Sets the space aside, unless it is already, as far as there is any.
    void Fill();

    /// Gives the space to whoever needs it. Returns whether there was any.
    bool Release();

private:
    std::string _file;
};

/// Runs `operation`, and as long as the disk is too full for it, again after `makeSpace`, which is told how often it
/// was called before and returns whether it is worth another try.
template <typename Operation, typename MakeSpace>
auto WithSpace(Operation operation, MakeSpace makeSpace) {
    for (int calls = 0;; ++calls) {
        try {
            return operation();
        } catch (const std::system_error& error) {
            if ((error.code().value() != ENOSPC && error.code().value() != EDQUOT) || !makeSpace(calls)) {
                throw;
            }
        }
    }
}

}  // namespace service::store
