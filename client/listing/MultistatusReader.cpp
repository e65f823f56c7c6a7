#include "client/listing/MultistatusReader.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>

#include <QString>
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <new>

#include "client/listing/ListingBuilder.h"
#include "client/listing/MultistatusEntry.h"
#include "client/wire/Printable.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace listing {

using sync::core::SyncException;
using sync::http::DAVPropfindRequest;
using sync::http::DAVPropfindResult;
using wire::ListingLimits;
using wire::Printable;

namespace {

const size_t TokenLimit = 64UL * 1024UL;
// How much of an unfinished token is waited for.
const std::ptrdiff_t PendingLimit = 128L * 1024L;
const size_t DepthLimit = 64;
const size_t PieceSize = 32UL * 1024UL;

/// What an element is, by its name and its place.
enum class Kind : uint8_t {
    Document,
    Ignored,
    Multistatus,
    SyncToken,
    Response,
    Href,
    Status,
    Propstat,
    Prop,
    SyncProperties,
    ResourceType,
    Property
};

const char* Bytes(const xmlChar* text) {
    return reinterpret_cast<const char*>(text);
}

/// "{namespace}name"
QString NameText(const xmlChar* local, const xmlChar* nameSpace) {
    const QByteArray prefix = nameSpace == nullptr ? QByteArray() : '{' + QByteArray(Bytes(nameSpace)) + '}';
    return Printable(prefix + Bytes(local));
}

struct ParserDeleter {
    void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
};

}  // namespace

/// The document while it is read.
class MultistatusReader::Document {
public:
    explicit Document(ListingBuilder listing) : _listing(std::move(listing)) {
        xmlInitParser();
        xmlSAXHandler handlers = {};
        handlers.initialized = XML_SAX2_MAGIC;
        handlers.startElementNs = &_OnStart;
        handlers.endElementNs = &_OnEnd;
        handlers.characters = &_OnText;
        handlers.ignorableWhitespace = &_OnText;
        handlers.cdataBlock = &_OnText;
        handlers.comment = &_OnComment;
        handlers.processingInstruction = &_OnInstruction;
        handlers.internalSubset = &_OnDoctype;
        handlers.serror = &_OnError;
        _parser.reset(xmlCreatePushParserCtxt(&handlers, this, nullptr, 0, nullptr));
        if (!_parser) {
            throw std::bad_alloc();
        }
        xmlCtxtUseOptions(_parser.get(), XML_PARSE_NONET);
    }

    void Feed(const char* bytes, size_t size) {
        // The parser copies what it is given.
        for (size_t at = 0; at < size; at += PieceSize) {
            _Parse(bytes + at, static_cast<int>(std::min(PieceSize, size - at)), false);
            if (_parser->input->end - _parser->input->cur > PendingLimit) {
                _FailOnTokenSize();
            }
        }
    }

    std::shared_ptr<DAVPropfindResult> Finish() {
        _Parse(nullptr, 0, true);
        return _listing.Finish();
    }

    QByteArray SyncToken() const { return QByteArray::fromStdString(_token).trimmed(); }

private:
    struct Level {
        Kind kind;
        MultistatusEntry::Property property = MultistatusEntry::PropertyCount;
    };

    void _Parse(const char* bytes, int size, bool isLast) {
        _isLast = isLast;
        xmlParseChunk(_parser.get(), bytes, size, isLast ? 1 : 0);
        if (_failure) {
            std::rethrow_exception(_failure);
        }
        if (isLast && !_isComplete) {
            throw SyncException(QStringLiteral("the XML is empty"));
        }
    }

    /// Runs a handler's `action`. What it throws must not pass through the parser, which is C; the parser may call
    /// further handlers after it was stopped.
    template <typename Action>
    static void _Handle(void* self, Action action) {
        auto* const document = static_cast<Document*>(self);
        if (document->_failure) {
            return;
        }
        try {
            action(*document);
        } catch (...) {
            document->_failure = std::current_exception();
            xmlStopParser(document->_parser.get());
        }
    }

