#pragma once

#include <QDateTime>
#include <QString>
#include <QUrl>
#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "client/listing/Href.h"
#include "client/listing/MultistatusEntry.h"
#include "client/wire/ListingLimits.h"
#include "host/http/DAVPropfindRequest.h"
#include "host/http/DAVPropfindResult.h"

namespace ovsync {
namespace listing {

/// Makes the result of a PROPFIND out of the entries of its answer. Not thread-safe.
///
/// The asked resource is known by its href. It is the single response where it was asked for alone and where it turned
/// out to be a file; a file stands among the file-like entries too, whatever the depth. An asked container is in
/// neither map. The hrefs of file-like entries end in no '/', those of forms neither, so that the path of a form is the
/// path of what lies in it up to the last '/'. Throws SyncException for an entry that lies outside what was asked, that
/// came before, that has a number that is not valid, or that is one more than the limit.
///
/// A whole tree can be put together of the answers for its folders: each is a part, whose entries go into the result
/// that has the folder's own entry already.
class ListingBuilder {
public:
    /// What an answer tells that has only changes: each entry is new, changed or gone, and the asked resource may be
    /// missing.
    struct Changes {
        std::shared_ptr<sync::http::DAVPropfindResult> present;
        /// All of them among the file-like ones.
        std::shared_ptr<sync::http::DAVPropfindResult> gone;
    };

    /// A part when there is a `whole`, whose entries then count for the limit too.
    ListingBuilder(const QUrl& asked, sync::http::DAVPropfindRequest::Depth depth, HrefScope scope,
                   const wire::ListingLimits& limits, const std::shared_ptr<sync::http::DAVPropfindResult>& whole);

    /// For the changes in the tree `asked`, which are added to `changes`.
    ListingBuilder(const QUrl& asked, const wire::ListingLimits& limits, const Changes& changes);

    void Add(const MultistatusEntry& entry);

    /// After the last entry, once. Throws SyncException when the asked resource was not among them.
    std::shared_ptr<sync::http::DAVPropfindResult> Finish();

private:
    /// A form stands among the files but holds others, as a folder does.
    enum class Form { File, FormContainer, Folder };

    /// The last text of a property and what it was read as. Entries next to each other mostly have the same.
    template <typename Value>
    struct Remembered {
        std::string text;
        Value value;
    };

    static Form _FormOf(const QString& classType, bool isCollection);
    bool _IsInScope(const std::string& key) const;
    bool _HasChange(const QString& key) const;
    void _Describe(const MultistatusEntry& entry, const QString& classType, Form form,
                   sync::http::DAVPropfindResponse& response);
    /// Empty when there is none that tells versions apart for sure.
    QString _StrongTag(const MultistatusEntry& entry);
    const QString& _Text(const MultistatusEntry& entry, MultistatusEntry::Property property);
    const QDateTime& _Date(const MultistatusEntry& entry, MultistatusEntry::Property property);

    const sync::http::DAVPropfindRequest::Depth _depth;
    const HrefScope _scope;
    const wire::ListingLimits _limits;
    Href _href;
    std::string _askedKey;
    bool _hasOwn = false;
    bool _isOwnContainer = false;
    sync::http::DAVPropfindResponse _own;
    const sync::http::DAVPropfindResponse _blank;
    const bool _isPart;
    const std::shared_ptr<sync::http::DAVPropfindResult> _result;
    /// Null for a listing.
    std::shared_ptr<sync::http::DAVPropfindResult> _gone;
    bool _isAlone = true;
    std::array<Remembered<QString>, MultistatusEntry::PropertyCount> _texts;
    std::array<Remembered<QDateTime>, MultistatusEntry::PropertyCount> _dates;
};

}  // namespace listing
}  // namespace ovsync
