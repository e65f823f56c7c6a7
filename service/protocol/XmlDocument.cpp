#include "service/protocol/XmlDocument.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include "service/protocol/HttpError.h"
#include "service/protocol/XmlText.h"

namespace service::protocol {
namespace {

struct XmlStringDeleter {
    void operator()(xmlChar* text) const { xmlFree(text); }
};
using XmlString = std::unique_ptr<xmlChar, XmlStringDeleter>;

std::string ToText(const xmlChar* text) {
    return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

const xmlNode* SkipToElement(const xmlNode* node) {
    while (node != nullptr && node->type != XML_ELEMENT_NODE) {
        node = node->next;
    }
    return node;
}

// Called as soon as a document type declaration begins, before anything it declares is looked at.
void RefuseDocumentType(void* context, const xmlChar* /*name*/, const xmlChar* /*publicId*/,
                        const xmlChar* /*systemId*/) {
    xmlStopParser(static_cast<xmlParserCtxt*>(context));
}

}  // namespace

void XmlDocument::Deleter::operator()(_xmlDoc* document) const {
    xmlFreeDoc(document);
}

XmlDocument::XmlDocument(std::string_view text, std::string_view root) {
    const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> context(xmlNewParserCtxt(), xmlFreeParserCtxt);
    context->sax->internalSubset = RefuseDocumentType;
    // Without NOENT, libxml2 would leave "&amp;" in the names of namespaces as it is.
    _document.reset(xmlCtxtReadMemory(context.get(), text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                                      XML_PARSE_NOENT | XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    if (context->errNo == XML_ERR_USER_STOP) {
        throw HttpError(400, "The request's XML has a document type declaration");
    }
    if (_document == nullptr || context->wellFormed == 0 || context->nsWellFormed == 0) {
        const xmlError* error = xmlCtxtGetLastError(context.get());
        std::string reason = "The request's XML cannot be read";
        if (error != nullptr) {
            const std::string message = ToText(reinterpret_cast<const xmlChar*>(error->message));
            reason += ", line " + std::to_string(error->line) + ": " + message.substr(0, message.find('\n'));
        }
        throw HttpError(400, reason);
    }
    if (!IsDavElement(Root(), root)) {
        throw HttpError(400, "The root of the request's XML is not {DAV:}" + std::string(root));
    }
}

const _xmlNode* XmlDocument::Root() const {
    return xmlDocGetRootElement(_document.get());
}

const _xmlNode* FirstElement(const _xmlNode* parent) {
    return SkipToElement(parent->children);
}

const _xmlNode* NextElement(const _xmlNode* element) {
    return SkipToElement(element->next);
}

bool IsDavElement(const _xmlNode* element, std::string_view name) {
    return ElementName(element) == name && ElementNamespace(element) == DavNamespace;
}

std::string ElementName(const _xmlNode* element) {
    return ToText(element->name);
}

std::string ElementNamespace(const _xmlNode* element) {
    return element->ns == nullptr ? "" : ToText(element->ns->href);
}

std::string ElementText(const _xmlNode* element) {
    return ToText(XmlString(xmlNodeGetContent(element)).get());
}

std::string ElementXml(const _xmlNode* element) {
    // A document of its own makes libxml2 declare the namespaces that came from above.
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(xmlNewDoc(nullptr), xmlFreeDoc);
    xmlNode* copy = xmlDocCopyNode(const_cast<xmlNode*>(element), document.get(), 1);
    xmlDocSetRootElement(document.get(), copy);
    if (const XmlString language(xmlNodeGetLang(element)); language != nullptr) {
        xmlNodeSetLang(copy, language.get());
    }
    const std::unique_ptr<xmlBuffer, decltype(&xmlBufferFree)> buffer(xmlBufferCreate(), xmlBufferFree);
    xmlNodeDump(buffer.get(), document.get(), copy, 0, 0);
    return ToText(xmlBufferContent(buffer.get()));
}

}  // namespace service::protocol