    static void _OnStart(void* self, const xmlChar* local, const xmlChar* /*prefix*/, const xmlChar* nameSpace,
                         int /*namespaceCount*/, const xmlChar** /*namespaces*/, int attributeCount,
                         int /*defaultedCount*/, const xmlChar** attributes) {
        _Handle(self, [=](Document& document) {
            // Each is a name, a prefix, a namespace, and the start and end of a value.
            for (int i = 0; i < attributeCount; ++i) {
                _CheckTokenSize(static_cast<size_t>(attributes[5 * i + 4] - attributes[5 * i + 3]));
            }
            document._StartElement(local, nameSpace);
        });
    }

    static void _OnEnd(void* self, const xmlChar* /*local*/, const xmlChar* /*prefix*/, const xmlChar* /*nameSpace*/) {
        _Handle(self, [](Document& document) { document._EndElement(); });
    }

    static void _OnText(void* self, const xmlChar* text, int size) {
        _Handle(self, [=](Document& document) { document._TakeText(Bytes(text), static_cast<size_t>(size)); });
    }

    static void _OnComment(void* self, const xmlChar* text) {
        _Handle(self, [=](Document& /*document*/) { _CheckTokenSize(std::strlen(Bytes(text))); });
    }

    static void _OnInstruction(void* self, const xmlChar* /*target*/, const xmlChar* text) {
        _Handle(self, [=](Document& /*document*/) { _CheckTokenSize(text == nullptr ? 0 : std::strlen(Bytes(text))); });
    }

    static void _OnDoctype(void* self, const xmlChar* /*name*/, const xmlChar* /*externalId*/,
                           const xmlChar* /*systemId*/) {
        _Handle(self, [](Document& /*document*/) {
            throw SyncException(
                QStringLiteral("the XML has a document type declaration, which could declare entities"));
        });
    }

    static void _OnError(void* self, xmlError* error) {
        // A namespace is compared as it is, whether it is a good URI or not.
        if (error->level == XML_ERR_WARNING || error->code == XML_WAR_NS_URI) {
            return;
        }
        _Handle(self, [=](Document& document) {
            const QString place = QStringLiteral("at line %1, column %2").arg(error->line).arg(error->int2);
            if (document._isLast && !document._isComplete) {
                throw SyncException(QStringLiteral("the XML is not complete, it ends ") + place);
            }
            throw SyncException(
                QStringLiteral("the XML is broken %1: %2").arg(place, Printable(QByteArray(error->message).trimmed())));
        });
    }

    static void _CheckTokenSize(size_t size) {
        if (size > TokenLimit) {
            _FailOnTokenSize();
        }
    }

    [[noreturn]] static void _FailOnTokenSize() {
        throw SyncException(QStringLiteral("the XML has an attribute or a comment above %1 bytes").arg(TokenLimit));
    }

    void _StartElement(const xmlChar* local, const xmlChar* nameSpace) {
        if (_level == DepthLimit) {
            throw SyncException(QStringLiteral("the XML has elements nested deeper than %1").arg(DepthLimit));
        }
        const Level next = _LevelOf(local, nameSpace);
        switch (next.kind) {
            case Kind::Response:
                _entry.Start();
                break;
            case Kind::Propstat:
                _entry.StartPropstat();
                break;
            case Kind::Href:
                _entry.StartHref();
                break;
            case Kind::Status:
            case Kind::Property:
                _entry.StartValue();
                break;
            default:
                break;
        }
        _levels[++_level] = next;
    }

