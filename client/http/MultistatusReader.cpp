#include "client/http/MultistatusReader.h"

#include <expat.h>

#include <QDateTime>
#include <QString>
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <exception>
#include <limits>
#include <string>
#include <type_traits>

#include "client/http/DateReader.h"
#include "client/http/Href.h"
#include "client/http/Printable.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace http {

using sync::core::SyncException;
using sync::http::DAVPropfindProperties;
using sync::http::DAVPropfindRequest;
using sync::http::DAVPropfindResponse;
using sync::http::DAVPropfindResult;

namespace {

const size_t HrefLimit = 16UL * 1024UL;
const size_t ValueLimit = 64UL * 1024UL;
const size_t EntryLimit = 1024UL * 1024UL;
const int TokenLimit = 64 * 1024;
const size_t DepthLimit = 64;
const size_t PieceSize = 64UL * 1024UL;

// Cannot occur in UTF-8, in which the parser hands out names.
const char NamespaceSeparator = '\xFF';
const char DavPrefix[] = "DAV:\xFF";
const size_t DavPrefixSize = sizeof(DavPrefix) - 1;

const char ClassTypePrefix[] = "drovane.objects.";

enum Property : uint8_t {
    ContentLength,
    LastModified,
    CreationDate,
    ClassType,
    ResourceId,
    ParentId,
    Version,
    VersionId,
    ItemId,
    OwnerId,
    Privileges,
    Visibility,
    CheckSumMd5,
    SyncOption,
    LinksExtractedAt,
    Attribute,
    PropertyCount
};

struct PropertyName {
    const char* text;
    size_t size;
};

template <size_t Size>
constexpr PropertyName Name(const char (&text)[Size]) {
    return {text, Size - 1};
}

/// In the order of Property.
const std::array<PropertyName, PropertyCount> PropertyNames = {
    Name("getcontentlength"), Name("getlastmodified"), Name("creationdate"),     Name("resourceclasstype"),
    Name("resourceid"),       Name("parentid"),        Name("version"),          Name("versionid"),
    Name("itemid"),           Name("ownerid"),         Name("privileges"),       Name("visibility"),
    Name("checksummd5"),      Name("syncoption"),      Name("linksextractedat"), Name("attribute"),
};

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

struct ParserDeleter {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// A piece of the text of an entry.
struct Slice {
    const char* text = "";
    size_t size = 0;

    Slice Trimmed() const {
        Slice trimmed = *this;
        while (trimmed.size > 0 && IsSpace(trimmed.text[0])) {
            ++trimmed.text;
            --trimmed.size;
        }
        while (trimmed.size > 0 && IsSpace(trimmed.text[trimmed.size - 1])) {
            --trimmed.size;
        }
        return trimmed;
    }

    bool Is(const char* other, size_t otherSize) const {
        return size == otherSize && std::memcmp(text, other, size) == 0;
    }

    QString ToPrintable() const { return Printable(QByteArray(text, static_cast<int>(size))); }
};

/// The last text of a property and what it was read as. Entries next to each other mostly have the same.
template <typename Value>
struct Remembered {
    std::string text;
    Value value;

    template <typename Reading>
    const Value& Read(const Slice& slice, Reading reading) {
        if (!slice.Is(text.data(), text.size())) {
            value = reading(slice);
            text.assign(slice.text, slice.size);
        }
        return value;
    }
};

/// A positive number with 31 bits, the same on every machine and in every version: FNV-1a.
int MadeUpId(const std::string& key) {
    uint32_t hash = 2166136261U;
    for (const char byte : key) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619U;
    }
    return std::max(1, static_cast<int>(hash & 0x7fffffffU));
}

int ContentLengthField(uint64_t size) {
    if (size > std::numeric_limits<uint32_t>::max()) {
        return -1;
    }
    return static_cast<int32_t>(static_cast<uint32_t>(size));
}

}  // namespace

