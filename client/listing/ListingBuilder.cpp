#include "client/listing/ListingBuilder.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "client/listing/CollectionTag.h"
#include "client/listing/FolderProtocol.h"
#include "client/wire/DateReader.h"
#include "client/wire/Printable.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace listing {

using sync::core::SyncException;
using sync::http::DAVPropfindProperties;
using sync::http::DAVPropfindRequest;
using sync::http::DAVPropfindResponse;
using sync::http::DAVPropfindResult;
using wire::FileAttributes;
using wire::ListingLimits;
using wire::ListingSupplement;
using wire::ReadDate;

namespace {

using Entry = MultistatusEntry;

const size_t Md5Length = 32;
const char ClassTypePrefix[] = "drovane.objects.";

QString FromUtf8(const std::string& text) {
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

[[noreturn]] void FailNumber(const Entry& entry, Entry::Property property) {
    const std::string_view value = Trimmed(entry.Value(property));
    entry.Fail(QStringLiteral("has the %1 \"%2\", which is not a number in its range")
                   .arg(QLatin1String(Entry::NameOf(property)), wire::Printable(value.data(), value.size())));
}

/// 0 when the entry has no such property; the largest number when it is larger than that.
uint64_t NumberOf(const Entry& entry, Entry::Property property) {
    if (!entry.Found(property)) {
        return 0;
    }
    const std::string_view value = Trimmed(entry.Value(property));
    const uint64_t max = std::numeric_limits<uint64_t>::max();
    uint64_t number = 0;
    for (const char c : value) {
        if (c < '0' || c > '9') {
            FailNumber(entry, property);
        }
        const auto digit = static_cast<uint64_t>(c - '0');
        number = number > (max - digit) / 10 ? max : number * 10 + digit;
    }
    if (value.empty()) {
        FailNumber(entry, property);
    }
    return number;
}

int IntOf(const Entry& entry, Entry::Property property) {
    const uint64_t number = NumberOf(entry, property);
    if (number > static_cast<uint64_t>(std::numeric_limits<int>::max())) {
        FailNumber(entry, property);
    }
    return static_cast<int>(number);
}

uint64_t ContentLengthOf(const Entry& entry) {
    // Some servers give collections an empty length.
    const bool hasNone = entry.IsCollection() && Trimmed(entry.Value(Entry::ContentLength)).empty();
    return hasNone ? 0 : NumberOf(entry, Entry::ContentLength);
}

/// The character may be a space itself; around any other there may be white space.
char AttributeOf(const Entry& entry) {
    const std::string_view raw = entry.Value(Entry::Attribute);
    const std::string_view value = raw.size() == 1 ? raw : Trimmed(raw);
    return value.size() == 1 && value[0] >= 0x20 && value[0] <= 0x7e ? value[0] : '\0';
}

FileAttributes AttributesOf(const Entry& entry) {
    FileAttributes attributes;
    const std::string_view bit = Trimmed(entry.Value(Entry::Executable));
    if (bit == "T" || bit == "F") {
        attributes.isExecutable = bit == "T";
    }
    const std::string_view dated = Trimmed(entry.Value(Entry::KeptDate));
    if (dated.size() > Md5Length && dated[Md5Length] == ' ') {
        const std::string_view date = dated.substr(Md5Length + 1);
        attributes.keptDate = ReadDate(date.data(), date.size());
        attributes.md5OfKeptDate = QString::fromLatin1(dated.data(), static_cast<int>(Md5Length));
    }
    return attributes;
}

/// A positive number with 31 bits, the same on every machine and in every version: FNV-1a.
int MadeUpId(const std::string& key) {
    uint32_t hash = 2166136261U;
    for (const char byte : key) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619U;
    }
    return std::max(1, static_cast<int>(hash & 0x7fffffffU));
}

}  // namespace

ListingBuilder::ListingBuilder(const QUrl& asked, DAVPropfindRequest::Depth depth, HrefScope scope,
                               const ListingLimits& limits, const std::shared_ptr<DAVPropfindResult>& whole)
    : _depth(depth),
      _scope(scope),
      _limits(limits),
      _href(asked),
      _isPart(whole != nullptr),
      _result(whole ? whole : std::make_shared<DAVPropfindResult>()) {
    const std::string path = asked.path(QUrl::FullyEncoded).toStdString();
    _href.Read(path.data(), path.size());
    _askedKey = _href.Key();
}

