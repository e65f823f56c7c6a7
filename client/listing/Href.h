#pragma once

#include <QUrl>
#include <cstddef>
#include <string>

namespace ovsync {
namespace listing {

/// Which hrefs the entries of an answer may have.
enum class HrefScope {
    /// That of the URL that was asked and, by the depth, those below it.
    OfUrl,
    /// The one entry has any href: what was asked was not named by its path. For Depth 0 only.
    Any
};

/// Reads the hrefs of an answer, one after the other. The raw path is split at its slashes first, then each segment is
/// decoded, once: an escaped slash stays part of its segment. Keeps its buffers, so that reading an href allocates
/// nothing once they have grown. Not thread-safe.
class Href {
public:
    /// Relative references are resolved against `asked`, and absolute URLs must name its host.
    explicit Href(const QUrl& asked);

    /// Takes an absolute path, an absolute http or https URL (its scheme and port may differ from those asked, as they
    /// do behind a proxy), or a reference relative to what was asked, which an empty one stands for itself. '#' and '?'
    /// are read as part of the path. Throws SyncException when it names another host or has a '.' or '..' segment or a
    /// NUL, escaped or not; the values of the operations below are then unspecified.
    void Read(const char* text, size_t size);

    /// The absolute path, its segments percent-encoded, without empty segments. The text as it was read where that is
    /// already so: escapes that are not needed stay, and so do their letter case and a trailing slash.
    const std::string& Path() const { return _path; }

    /// The decoded segments in UTF-8, joined with '/', without a leading or trailing one; "" for the root. '%' and '/'
    /// inside a segment stand as %25 and %2F, and a segment that is not UTF-8 stays encoded. Equal keys are the same
    /// resource.
    const std::string& Key() const { return _key; }

    /// The last segment of Path(); "" for the root.
    std::string EncodedName() const;
    /// The last segment decoded; a '/' inside it stays %2F, and a segment that is not UTF-8 stays encoded.
    std::string DecodedName() const;

    /// The key of the collection that the resource with the key `key` lies in.
    static std::string ParentKey(const std::string& key);

private:
    void _ReadPath(const char* text, size_t size);
    void _AppendSegment(const char* text, size_t size);

    std::string _host;
    std::string _asked;
    std::string _base;
    std::string _path;
    std::string _key;
    std::string _segment;
};

}  // namespace listing
}  // namespace ovsync
