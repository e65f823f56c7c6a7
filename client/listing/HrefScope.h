#pragma once

namespace ovsync {
namespace listing {

/// Which hrefs the entries of an answer may have.
enum class HrefScope {
    /// That of the URL that was asked and, by the depth, those below it.
    OfUrl,
    /// The one entry has any href: what was asked was not named by its path. For Depth 0 only.
    Any
};

}  // namespace listing
}  // namespace ovsync