ListingBuilder::ListingBuilder(const QUrl& asked, const ListingLimits& limits, const Changes& changes)
    : ListingBuilder(asked, DAVPropfindRequest::Tree, HrefScope::OfUrl, limits, changes.present) {
    _gone = changes.gone;
}

void ListingBuilder::Add(const MultistatusEntry& entry) {
    const std::string_view href = Trimmed(entry.Href());
    if (href.empty() && _scope == HrefScope::Any) {
        throw SyncException(QStringLiteral("an entry has an empty path"));
    }
    try {
        _href.Read(href.data(), href.size());
    } catch (const SyncException& reason) {
        entry.Fail(QLatin1String("has a path that cannot be taken: ") + reason.Message());
    }
    const std::string& key = _href.Key();
    if (_scope == HrefScope::Any && !_hasOwn) {
        _askedKey = key;
    }
    if (entry.IsGone() && (!_gone || key == _askedKey)) {
        entry.Fail(QStringLiteral("could not be read: it has the status 404"));
    }
    const QString classType = _Text(entry, Entry::ClassType);
    const Form form = _FormOf(classType, entry.IsCollection());
    if (key == _askedKey) {
        if (_hasOwn) {
            entry.Fail(QStringLiteral("came before"));
        }
        _hasOwn = true;
        _Describe(entry, classType, form, _own);
        _isOwnContainer = form != Form::File;
        return;
    }
    if (!_IsInScope(key)) {
        entry.Fail(QStringLiteral("lies outside what was asked"));
    }
    _isAlone = false;
    // The asked one is an entry as well.
    const int gone = _gone ? _gone->fileResponses.size() : 0;
    if (_result->collectionResponses.size() + _result->fileResponses.size() + gone + 2 > _limits.entries.value) {
        throw SyncException(QStringLiteral("the listing has more than %1 entries, the limit set by %2")
                                .arg(QString::number(_limits.entries.value), _limits.entries.source));
    }
    const bool isFolder = form == Form::Folder;
    auto& map =
        entry.IsGone() ? _gone->fileResponses : (isFolder ? _result->collectionResponses : _result->fileResponses);
    const auto& otherMap = isFolder ? _result->fileResponses : _result->collectionResponses;
    const QString mapKey = FromUtf8(key);
    if (_gone && _HasChange(mapKey)) {
        entry.Fail(QStringLiteral("came before"));
    }
    const int sizeBefore = map.size();
    // Most services list in name order, in which every entry goes to the end. The response is filled in where it lies,
    // because each is a QObject, which is costly to make twice.
    const auto place = map.insert(map.constEnd(), mapKey, _blank);
    const bool isInOtherMap = !otherMap.isEmpty() && !(otherMap.lastKey() < mapKey) && otherMap.contains(mapKey);
    if (map.size() == sizeBefore || isInOtherMap) {
        entry.Fail(QStringLiteral("came before"));
    }
    _Describe(entry, classType, form, place.value());
    if (isFolder && _limits.supplement->KeepsTags()) {
        _limits.supplement->AddTag(mapKey,
                                   CollectionTag(_Text(entry, Entry::FileId), _Text(entry, Entry::FileIdOfServer),
                                                 _Text(entry, Entry::EntityTag)));
    }
}

std::shared_ptr<DAVPropfindResult> ListingBuilder::Finish() {
    if (_gone) {
        return _result;
    }
    if (!_hasOwn) {
        throw SyncException(QStringLiteral("the listing has no entry for what was asked"));
    }
    const bool isFile = _isAlone && !_isOwnContainer;
    if (isFile) {
        // Of a part it was a folder when the one above was listed.
        _result->collectionResponses.remove(FromUtf8(_askedKey));
        _result->fileResponses.insert(FromUtf8(_askedKey), _own);
    }
    if (_isPart) {
        return _result;
    }
    if (isFile || _depth == DAVPropfindRequest::Resource) {
        _result->isSingleResponse = true;
        _result->singleResponse = _own;
    }
    return _result;
}

bool ListingBuilder::_HasChange(const QString& key) const {
    return _gone->fileResponses.contains(key) || _result->fileResponses.contains(key) ||
           _result->collectionResponses.contains(key);
}