/// The document while it is read.
class MultistatusReader::Document {
public:
    Document(const QUrl& asked, DAVPropfindRequest::Depth depth)
        : _depth(depth),
          _href(asked),
          _parser(XML_ParserCreateNS(nullptr, NamespaceSeparator)),
          _result(std::make_shared<DAVPropfindResult>()) {
        if (!_parser) {
            throw std::bad_alloc();
        }
        const std::string path = asked.path(QUrl::FullyEncoded).toStdString();
        _href.Read(path.data(), path.size());
        _askedKey = _href.Key();
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
        if (!_ownSeen) {
            throw SyncException(QStringLiteral("the listing has no entry for what was asked"));
        }
        const bool isAlone = _result->collectionResponses.isEmpty() && _result->fileResponses.isEmpty();
        const bool isFile = isAlone && !_ownIsContainer;
        if (isFile) {
            _result->fileResponses.insert(QString::fromStdString(_askedKey), _own);
        }
        if (isFile || _depth == DAVPropfindRequest::Resource) {
            _result->isSingleResponse = true;
            _result->singleResponse = _own;
        }
        return _result;
    }

private:
    struct Level {
        Kind kind;
        Property property;
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

    [[noreturn]] void _FailEntry(const QString& reason) const {
        const QString entry = _hrefCount == 0 ? QStringLiteral("an entry") : QLatin1String("the entry ") + _HrefText();
        throw SyncException(entry + QLatin1Char(' ') + reason);
    }

    QString _HrefText() const { return _SliceAt(_hrefStart, _hrefEnd).ToPrintable(); }

    void _StartElement(const char* name) {
        _CheckTokenSize();
        if (_level == DepthLimit) {
            throw SyncException(QStringLiteral("the XML has elements nested deeper than %1").arg(DepthLimit));
        }
        const Level next = _LevelOf(name);
        switch (next.kind) {
            case Kind::Response:
                _StartEntry();
                break;
            case Kind::Propstat:
                _staged = 0;
                _stagedIsCollection = false;
                _propstatStatus = 0;
                break;
            case Kind::Href:
            case Kind::Status:
            case Kind::Property:
                _valueStart = _text.size();
                break;
            default:
                break;
        }
        _levels[++_level] = next;
    }

    Level _LevelOf(const char* name) {
        const Kind parent = _levels[_level].kind;
        const bool isDav = std::strncmp(name, DavPrefix, DavPrefixSize) == 0;
        const char* const local = isDav ? name + DavPrefixSize : "";
        const Slice element{local, std::strlen(local)};
        switch (parent) {
            case Kind::Document:
                if (!_IsNamed(element, Name("multistatus"))) {
                    throw SyncException(
                        QStringLiteral("the root of the XML is %1, not {DAV:}multistatus").arg(_NameText(name)));
                }
                return {Kind::Multistatus, PropertyCount};
            case Kind::Multistatus:
                return {_IsNamed(element, Name("response")) ? Kind::Response : Kind::Ignored, PropertyCount};
            case Kind::Response:
                if (_IsNamed(element, Name("href"))) {
                    return {Kind::Href, PropertyCount};
                }
                if (_IsNamed(element, Name("propstat"))) {
                    return {Kind::Propstat, PropertyCount};
                }
                return {_IsNamed(element, Name("status")) ? Kind::Status : Kind::Ignored, PropertyCount};
            case Kind::Propstat:
                if (_IsNamed(element, Name("prop"))) {
                    return {Kind::Prop, PropertyCount};
                }
                return {_IsNamed(element, Name("status")) ? Kind::Status : Kind::Ignored, PropertyCount};
            case Kind::Prop:
                if (_IsNamed(element, Name("resourcetype"))) {
                    return {Kind::ResourceType, PropertyCount};
                }
                if (_IsNamed(element, Name("syncproperties"))) {
                    return {Kind::SyncProperties, PropertyCount};
                }
                return _PropertyLevel(element);
            case Kind::SyncProperties:
                return _PropertyLevel(element);
            case Kind::ResourceType:
                _stagedIsCollection = _stagedIsCollection || _IsNamed(element, Name("collection"));
                return {Kind::Ignored, PropertyCount};
            case Kind::Href:
                throw SyncException(QStringLiteral("the XML has an element inside an href"));
            default:
                return {Kind::Ignored, PropertyCount};
        }
    }

    /// "{namespace}name" for a name as the parser hands it out.
    static QString _NameText(const char* name) {
        const QByteArray text(name);
        const int separator = text.indexOf(NamespaceSeparator);
        return Printable(separator < 0 ? text : '{' + text.left(separator) + '}' + text.mid(separator + 1));
    }

    static bool _IsNamed(const Slice& element, const PropertyName& name) { return element.Is(name.text, name.size); }

