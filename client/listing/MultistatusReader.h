#pragma once

#include <QByteArray>
#include <QUrl>
#include <cstddef>
#include <memory>

#include "client/listing/Href.h"
#include "client/listing/ListingBuilder.h"
#include "client/wire/ListingLimits.h"
#include "host/http/DAVPropfindRequest.h"
#include "host/http/DAVPropfindResult.h"

namespace ovsync {
namespace listing {

/// Reads the multistatus document that answers a PROPFIND, in pieces of any size as they arrive. Elements are matched
/// by namespace and local name. Not thread-safe.
///
/// A document is a listing only when it is complete, well-formed, has a multistatus as its root and no document type
/// declaration, and when every entry in it can be placed: it has one href, inside the scope of the request, that did
/// not come before, and no status that says it could not be read; when the asked resource is among the entries; and
/// when these are not more than the limit. Anything else throws a SyncException that says what is wrong, and nothing of
/// the listing is handed out.
///
/// Memory is bounded by the entry: an href above 16 KiB, a value above 64 KiB, values of one entry above 1 MiB, an
/// attribute or a comment above 64 KiB and elements nested deeper than 64 are errors.
///
/// A server that knows no class types is listed too: a collection is a folder and anything else a file, the item id is
/// "path:" and the entry's key, and the resource id and the parent's are hashes of the keys, the same in every listing.
/// They have 31 bits, so that among many thousand entries two can be equal; item ids never are.
///
/// \code
/// #include <QFile>
/// #include <iostream>
///
/// QFile answer(QStringLiteral("answer.xml"));
/// answer.open(QIODevice::ReadOnly);
/// ovsync::listing::MultistatusReader reader(QUrl(QStringLiteral("http://localhost:8080/Projects/")),
///                                           sync::http::DAVPropfindRequest::Children);
/// while (!answer.atEnd()) {
///     const QByteArray piece = answer.read(16384);
///     reader.Feed(piece.constData(), size_t(piece.size()));
/// }
/// std::cout << reader.Finish()->fileResponses.size() << " files\n";
/// \endcode
class MultistatusReader {
public:
    /// For the answer to a request of `asked` with `depth`. Of the limits, only that of the entries counts here. With a
    /// `whole`, which has the entry of `asked`, what lies in that goes there, and Finish returns it: so the answers for
    /// its folders make one listing of a tree. It is good for nothing after an exception.
    MultistatusReader(const QUrl& asked, sync::http::DAVPropfindRequest::Depth depth,
                      HrefScope scope = HrefScope::OfUrl, const wire::ListingLimits& limits = wire::ListingLimits(),
                      const std::shared_ptr<sync::http::DAVPropfindResult>& whole = nullptr);
    /// For the answer that tells what changed in the tree `asked`, and adds to `changes`. It need not have the asked
    /// resource.
    MultistatusReader(const QUrl& asked, const wire::ListingLimits& limits, const ListingBuilder::Changes& changes);
    ~MultistatusReader();
    MultistatusReader(const MultistatusReader&) = delete;
    MultistatusReader& operator=(const MultistatusReader&) = delete;

    /// Throws SyncException; the reader is then good for nothing but destruction.
    void Feed(const char* bytes, size_t size);

    /// The listing, after the last byte; without a server time. To be called once. Throws SyncException.
    std::shared_ptr<sync::http::DAVPropfindResult> Finish();

    /// By which a server knows what the document tells; empty when it has none. After Finish.
    QByteArray SyncToken() const;

private:
    class Document;

    std::unique_ptr<Document> _document;
};

}  // namespace listing
}  // namespace ovsync
