#include "client/http/MultistatusReader.h"

#include <expat.h>

#include <QString>
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <exception>
#include <new>
#include <type_traits>

#include "client/http/ByteSlice.h"
#include "client/http/ListingBuilder.h"
#include "client/http/MultistatusEntry.h"
#include "client/http/Printable.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace http {

using sync::core::SyncException;
using sync::http::DAVPropfindRequest;
using sync::http::DAVPropfindResult;

namespace {

const int TokenLimit = 64 * 1024;
const size_t DepthLimit = 64;
const size_t PieceSize = 64UL * 1024UL;

// Cannot occur in UTF-8, in which the parser hands out names.
const char NamespaceSeparator = '\xFF';
const char DavPrefix[] = "DAV:\xFF";
const size_t DavPrefixSize = sizeof(DavPrefix) - 1;

/// What an element is, by its name and its place.
enum class Kind : uint8_t {
    Document,
    Ignored,
    Multistatus,
    Response,
    Href,
    Status,
    Propstat,
    Prop,
    SyncProperties,
    ResourceType,
    Property
};

/// The local name of an element of the namespace DAV:, empty for any other.
ByteSlice DavName(const char* name) {
    if (std::strncmp(name, DavPrefix, DavPrefixSize) != 0) {
        return ByteSlice();
    }
    const char* const local = name + DavPrefixSize;
    return {local, std::strlen(local)};
}

template <size_t Size>
bool Is(const ByteSlice& name, const char (&expected)[Size]) {
    return name.Is(expected, Size - 1);
}

/// "{namespace}name" for a name as the parser hands it out.
QString NameText(const char* name) {
    const QByteArray text(name);
    const int separator = text.indexOf(NamespaceSeparator);
    return Printable(separator < 0 ? text : '{' + text.left(separator) + '}' + text.mid(separator + 1));
}

struct ParserDeleter {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

}  // namespace

/// The document while it is read.
class MultistatusReader::Document {
public:
    Document(const QUrl& asked, DAVPropfindRequest::Depth depth)
        : _parser(XML_ParserCreateNS(nullptr, NamespaceSeparator)), _listing(asked, depth) {
        if (!_parser) {
            throw std::bad_alloc();
        }
        XML_SetUserData(_parser.get(), this);
        XML_SetElementHandler(_parser.get(), &_OnStart, &_OnEnd);
        XML_SetCharacterDataHandler(_parser.get(), &_OnText);
        XML_SetStartDoctypeDeclHandler(_parser.get(), &_OnDoctype);
        XML_SetDefaultHandler(_parser.get(), &_OnOther);
    }

    void Feed(const char* bytes, size_t size) {
        // The parser copies what it is given.
        for (size_t at = 0; at < size; at += PieceSize) {
            const size_t piece = std::min(PieceSize, size - at);
            _Parse(bytes + at, static_cast<int>(piece), false);
            _fed += static_cast<XML_Index>(piece);
            // Before the root the parser counts from further back than the start of the token.
            if (_fed - XML_GetCurrentByteIndex(_parser.get()) > 2 * TokenLimit) {
                _FailOnTokenSize();
            }
        }
    }

    std::shared_ptr<DAVPropfindResult> Finish() {
        _Parse(nullptr, 0, true);
        return _listing.Finish();
    }

private:
    struct Level {
        Kind kind;
        MultistatusEntry::Property property = MultistatusEntry::PropertyCount;
    };

    void _Parse(const char* bytes, int size, bool isLast) {
        const bool isGood = XML_Parse(_parser.get(), bytes, size, isLast ? 1 : 0) == XML_STATUS_OK;
        if (_failure) {
            std::rethrow_exception(_failure);
        }
        if (!isGood) {
            throw SyncException(QStringLiteral("the XML is broken or not complete: %1 at line %2, column %3")
                                    .arg(QString::fromUtf8(XML_ErrorString(XML_GetErrorCode(_parser.get()))))
                                    .arg(XML_GetCurrentLineNumber(_parser.get()))
                                    .arg(XML_GetCurrentColumnNumber(_parser.get())));
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
            XML_StopParser(document->_parser.get(), XML_FALSE);
        }
    }

    static void _OnStart(void* self, const char* name, const char** /*attributes*/) {
        _Handle(self, [name](Document& document) { document._StartElement(name); });
    }

