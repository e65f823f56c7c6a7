#include "client/listing/MultistatusEntry.h"

#include <algorithm>

#include "client/wire/EnumTable.h"
#include "client/wire/HttpStatus.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace listing {

using sync::core::SyncException;
using wire::ByteSlice;
using wire::HttpStatus;

namespace {

const size_t HrefLimit = 16UL * 1024UL;
const size_t ValueLimit = 64UL * 1024UL;
const size_t EntryLimit = 1024UL * 1024UL;

struct PropertyName {
    MultistatusEntry::Property property;
    const char* text;
    size_t size;
};

template <size_t Size>
constexpr PropertyName Name(MultistatusEntry::Property property, const char (&text)[Size]) {
    return {property, text, Size - 1};
}

constexpr PropertyName PropertyNames[] = {
    Name(MultistatusEntry::ContentLength, "getcontentlength"),
    Name(MultistatusEntry::LastModified, "getlastmodified"),
    Name(MultistatusEntry::CreationDate, "creationdate"),
    Name(MultistatusEntry::EntityTag, "getetag"),
    Name(MultistatusEntry::ClassType, "resourceclasstype"),
    Name(MultistatusEntry::ResourceId, "resourceid"),
    Name(MultistatusEntry::ParentId, "parentid"),
    Name(MultistatusEntry::Version, "version"),
    Name(MultistatusEntry::VersionId, "versionid"),
    Name(MultistatusEntry::ItemId, "itemid"),
    Name(MultistatusEntry::OwnerId, "ownerid"),
    Name(MultistatusEntry::Privileges, "privileges"),
    Name(MultistatusEntry::Visibility, "visibility"),
    Name(MultistatusEntry::CheckSumMd5, "checksummd5"),
    Name(MultistatusEntry::SyncOption, "syncoption"),
    Name(MultistatusEntry::LinksExtractedAt, "linksextractedat"),
    Name(MultistatusEntry::Attribute, "attribute"),
};
static_assert(wire::HasRowOfEach(PropertyNames, &PropertyName::property, MultistatusEntry::Attribute),
              "A property is the index of its name.");

bool IsSuccess(int status) {
    return status >= 200 && status < 300;
}

/// The number in "HTTP/1.1 200 OK"; 0 when `line` is something else.
int StatusOf(const ByteSlice& line) {
    const char* const end = line.text + line.size;
    const char* const space = std::find(line.text, end, ' ');
    const bool isStatusLine = line.size > 5 && std::memcmp(line.text, "HTTP/", 5) == 0 && end - space >= 4 &&
                              std::all_of(space + 1, space + 4, [](char c) { return c >= '0' && c <= '9'; }) &&
                              (end - space == 4 || space[4] == ' ');
    return isStatusLine ? (space[1] - '0') * 100 + (space[2] - '0') * 10 + (space[3] - '0') : 0;
}

}  // namespace

MultistatusEntry::Property MultistatusEntry::PropertyNamed(const ByteSlice& localName) {
    for (const PropertyName& name : PropertyNames) {
        if (localName.Is(name.text, name.size)) {
            return name.property;
        }
    }
    return PropertyCount;
}

const char* MultistatusEntry::NameOf(Property property) {
    return PropertyNames[property].text;
}

bool MultistatusEntry::IsOfService(const ByteSlice& localName) {
    switch (PropertyNamed(localName)) {
        case ContentLength:
        case LastModified:
        case CreationDate:
        case EntityTag:
            return false;
        case PropertyCount: {
            const PropertyName container = Name(PropertyCount, "syncproperties");
            return localName.Is(container.text, container.size);
        }
        default:
            return true;
    }
}

void MultistatusEntry::Start() {
    _text.clear();
    _hrefCount = 0;
    _propstatCount = 0;
    _status = 0;
    _found = 0;
    _isCollection = false;
}

void MultistatusEntry::StartHref() {
    StartValue();
    _valueLimit = HrefLimit;
}

void MultistatusEntry::StartValue() {
    _valueStart = _text.size();
    _valueLimit = ValueLimit;
}

void MultistatusEntry::Append(const char* text, size_t size) {
    if (_text.size() - _valueStart + size > _valueLimit) {
        Fail(QStringLiteral("has an href or a value above %1 bytes").arg(_valueLimit));
    }
    if (_text.size() + size > EntryLimit) {
        Fail(QStringLiteral("has values above %1 bytes").arg(EntryLimit));
    }
    _text.append(text, size);
}

void MultistatusEntry::EndHref() {
    ++_hrefCount;
    _href = _LastValue();
}

void MultistatusEntry::EndStatus() {
    int& status = _isInPropstat ? _propstatStatus : _status;
    if (status != 0) {
        Fail(QStringLiteral("has more than one status where there is to be one"));
    }
    const ByteSlice line = _SliceOf(_LastValue()).Trimmed();
    status = StatusOf(line);
    if (status == 0) {
        Fail(QStringLiteral("has a status that cannot be read: \"%1\"").arg(line.ToPrintable()));
    }
}

void MultistatusEntry::EndProperty(Property property) {
    _stagedValues[property] = _LastValue();
    _staged |= 1U << property;
}

void MultistatusEntry::StartPropstat() {
    _isInPropstat = true;
    _propstatStatus = 0;
    _staged = 0;
    _stagedIsCollection = false;
}

void MultistatusEntry::EndPropstat() {
    _isInPropstat = false;
    ++_propstatCount;
    if (_propstatStatus == HttpStatus::NotFound) {
        return;
    }
    if (!IsSuccess(_propstatStatus)) {
        Fail(_propstatStatus == 0
                 ? QStringLiteral("has a propstat without a status")
                 : QStringLiteral("could not be read: a propstat has the status %1").arg(_propstatStatus));
    }
    for (size_t i = 0; i < PropertyCount; ++i) {
        if ((_staged >> i & 1U) != 0) {
            _values[i] = _stagedValues[i];
        }
    }
    _found |= _staged;
    _isCollection = _isCollection || _stagedIsCollection;
}

void MultistatusEntry::SetCollection() {
    _stagedIsCollection = true;
}

void MultistatusEntry::End() {
    if (_hrefCount != 1) {
        Fail(_hrefCount == 0 ? QStringLiteral("has no href")
                             : QStringLiteral("has %1 hrefs in place of one").arg(_hrefCount));
    }
    if (_status != 0 && !IsSuccess(_status)) {
        Fail(QStringLiteral("could not be read: it has the status %1").arg(_status));
    }
    if (_status == 0 && _propstatCount == 0) {
        Fail(QStringLiteral("has neither a propstat nor a status"));
    }
}

void MultistatusEntry::Fail(const QString& reason) const {
    const QString entry =
        _hrefCount == 0 ? QStringLiteral("an entry") : QLatin1String("the entry ") + Href().Trimmed().ToPrintable();
    throw SyncException(entry + QLatin1Char(' ') + reason);
}

}  // namespace listing
}  // namespace ovsync