    static Level _PropertyLevel(const Slice& element) {
        for (size_t i = 0; i < PropertyNames.size(); ++i) {
            if (_IsNamed(element, PropertyNames[i])) {
                return {Kind::Property, static_cast<Property>(i)};
            }
        }
        return {Kind::Ignored, PropertyCount};
    }

    void _EndElement() {
        _CheckTokenSize();
        const Level ended = _levels[_level--];
        switch (ended.kind) {
            case Kind::Href:
                ++_hrefCount;
                _hrefStart = _valueStart;
                _hrefEnd = _text.size();
                break;
            case Kind::Status:
                _TakeStatus(_levels[_level].kind == Kind::Response ? _entryStatus : _propstatStatus);
                break;
            case Kind::Property:
                _stagedValues[ended.property] = {_valueStart, _text.size()};
                _staged |= 1U << ended.property;
                break;
            case Kind::Propstat:
                _EndPropstat();
                break;
            case Kind::Response:
                _EndEntry();
                break;
            default:
                break;
        }
    }

    void _TakeText(const char* text, size_t size) {
        const Kind kind = _levels[_level].kind;
        if (kind != Kind::Property && kind != Kind::Href && kind != Kind::Status) {
            return;
        }
        const size_t valueSize = _text.size() - _valueStart + size;
        if (kind == Kind::Href && valueSize > HrefLimit) {
            throw SyncException(QStringLiteral("the XML has an href above %1 bytes").arg(HrefLimit));
        }
        if (valueSize > ValueLimit) {
            _FailEntry(QStringLiteral("has a value above %1 bytes").arg(ValueLimit));
        }
        if (_text.size() + size > EntryLimit) {
            _FailEntry(QStringLiteral("has values above %1 bytes").arg(EntryLimit));
        }
        _text.append(text, size);
    }

    void _StartEntry() {
        _text.clear();
        _hrefCount = 0;
        _propstatCount = 0;
        _entryStatus = 0;
        _found = 0;
        _isCollection = false;
    }

    /// Reads "HTTP/1.1 200 OK" at the end of the entry's text into `status`.
    void _TakeStatus(int& status) {
        const Slice line = _SliceAt(_valueStart, _text.size()).Trimmed();
        if (status != 0) {
            _FailEntry(QStringLiteral("has more than one status where there is to be one"));
        }
        const char* const end = line.text + line.size;
        const char* const space = std::find(line.text, end, ' ');
        const bool isStatusLine = line.size > 5 && std::memcmp(line.text, "HTTP/", 5) == 0 && end - space >= 4 &&
                                  std::all_of(space + 1, space + 4, [](char c) { return c >= '0' && c <= '9'; }) &&
                                  (end - space == 4 || space[4] == ' ');
        if (!isStatusLine) {
            _FailEntry(QStringLiteral("has a status that cannot be read: \"%1\"").arg(line.ToPrintable()));
        }
        status = (space[1] - '0') * 100 + (space[2] - '0') * 10 + (space[3] - '0');
    }

    static bool _IsSuccess(int status) { return status >= 200 && status < 300; }

    void _EndPropstat() {
        ++_propstatCount;
        if (_IsSuccess(_propstatStatus)) {
            for (size_t i = 0; i < PropertyCount; ++i) {
                if ((_staged >> i & 1U) != 0) {
                    _values[i] = _stagedValues[i];
                }
            }
            _found |= _staged;
            _isCollection = _isCollection || _stagedIsCollection;
        } else if (_propstatStatus != 404) {
            _FailEntry(_propstatStatus == 0
                           ? QStringLiteral("has a propstat without a status")
                           : QStringLiteral("could not be read: a propstat has the status %1").arg(_propstatStatus));
        }
    }

    void _EndEntry() {
        if (_hrefCount != 1) {
            _FailEntry(_hrefCount == 0 ? QStringLiteral("has no href")
                                       : QStringLiteral("has %1 hrefs in place of one").arg(_hrefCount));
        }
        if (_entryStatus != 0 && !_IsSuccess(_entryStatus)) {
            _FailEntry(QStringLiteral("could not be read: it has the status %1").arg(_entryStatus));
        }
        if (_entryStatus == 0 && _propstatCount == 0) {
            _FailEntry(QStringLiteral("has neither a propstat nor a status"));
        }
        _PlaceEntry();
    }

