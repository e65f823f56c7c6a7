#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "service/protocol/IBody.h"
#include "service/protocol/PropfindRequest.h"
#include "service/tree/Checksums.h"
#include "service/tree/Listing.h"
#include "service/tree/LiveProperty.h"

namespace service::dav {

/// The multistatus document that answers a PROPFIND or a REPORT. It is made piece by piece while it is read, and so are
/// a few checksums that are not known yet; files have to do without the others, which are computed later.
class PropfindAnswer : public protocol::IBody {
public:
    /// For `entries`; `isMinimal` leaves out the properties that a resource lacks. `checksums` must outlive
    /// this object. `trailer` stands behind the entries.
    PropfindAnswer(std::vector<tree::Listing::Entry> entries, protocol::PropfindRequest request, bool isMinimal,
                   tree::Checksums& checksums, std::string trailer = {});

    std::optional<std::uint64_t> Size() const override { return std::nullopt; }
    std::size_t Read(char* buffer, std::size_t size) override;

private:
    struct Wanted {
        /// Null for a dead property.
        const tree::LiveProperty* live;
        protocol::PropertyName name;
        /// The element without a value, for those who lack it. Empty: nobody asked for it by name.
        std::string empty;
    };

    void _Append(tree::Listing::Entry& entry);
    void _AppendNames(const tree::Listing::Entry& entry);
    void _AppendValues(const tree::Listing::Entry& entry);
    void _CompleteChecksum(tree::Listing::Entry& entry);

    std::vector<tree::Listing::Entry> _entries;
    protocol::PropfindRequest::Kind _kind;
    std::vector<Wanted> _wanted;
    bool _isMinimal;
    bool _needsChecksums = false;
    tree::Checksums& _checksums;
    // How many bytes of content may still be read.
    std::int64_t _bytesLeft = 16777216;
    std::size_t _next = 0;
    std::string _text;
    std::size_t _position = 0;
    std::string _missing;
    // What stands before the end of the document.
    std::string _trailer;
    bool _isEnded = false;
};

/// Whether a PROPFIND needs to know the dead properties.
bool WantsDeadProperties(const protocol::PropfindRequest& request);

/// Whether a PROPFIND asks for the sync token of collections.
bool WantsSyncToken(const protocol::PropfindRequest& request);

/// Appends an element for `name` without a value, for use in a multistatus document.
void AppendEmptyElement(std::string& xml, const protocol::PropertyName& name);

/// What a multistatus document begins and ends with.
std::string MultistatusBegin();
inline constexpr std::string_view MultistatusEnd = "</D:multistatus>\n";

}  // namespace service::dav
