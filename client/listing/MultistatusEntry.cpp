#include "client/listing/MultistatusEntry.h"

#include <algorithm>

#include "client/listing/CollectionTag.h"
#include "client/wire/AttributeNames.h"
#include "client/wire/EnumTable.h"
#include "client/wire/HttpStatus.h"
#include "client/wire/Printable.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace listing {

using sync::core::SyncException;
using wire::HttpStatus;

namespace {

const size_t HrefLimit = 16UL * 1024UL;
const size_t ValueLimit = 64UL * 1024UL;
const size_t EntryLimit = 1024UL * 1024UL;

struct PropertyName {
    MultistatusEntry::Property property;
    std::string_view text;
    std::string_view nameSpace = "DAV:";
};

constexpr PropertyName PropertyNames[] = {
    {MultistatusEntry::ContentLength, "getcontentlength"},
    {MultistatusEntry::LastModified, "getlastmodified"},
    {MultistatusEntry::CreationDate, "creationdate"},
    {MultistatusEntry::EntityTag, "getetag"},
    {MultistatusEntry::ClassType, "resourceclasstype"},
    {MultistatusEntry::ResourceId, "resourceid"},
    {MultistatusEntry::ParentId, "parentid"},
    {MultistatusEntry::Version, "version"},
    {MultistatusEntry::VersionId, "versionid"},
    {MultistatusEntry::ItemId, "itemid"},
    {MultistatusEntry::OwnerId, "ownerid"},
    {MultistatusEntry::Privileges, "privileges"},
    {MultistatusEntry::Visibility, "visibility"},
    {MultistatusEntry::CheckSumMd5, "checksummd5"},
    {MultistatusEntry::SyncOption, "syncoption"},
    {MultistatusEntry::LinksExtractedAt, "linksextractedat"},
    {MultistatusEntry::Attribute, "attribute"},
    {MultistatusEntry::Executable, wire::ExecutableName, wire::ExecutableNamespace},
    {MultistatusEntry::KeptDate, wire::KeptDateName, wire::KeptDateNamespace},
    {MultistatusEntry::FileId, "id", FileIdNamespace},
    {MultistatusEntry::FileIdOfServer, "fileid", FileIdNamespace},
};
static_assert(wire::HasRowOfEach(PropertyNames, &PropertyName::property, MultistatusEntry::FileIdOfServer),
              "A property is the index of its name.");

bool IsSuccess(int status) {
    return status >= 200 && status < 300;
}

/// The number in "HTTP/1.1 200 OK"; 0 when `line` is something else.
int StatusOf(std::string_view line) {
    const std::string_view start = "HTTP/";
    const std::string_view number = line.substr(std::min(line.find(' '), line.size()));
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const bool isStatusLine = line.substr(0, start.size()) == start && number.size() >= 4 &&
                              std::all_of(number.begin() + 1, number.begin() + 4, isDigit) &&
                              (number.size() == 4 || number[4] == ' ');
    return isStatusLine ? (number[1] - '0') * 100 + (number[2] - '0') * 10 + (number[3] - '0') : 0;
}

}  // namespace

std::string_view Trimmed(std::string_view text) {
    const char* const spaces = " \t\n\r";
    const size_t start = std::min(text.find_first_not_of(spaces), text.size());
    return text.substr(start, text.find_last_not_of(spaces) + 1 - start);
}

MultistatusEntry::Property MultistatusEntry::PropertyNamed(std::string_view nameSpace, std::string_view localName) {
    for (const PropertyName& name : PropertyNames) {
        if (localName == name.text && nameSpace == name.nameSpace) {
            return name.property;
        }
    }
    return PropertyCount;
}

const char* MultistatusEntry::NameOf(Property property) {
    return PropertyNames[property].text.data();
}

bool MultistatusEntry::IsOfService(std::string_view localName) {
    switch (PropertyNamed("DAV:", localName)) {
        case ContentLength:
        case LastModified:
        case CreationDate:
        case EntityTag:
            return false;
        case PropertyCount:
            return localName == "syncproperties";
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
        Fail(QStringLiteral("has a path or a value above %1 bytes").arg(_valueLimit));
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
    const std::string_view line = Trimmed(_SliceOf(_LastValue()));
    status = StatusOf(line);
    if (status == 0) {
        Fail(QStringLiteral("has a status that cannot be read: \"%1\"").arg(wire::Printable(line.data(), line.size())));
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
                 ? QStringLiteral("has properties without a status")
                 : QStringLiteral("could not be read: its properties have the status %1").arg(_propstatStatus));
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
        Fail(_hrefCount == 0 ? QStringLiteral("has no path")
                             : QStringLiteral("has %1 paths in place of one").arg(_hrefCount));
    }
    if (_status != 0 && !IsSuccess(_status) && !IsGone()) {
        Fail(QStringLiteral("could not be read: it has the status %1").arg(_status));
    }
    if (_status == 0 && _propstatCount == 0) {
        Fail(QStringLiteral("has neither properties nor a status"));
    }
}

bool MultistatusEntry::IsGone() const {
    return _status == HttpStatus::NotFound && _propstatCount == 0;
}

void MultistatusEntry::Fail(const QString& reason) const {
    const std::string_view href = Trimmed(Href());
    const QString entry = _hrefCount == 0 ? QStringLiteral("an entry")
                                          : QLatin1String("the entry ") + wire::Printable(href.data(), href.size());
    throw SyncException(entry + QLatin1Char(' ') + reason);
}

}  // namespace listing
}  // namespace ovsync
