#include "service/protocol/PropertyUpdate.h"

#include "service/protocol/HttpError.h"
#include "service/protocol/XmlDocument.h"

namespace service::protocol {

PropertyUpdate PropertyUpdate::Parse(std::string_view body) {
    PropertyUpdate update;
    const XmlDocument document(body, "propertyupdate");
    for (const auto* action = FirstElement(document.Root()); action != nullptr; action = NextElement(action)) {
        const bool isRemoval = IsDavElement(action, "remove");
        if (!isRemoval && !IsDavElement(action, "set")) {
            continue;
        }
        for (const auto* prop = FirstElement(action); prop != nullptr; prop = NextElement(prop)) {
            if (!IsDavElement(prop, "prop")) {
                continue;
            }
            for (const auto* value = FirstElement(prop); value != nullptr; value = NextElement(value)) {
                Instruction instruction;
                instruction.property.name = {ElementNamespace(value), ElementName(value)};
                instruction.isRemoval = isRemoval;
                if (!isRemoval) {
                    instruction.property.xml = ElementXml(value);
                    instruction.text = ElementText(value);
                    instruction.hasElements = FirstElement(value) != nullptr;
                }
                update.instructions.push_back(std::move(instruction));
            }
        }
    }
    if (update.instructions.empty()) {
        throw HttpError(400, "The propertyupdate names no property");
    }
    return update;
}

}  // namespace service::protocol
