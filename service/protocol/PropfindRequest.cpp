#include "service/protocol/PropfindRequest.h"

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
        request.AddNames(element);
    }
    if (kinds != 1) {
        throw HttpError(400, "The propfind needs exactly one of prop, allprop and propname");
    }
    return request;
}

void PropfindRequest::AddNames(const _xmlNode* parent) {
    for (const auto* name = FirstElement(parent); name != nullptr; name = NextElement(name)) {
        PropertyName property{ElementNamespace(name), ElementName(name)};
        if (_seen.emplace(property.nameSpace, property.name).second) {
            names.push_back(std::move(property));
        }
    }
}

}  // namespace service::protocol