    void _PlaceEntry() {
        const Slice href = _SliceAt(_hrefStart, _hrefEnd).Trimmed();
        if (href.size == 0) {
            throw SyncException(QStringLiteral("an entry has an empty href"));
        }
        try {
            _href.Read(href.text, href.size);
        } catch (const SyncException& reason) {
            _FailEntry(QLatin1String("has an href that cannot be taken: ") + reason.Message());
        }
        const std::string& key = _href.Key();
        const QString classType = _TextValue(ClassType);
        const Form form = _FormOf(classType);
        const DAVPropfindResponse entry = _MakeEntry(classType, form);
        if (key == _askedKey) {
            if (_ownSeen) {
                _FailEntry(QStringLiteral("came before"));
            }
            _ownSeen = true;
            _own = entry;
            _ownIsContainer = form != Form::File;
            return;
        }
        if (!_IsInScope(key)) {
            _FailEntry(QStringLiteral("lies outside what was asked"));
        }
        const QString mapKey = QString::fromUtf8(key.data(), static_cast<int>(key.size()));
        QMap<QString, DAVPropfindResponse>& map =
            form == Form::Folder ? _result->collectionResponses : _result->fileResponses;
        const QMap<QString, DAVPropfindResponse>& otherMap =
            form == Form::Folder ? _result->fileResponses : _result->collectionResponses;
        const int sizeBefore = map.size();
        // Most services list in name order, in which every entry goes to the end.
        map.insert(map.constEnd(), mapKey, entry);
        const bool isInOtherMap = !otherMap.isEmpty() && !(otherMap.lastKey() < mapKey) && otherMap.contains(mapKey);
        if (map.size() == sizeBefore || isInOtherMap) {
            _FailEntry(QStringLiteral("came before"));
        }
    }

    bool _IsInScope(const std::string& key) const {
        const size_t prefix = _askedKey.empty() ? 0 : _askedKey.size() + 1;
        const bool isBelow = key.size() > prefix && key.compare(0, _askedKey.size(), _askedKey) == 0 &&
                             (prefix == 0 || key[prefix - 1] == '/');
        switch (_depth) {
            case DAVPropfindRequest::Resource:
                return false;
            case DAVPropfindRequest::Children:
                return isBelow && key.find('/', prefix) == std::string::npos;
            default:
                return isBelow;
        }
    }

    /// How an entry is shown: a form stands among the files but holds others, as a folder does.
    enum class Form { File, FormContainer, Folder };

    Form _FormOf(const QString& classType) const {
        const auto is = [&classType](const char* name) {
            const QLatin1String prefix(ClassTypePrefix);
            return classType.startsWith(prefix, Qt::CaseInsensitive) &&
                   classType.midRef(prefix.size()).compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
        };
        if (is("File")) {
            return Form::File;
        }
        if (is("Form")) {
            return Form::FormContainer;
        }
        return _isCollection || is("Folder") || is("Project") ? Form::Folder : Form::File;
    }

    DAVPropfindResponse _MakeEntry(const QString& classType, Form form) {
        static const QString fileClassType = QLatin1String(ClassTypePrefix) + QLatin1String("File");
        static const QString folderClassType = QLatin1String(ClassTypePrefix) + QLatin1String("Folder");
        const std::string& key = _href.Key();
        DAVPropfindProperties properties;
        properties.filename = QString::fromStdString(form == Form::File ? _href.EncodedName() : _href.DecodedName());
        properties.resourceClassType = !classType.isEmpty() ? classType
                                       : form == Form::File ? fileClassType
                                                            : folderClassType;
        properties.versionId = _TextValue(VersionId);
        properties.itemId = _Has(ItemId) ? _TextValue(ItemId) : QLatin1String("path:") + QString::fromStdString(key);
        properties.ownerId = _TextValue(OwnerId);
        properties.privileges = _TextValue(Privileges);
        properties.visibility = _TextValue(Visibility);
        properties.checkSumMD5 = _TextValue(CheckSumMd5);
        properties.syncOption = _TextValue(SyncOption);
        properties.createdDate = _DateValue(CreationDate);
        properties.lastModifiedDate = _DateValue(LastModified);
        properties.linksExtractedAtFileTime = _DateValue(LinksExtractedAt);
        const std::string& path = _href.Path();
        DAVPropfindResponse entry(QString::fromLatin1(path.data(), static_cast<int>(path.size())), properties);
        // Some servers give collections an empty length.
        if (!_isCollection || _Has(ContentLength)) {
            entry.contentLength = ContentLengthField(_NumberValue(ContentLength));
        }
        entry.versionNumber = _IntValue(Version);
        if (_Found(ResourceId)) {
            entry.resourceId = _IntValue(ResourceId);
            entry.parentResourceId = _IntValue(ParentId);
        } else {
            entry.resourceId = MadeUpId(key);
            entry.parentResourceId = key.empty() ? 0 : MadeUpId(Href::ParentKey(key));
        }
        entry.attribute = _AttributeValue();
        return entry;
    }

