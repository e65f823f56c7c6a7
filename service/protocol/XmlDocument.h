#pragma once

#include <memory>
#include <string>
#include <string_view>

struct _xmlDoc;
struct _xmlNode;

namespace service::protocol {

/// The XML body of a request. Nothing outside of it is read, and a document type declaration is refused, so it can
/// neither name files nor grow by entities.
class XmlDocument {
public:
    /// Throws HttpError 400, with the line, when `text` is not well-formed or its root is not {DAV:}`root`.
    XmlDocument(std::string_view text, std::string_view root);

    const _xmlNode* Root() const;

private:
    struct Deleter {
        void operator()(_xmlDoc* document) const;
    };

    std::unique_ptr<_xmlDoc, Deleter> _document;
};

/// The first child element of `parent`, or null.
const _xmlNode* FirstElement(const _xmlNode* parent);
/// The next element beside `element`, or null.
const _xmlNode* NextElement(const _xmlNode* element);
bool IsDavElement(const _xmlNode* element, std::string_view name);
std::string ElementName(const _xmlNode* element);
/// Empty for an element in no namespace.
std::string ElementNamespace(const _xmlNode* element);
/// The character data of an element and all below it.
std::string ElementText(const _xmlNode* element);
/// The element as text, with the namespace declarations and the language it inherits.
std::string ElementXml(const _xmlNode* element);

}  // namespace service::protocol
