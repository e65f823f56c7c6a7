#include "service/protocol/SyncCollectionRequest.h"

#include <charconv>

#include "service/protocol/HttpError.h"
#include "service/protocol/XmlDocument.h"

namespace service::protocol {
namespace {

std::optional<Request::Depth> ParseLevel(const std::string& text) {
    if (text == "1") {
        return Request::Depth::One;
    }
    return text == "infinite" ? std::optional(Request::Depth::Infinity) : std::nullopt;
}

std::uint64_t ParseLimit(const _xmlNode* limit) {
    for (const auto* element = FirstElement(limit); element != nullptr; element = NextElement(element)) {
        const std::string text = ElementText(element);
        std::uint64_t most = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), most);
        if (IsDavElement(element, "nresults") && error == std::errc() && end == text.data() + text.size()) {
            return most;
        }
    }
    throw HttpError(400, "The limit of the sync-collection is no number");
}

}  // namespace

SyncCollectionRequest SyncCollectionRequest::Parse(std::string_view body) {
    SyncCollectionRequest request;
    const XmlDocument document(body, "sync-collection");
    std::optional<Request::Depth> level;
    bool hasToken = false;
    request.properties.kind = PropfindRequest::Kind::Listed;
    for (const auto* element = FirstElement(document.Root()); element != nullptr; element = NextElement(element)) {
        if (IsDavElement(element, "sync-token")) {
            request.token = ElementText(element);
            hasToken = true;
        } else if (IsDavElement(element, "sync-level")) {
            level = ParseLevel(ElementText(element));
        } else if (IsDavElement(element, "limit")) {
            request.limit = ParseLimit(element);
        } else if (IsDavElement(element, "prop")) {
            request.properties.AddNames(element);
        }
    }
    if (!hasToken || !level) {
        throw HttpError(400, "The sync-collection lacks a sync-token, or a sync-level of '1' or 'infinite'");
    }
    request.depth = *level;
    return request;
}

}  // namespace service::protocol