    struct Range {
        size_t start;
        size_t end;
    };

    Slice _SliceAt(size_t start, size_t end) const { return {_text.data() + start, end - start}; }

    bool _Found(Property property) const { return (_found >> property & 1U) != 0; }

    /// Empty when the entry has no such property.
    Slice _RawValue(Property property) const {
        return _Found(property) ? _SliceAt(_values[property].start, _values[property].end) : Slice();
    }

    bool _Has(Property property) const { return _RawValue(property).Trimmed().size > 0; }

    const QString& _TextValue(Property property) {
        return _texts[property].Read(_RawValue(property).Trimmed(), [](const Slice& value) {
            return QString::fromUtf8(value.text, static_cast<int>(value.size));
        });
    }

    const QDateTime& _DateValue(Property property) {
        return _dates[property].Read(_RawValue(property).Trimmed(),
                                     [](const Slice& value) { return ReadDate(value.text, value.size); });
    }

    /// 0 when the entry has no such property; the largest number when it is larger than that.
    uint64_t _NumberValue(Property property) const {
        if (!_Found(property)) {
            return 0;
        }
        const Slice value = _RawValue(property).Trimmed();
        uint64_t number = 0;
        for (size_t i = 0; i < value.size; ++i) {
            const char c = value.text[i];
            if (c < '0' || c > '9') {
                _FailNumber(property, value);
            }
            const auto digit = static_cast<uint64_t>(c - '0');
            const uint64_t max = std::numeric_limits<uint64_t>::max();
            number = number > (max - digit) / 10 ? max : number * 10 + digit;
        }
        if (value.size == 0) {
            _FailNumber(property, value);
        }
        return number;
    }

    int _IntValue(Property property) const {
        const uint64_t number = _NumberValue(property);
        if (number > static_cast<uint64_t>(std::numeric_limits<int>::max())) {
            _FailNumber(property, _RawValue(property).Trimmed());
        }
        return static_cast<int>(number);
    }

    [[noreturn]] void _FailNumber(Property property, const Slice& value) const {
        _FailEntry(QStringLiteral("has the %1 \"%2\", which is no number in its range")
                       .arg(QLatin1String(PropertyNames[property].text), value.ToPrintable()));
    }

    /// A character may be a space itself; around any other there may be white space.
    char _AttributeValue() const {
        const Slice raw = _RawValue(Attribute);
        const Slice value = raw.size == 1 ? raw : raw.Trimmed();
        return value.size == 1 && value.text[0] >= 0x20 && value.text[0] <= 0x7e ? value.text[0] : '\0';
    }

    const DAVPropfindRequest::Depth _depth;
    Href _href;
    std::string _askedKey;
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserDeleter> _parser;
    XML_Index _fed = 0;
    std::exception_ptr _failure;

    // Where in the document the parser is; the first level is the document itself.
    std::array<Level, DepthLimit + 1> _levels = {{{Kind::Document, PropertyCount}}};
    size_t _level = 0;

    // The entry that is being read: its texts, one after the other, and where in there they are. The values of a
    // propstat are staged, because the status that says whether they count may come after them.
    std::string _text;
    size_t _valueStart = 0;
    size_t _hrefStart = 0;
    size_t _hrefEnd = 0;
    std::array<Range, PropertyCount> _values = {};
    std::array<Range, PropertyCount> _stagedValues = {};
    uint32_t _found = 0;
    uint32_t _staged = 0;
    int _hrefCount = 0;
    int _propstatCount = 0;
    int _entryStatus = 0;
    int _propstatStatus = 0;
    bool _isCollection = false;
    bool _stagedIsCollection = false;

    bool _ownSeen = false;
    bool _ownIsContainer = false;
    DAVPropfindResponse _own;
    std::shared_ptr<DAVPropfindResult> _result;

    std::array<Remembered<QString>, PropertyCount> _texts;
    std::array<Remembered<QDateTime>, PropertyCount> _dates;
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