    static void _OnEnd(void* self, const char* /*name*/) {
        _Handle(self, [](Document& document) { document._EndElement(); });
    }

    static void _OnText(void* self, const char* text, int size) {
        _Handle(self, [text, size](Document& document) { document._TakeText(text, static_cast<size_t>(size)); });
    }

    static void _OnDoctype(void* self, const char* /*name*/, const char* /*systemId*/, const char* /*publicId*/,
                           int /*hasInternalSubset*/) {
        _Handle(self, [](Document& /*document*/) {
            throw SyncException(
                QStringLiteral("the XML has a document type declaration, which could declare entities"));
        });
    }

    static void _OnOther(void* self, const char* /*text*/, int /*size*/) {
        _Handle(self, [](Document& document) { document._CheckTokenSize(); });
    }

    void _CheckTokenSize() const {
        if (XML_GetCurrentByteCount(_parser.get()) > TokenLimit) {
            _FailOnTokenSize();
        }
    }

    [[noreturn]] static void _FailOnTokenSize() {
        throw SyncException(QStringLiteral("the XML has a tag or a comment above %1 bytes").arg(TokenLimit));
    }

    void _StartElement(const char* name) {
        _CheckTokenSize();
        if (_level == DepthLimit) {
            throw SyncException(QStringLiteral("the XML has elements nested deeper than %1").arg(DepthLimit));
        }
        const Level next = _LevelOf(name);
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

    Level _LevelOf(const char* name) {
        const ByteSlice local = DavName(name);
        switch (_levels[_level].kind) {
            case Kind::Document:
                if (!Is(local, "multistatus")) {
                    throw SyncException(
                        QStringLiteral("the root of the XML is %1, not {DAV:}multistatus").arg(NameText(name)));
                }
                return {Kind::Multistatus};
            case Kind::Multistatus:
                return {Is(local, "response") ? Kind::Response : Kind::Ignored};
            case Kind::Response:
                if (Is(local, "href")) {
                    return {Kind::Href};
                }
                if (Is(local, "propstat")) {
                    return {Kind::Propstat};
                }
                return {Is(local, "status") ? Kind::Status : Kind::Ignored};
            case Kind::Href:
                throw SyncException(QStringLiteral("the XML has an element inside an href"));
            case Kind::Propstat:
                if (Is(local, "prop")) {
                    return {Kind::Prop};
                }
                return {Is(local, "status") ? Kind::Status : Kind::Ignored};
            case Kind::Prop:
                if (Is(local, "resourcetype")) {
                    return {Kind::ResourceType};
                }
                if (Is(local, "syncproperties")) {
                    return {Kind::SyncProperties};
                }
                return _PropertyLevel(local);
            case Kind::SyncProperties:
                return _PropertyLevel(local);
            case Kind::ResourceType:
                if (Is(local, "collection")) {
                    _entry.SetCollection();
                }
                return {Kind::Ignored};
            default:
                return {Kind::Ignored};
        }
    }

    static Level _PropertyLevel(const ByteSlice& local) {
        const MultistatusEntry::Property property = MultistatusEntry::PropertyNamed(local);
        return {property == MultistatusEntry::PropertyCount ? Kind::Ignored : Kind::Property, property};
    }

    void _EndElement() {
        _CheckTokenSize();
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
            default:
                break;
        }
    }

    void _TakeText(const char* text, size_t size) {
        const Kind kind = _levels[_level].kind;
        if (kind == Kind::Property || kind == Kind::Href || kind == Kind::Status) {
            _entry.Append(text, size);
        }
    }

    std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserDeleter> _parser;
    XML_Index _fed = 0;
    std::exception_ptr _failure;

    // Where in the document the parser is; the first level is the document itself.
    std::array<Level, DepthLimit + 1> _levels = {{{Kind::Document}}};
    size_t _level = 0;

    MultistatusEntry _entry;
    ListingBuilder _listing;
};

MultistatusReader::MultistatusReader(const QUrl& asked, DAVPropfindRequest::Depth depth)
    : _document(std::make_unique<Document>(asked, depth)) {}

MultistatusReader::~MultistatusReader() = default;

void MultistatusReader::Feed(const char* bytes, size_t size) {
    _document->Feed(bytes, size);
}

std::shared_ptr<DAVPropfindResult> MultistatusReader::Finish() {
    return _document->Finish();
}

}  // namespace http
}  // namespace ovsync
