#include "service/protocol/Address.h"

#include "service/protocol/HttpError.h"
#include "service/protocol/ServerPath.h"

namespace service::protocol {
namespace {

constexpr std::size_t IdIndex = 2;
constexpr std::size_t NameIndex = 3;

bool IsById(const std::vector<std::string_view>& segments) {
    return segments.size() >= IdIndex && DecodeSegment(segments[0]) == AddressName &&
           DecodeSegment(segments[1]) == "folders";
}

}  // namespace

bool Address::IsById(std::string_view urlPath) {
    return protocol::IsById(SplitUrlPath(urlPath));
}

bool Address::IsOfSyncConfiguration(std::string_view urlPath) {
    const std::vector<std::string_view> segments = SplitUrlPath(urlPath);
    return segments.size() == 2 && DecodeSegment(segments[0]) == AddressName &&
           DecodeSegment(segments[1]) == "sync-config.xml";
}

Address Address::Parse(std::string_view urlPath) {
    const std::vector<std::string_view> segments = SplitUrlPath(urlPath);
    if (!protocol::IsById(segments)) {
        return {ParseUrlPath(urlPath)};
    }
    if (segments.size() > NameIndex + 1) {
        throw HttpError(403, "The URL has more than one name behind the id of a folder");
    }
    Address address;
    address.folder = segments.size() > IdIndex ? DecodeSegment(segments[IdIndex]).value_or("") : "";
    if (segments.size() > NameIndex) {
        address.path = ParseSegment(segments[NameIndex]);
    }
    return address;
}

}  // namespace service::protocol