    Level _LevelOf(const xmlChar* localName, const xmlChar* nameSpace) {
        const std::string_view space = nameSpace == nullptr ? "" : Bytes(nameSpace);
        const bool isDav = space == "DAV:";
        const std::string_view local = isDav ? Bytes(localName) : "";
        switch (_levels[_level].kind) {
            case Kind::Document:
                if (local != "multistatus") {
                    throw SyncException(QStringLiteral("what came is XML, but no listing: it begins with %1")
                                            .arg(NameText(localName, nameSpace)));
                }
                return {Kind::Multistatus};
            case Kind::Multistatus:
                if (local == "sync-token") {
                    return {Kind::SyncToken};
                }
                return {local == "response" ? Kind::Response : Kind::Ignored};
            case Kind::Response:
                if (local == "href") {
                    return {Kind::Href};
                }
                if (local == "propstat") {
                    return {Kind::Propstat};
                }
                return {local == "status" ? Kind::Status : Kind::Ignored};
            case Kind::Href:
                throw SyncException(QStringLiteral("the XML has an element inside a path"));
            case Kind::Propstat:
                if (local == "prop") {
                    return {Kind::Prop};
                }
                return {local == "status" ? Kind::Status : Kind::Ignored};
            case Kind::Prop:
                if (local == "resourcetype") {
                    return {Kind::ResourceType};
                }
                if (local == "syncproperties") {
                    return {Kind::SyncProperties};
                }
                return _PropertyLevel(space, Bytes(localName));
            case Kind::SyncProperties:
                return _PropertyLevel(space, Bytes(localName));
            case Kind::ResourceType:
                if (local == "collection") {
                    _entry.SetCollection();
                }
                return {Kind::Ignored};
            default:
                return {Kind::Ignored};
        }
    }

    static Level _PropertyLevel(std::string_view nameSpace, std::string_view local) {
        const MultistatusEntry::Property property = MultistatusEntry::PropertyNamed(nameSpace, local);
        return {property == MultistatusEntry::PropertyCount ? Kind::Ignored : Kind::Property, property};
    }

    void _EndElement() {
        const Level ended = _levels[_level--];
        switch (ended.kind) {
            case Kind::Href:
                _entry.EndHref();
                break;
            case Kind::Status:
                _entry.EndStatus();
                break;
            case Kind::Property:
                _entry.EndProperty(ended.property);
                break;
            case Kind::Propstat:
                _entry.EndPropstat();
                break;
            case Kind::Response:
                _entry.End();
                _listing.Add(_entry);
                break;
            case Kind::Multistatus:
                _isComplete = true;
                break;
            default:
                break;
        }
    }

    void _TakeText(const char* text, size_t size) {
        const Kind kind = _levels[_level].kind;
        if (kind == Kind::Property || kind == Kind::Href || kind == Kind::Status) {
            _entry.Append(text, size);
        } else if (kind == Kind::SyncToken) {
            _CheckTokenSize(_token.size() + size);
            _token.append(text, size);
        }
    }

    std::unique_ptr<xmlParserCtxt, ParserDeleter> _parser;
    std::exception_ptr _failure;
    bool _isLast = false;
    bool _isComplete = false;

    // Where in the document the parser is; the first level is the document itself.
    std::array<Level, DepthLimit + 1> _levels = {{{Kind::Document}}};
    size_t _level = 0;

    MultistatusEntry _entry;
    ListingBuilder _listing;
    std::string _token;
};

MultistatusReader::MultistatusReader(const QUrl& asked, DAVPropfindRequest::Depth depth, HrefScope scope,
                                     const ListingLimits& limits, const std::shared_ptr<DAVPropfindResult>& whole)
    : _document(std::make_unique<Document>(ListingBuilder(asked, depth, scope, limits, whole))) {}

MultistatusReader::MultistatusReader(const QUrl& asked, const ListingLimits& limits,
                                     const ListingBuilder::Changes& changes)
    : _document(std::make_unique<Document>(ListingBuilder(asked, limits, changes))) {}

MultistatusReader::~MultistatusReader() = default;

void MultistatusReader::Feed(const char* bytes, size_t size) {
    _document->Feed(bytes, size);
}

std::shared_ptr<DAVPropfindResult> MultistatusReader::Finish() {
    return _document->Finish();
}

QByteArray MultistatusReader::SyncToken() const {
    return _document->SyncToken();
}

}  // namespace listing
}  // namespace ovsync
