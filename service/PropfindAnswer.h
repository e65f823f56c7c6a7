#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "service/Body.h"
#include "service/Listing.h"
#include "service/LiveProperty.h"
#include "service/PropfindRequest.h"

namespace service {

class ServiceTree;

/// The multistatus document that answers a PROPFIND. It is made piece by piece while it is read, and so are checksums
/// that are not known yet.
class PropfindAnswer : public Body {
public:
    /// `minimal` leaves out the properties that a resource lacks. `tree` must outlive this object.
    PropfindAnswer(Listing listing, PropfindRequest request, bool isMinimal, ServiceTree& tree);

    std::optional<std::uint64_t> Size() const override { return std::nullopt; }
    std::size_t Read(char* buffer, std::size_t size) override;

private:
    struct Wanted {
        /// Null for a dead property.
        const LiveProperty* live;
        PropertyName name;
        /// The element without a value, for those who lack it. Empty: nobody asked for it by name.
        std::string empty;
    };

    void _Append(Listing::Entry& entry);
    void _AppendNames(const Listing::Entry& entry);
    void _AppendValues(const Listing::Entry& entry);
    void _KeepChecksums();

    Listing _listing;
    PropfindRequest::Kind _kind;
    std::vector<Wanted> _wanted;
    bool _isMinimal;
    bool _needsChecksums = false;
    ServiceTree& _tree;
    std::vector<Resource> _newChecksums;
    std::size_t _next = 0;
    std::string _text;
    std::size_t _position = 0;
    std::string _missing;
};

/// Whether a PROPFIND needs to know the dead properties.
bool WantsDeadProperties(const PropfindRequest& request);

/// Appends an element for `name` without a value, for use where D and P are prefixes of DAV:.
void AppendEmptyElement(std::string& xml, const PropertyName& name);

/// What a multistatus document begins and ends with.
inline constexpr std::string_view MultistatusBegin =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<D:multistatus xmlns:D=\"DAV:\" xmlns:P=\"DAV:\">\n";
inline constexpr std::string_view MultistatusEnd = "</D:multistatus>\n";

}  // namespace service