ListingBuilder::Form ListingBuilder::_FormOf(const QString& classType, bool isCollection) {
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
    return isCollection || is("Folder") || is("Project") ? Form::Folder : Form::File;
}

bool ListingBuilder::_IsInScope(const std::string& key) const {
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

QString ListingBuilder::_StrongTag(const MultistatusEntry& entry) {
    const QString tag = _Text(entry, Entry::EntityTag);
    const bool isStrong = tag.size() > 2 && tag.startsWith(QLatin1Char('"')) && tag.endsWith(QLatin1Char('"'));
    return isStrong ? tag : QString();
}

void ListingBuilder::_Describe(const MultistatusEntry& entry, const QString& classType, Form form,
                               DAVPropfindResponse& response) {
    static const QString fileClassType = QLatin1String(ClassTypePrefix) + QLatin1String("File");
    static const QString folderClassType = QLatin1String(ClassTypePrefix) + QLatin1String("Folder");
    const bool isFile = form == Form::File;
    const std::string& key = _href.Key();
    DAVPropfindProperties properties;
    properties.filename = FromUtf8(isFile ? _href.EncodedName() : _href.DecodedName());
    properties.resourceClassType = classType;
    if (classType.isEmpty()) {
        properties.resourceClassType = isFile ? fileClassType : folderClassType;
    }
    properties.versionId = _Text(entry, Entry::VersionId);
    properties.itemId = _Text(entry, Entry::ItemId);
    if (properties.itemId.isEmpty()) {
        properties.itemId = FromUtf8(MadeUpIdPrefix + key);
    }
    properties.ownerId = _Text(entry, Entry::OwnerId);
    properties.privileges = _Text(entry, Entry::Privileges);
    properties.visibility = _Text(entry, Entry::Visibility);
    properties.checkSumMD5 = _Text(entry, Entry::CheckSumMd5);
    properties.syncOption = _Text(entry, Entry::SyncOption);
    if (isFile && properties.versionId.isEmpty() && properties.checkSumMD5.isEmpty()) {
        properties.versionId = _StrongTag(entry);
    }
    properties.createdDate = _Date(entry, Entry::CreationDate);
    properties.lastModifiedDate = _Date(entry, Entry::LastModified);
    properties.linksExtractedAtFileTime = _Date(entry, Entry::LinksExtractedAt);

    QString href = FromUtf8(_href.Path());
    if (form != Form::Folder && href.size() > 1 && href.endsWith(QLatin1Char('/'))) {
        href.chop(1);
    }
    response.Describe(href, std::move(properties));
    const uint64_t size = ContentLengthOf(entry);
    response.contentLength = size > std::numeric_limits<uint32_t>::max() ? -1 : static_cast<int32_t>(size);
    if (size >= ListingSupplement::LeastSize && size <= static_cast<uint64_t>(std::numeric_limits<qint64>::max())) {
        _limits.supplement->AddSize(FromUtf8(key), static_cast<qint64>(size));
    }
    const FileAttributes attributes = isFile ? AttributesOf(entry) : FileAttributes();
    if (!attributes.IsEmpty() || _limits.supplement->KnowsAttributes()) {
        _limits.supplement->SetAttributes(FromUtf8(key), attributes);
    }
    response.versionNumber = IntOf(entry, Entry::Version);
    response.resourceId = IntOf(entry, Entry::ResourceId);
    response.parentResourceId = IntOf(entry, Entry::ParentId);
    if (!entry.Found(Entry::ResourceId)) {
        response.resourceId = MadeUpId(key);
        response.parentResourceId = key.empty() ? 0 : MadeUpId(Href::ParentKey(key));
    }
    response.attribute = AttributeOf(entry);
}

const QString& ListingBuilder::_Text(const MultistatusEntry& entry, MultistatusEntry::Property property) {
    const std::string_view text = Trimmed(entry.Value(property));
    Remembered<QString>& last = _texts[property];
    if (text != last.text) {
        last.text = text;
        last.value = FromUtf8(last.text);
    }
    return last.value;
}

const QDateTime& ListingBuilder::_Date(const MultistatusEntry& entry, MultistatusEntry::Property property) {
    const std::string_view text = Trimmed(entry.Value(property));
    Remembered<QDateTime>& last = _dates[property];
    if (text != last.text) {
        last.text = text;
        last.value = ReadDate(text.data(), text.size());
    }
    return last.value;
}

}  // namespace listing
}  // namespace ovsync
