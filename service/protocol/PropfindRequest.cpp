#include "service/protocol/PropfindRequest.h"

#include <set>
#include <utility>

#include "service/protocol/HttpError.h"
#include "service/protocol/XmlDocument.h"

namespace service::protocol {

PropfindRequest PropfindRequest::Parse(std::string_view body) {
    PropfindRequest request;
    if (body.empty()) {
        return request;
    }
    const XmlDocument document(body, "propfind");
    int kinds = 0;
    std::set<std::pair<std::string, std::string>> seen;
    for (const auto* element = FirstElement(document.Root()); element != nullptr; element = NextElement(element)) {
        const bool isListed = IsDavElement(element, "prop");
        if (isListed) {
            request.kind = Kind::Listed;
            ++kinds;
        } else if (IsDavElement(element, "allprop")) {
            request.kind = Kind::AllProperties;
            ++kinds;
        } else if (IsDavElement(element, "propname")) {
            request.kind = Kind::Names;
            ++kinds;
        }
        if (!isListed && !IsDavElement(element, "include")) {
            continue;
        }
        for (const auto* name = FirstElement(element); name != nullptr; name = NextElement(name)) {
            PropertyName property{ElementNamespace(name), ElementName(name)};
            if (seen.emplace(property.nameSpace, property.name).second) {
                request.names.push_back(std::move(property));
            }
        }
    }
    if (kinds != 1) {
        throw HttpError(400, "The propfind needs exactly one of prop, allprop and propname");
    }
    return request;
}

}  // namespace service::protocol
