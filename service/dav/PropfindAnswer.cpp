#include "service/dav/PropfindAnswer.h"

#include <algorithm>

#include "service/protocol/ServerPath.h"
#include "service/protocol/XmlText.h"

namespace service::dav {
namespace {

constexpr std::string_view FoundEnd = "</D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat>\n";
constexpr std::string_view MissingEnd = "</D:prop><D:status>HTTP/1.1 404 Not Found</D:status></D:propstat>\n";

bool ContainsChecksum(const tree::LiveProperty& property) {
    return property.name == "checksummd5" || property.name == "syncproperties";
}

std::string EmptyElement(const protocol::PropertyName& name) {
    std::string xml;
    AppendEmptyElement(xml, name);
    return xml;
}

}  // namespace

void AppendEmptyElement(std::string& xml, const protocol::PropertyName& name) {
    const tree::LiveProperty* live = tree::FindLiveProperty(name);
    if (live != nullptr || name.nameSpace == protocol::DavNamespace) {
        xml += '<';
        xml += live == nullptr ? 'D' : live->prefix;
        xml += ':' + name.name + "/>";
    } else if (name.nameSpace.empty()) {
        xml += '<' + name.name + "/>";
    } else {
        xml += "<X:" + name.name + " xmlns:X=\"";
        protocol::AppendEscaped(xml, name.nameSpace);
        xml += "\"/>";
    }
}

std::string MultistatusBegin() {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<D:multistatus" + std::string(tree::PrefixDeclarations) + ">\n";
}

bool WantsDeadProperties(const protocol::PropfindRequest& request) {
    return request.kind != protocol::PropfindRequest::Kind::Listed ||
           std::any_of(request.names.begin(), request.names.end(),
                       [](const protocol::PropertyName& name) { return tree::FindLiveProperty(name) == nullptr; });
}

bool WantsSyncToken(const protocol::PropfindRequest& request) {
    return std::any_of(request.names.begin(), request.names.end(), [](const protocol::PropertyName& name) {
        return name.nameSpace == protocol::DavNamespace && name.name == "sync-token";
    });
}

PropfindAnswer::PropfindAnswer(std::vector<tree::Listing::Entry> entries, protocol::PropfindRequest request,
                               bool isMinimal, tree::Checksums& checksums, std::string trailer)
    : _entries(std::move(entries)),
      _kind(request.kind),
      _isMinimal(isMinimal),
      _checksums(checksums),
      _text(MultistatusBegin()),
      _trailer(std::move(trailer)) {
    const bool isAll = _kind == protocol::PropfindRequest::Kind::AllProperties;
    if (isAll) {
        for (const tree::LiveProperty& property : tree::LiveProperties()) {
            if (property.prefix == 'D') {
                _wanted.push_back({&property, {}, ""});
            }
        }
    }
    for (protocol::PropertyName& name : request.names) {
        const tree::LiveProperty* live = tree::FindLiveProperty(name);
        // All dead properties, and those of RFC 4918, are in "all" anyway.
        if (!isAll || (live != nullptr && live->prefix != 'D')) {
            std::string empty = EmptyElement(name);
            _wanted.push_back({live, std::move(name), std::move(empty)});
        }
    }
    _needsChecksums = _kind == protocol::PropfindRequest::Kind::Names ||
                      std::any_of(_wanted.begin(), _wanted.end(), [](const Wanted& wanted) {
                          return wanted.live != nullptr && ContainsChecksum(*wanted.live);
                      });
}

std::size_t PropfindAnswer::Read(char* buffer, std::size_t size) {
    if (_position == _text.size()) {
        _text.clear();
        _position = 0;
    }
    while (_next < _entries.size() && _text.size() - _position < size) {
        _Append(_entries[_next]);
        // What has been written is not needed again, and a listing can be large.
        _entries[_next++] = {};
    }
    if (_next == _entries.size() && !_isEnded) {
        _text += _trailer;
        _text += MultistatusEnd;
        _isEnded = true;
    }
    const std::size_t count = _text.copy(buffer, size, _position);
    _position += count;
    return count;
}

void PropfindAnswer::_CompleteChecksum(tree::Listing::Entry& entry) {
    if (entry.resource.size <= _bytesLeft) {
        _bytesLeft -= entry.resource.size;
        _checksums.Complete(entry);
    } else {
        _checksums.CompleteAllLater();
    }
}

void PropfindAnswer::_Append(tree::Listing::Entry& entry) {
    if (_needsChecksums && !entry.resource.isCollection && entry.resource.md5.empty()) {
        _CompleteChecksum(entry);
    }
    _text += "<D:response><D:href>";
    protocol::AppendEscaped(_text, protocol::Href(entry.path, entry.resource.isCollection));
    _text += "</D:href>\n";
    if (_kind == protocol::PropfindRequest::Kind::Names) {
        _AppendNames(entry);
    } else {
        _AppendValues(entry);
    }
    _text += "</D:response>\n";
}

void PropfindAnswer::_AppendNames(const tree::Listing::Entry& entry) {
    _text += "<D:propstat><D:prop>";
    for (const tree::LiveProperty& property : tree::LiveProperties()) {
        std::string value;
        if (property.append(entry.resource, value)) {
            AppendEmptyElement(_text, {std::string(tree::NamespaceOf(property)), std::string(property.name)});
        }
    }
    for (const protocol::DeadProperty& dead : entry.deadProperties) {
        AppendEmptyElement(_text, dead.name);
    }
    _text += FoundEnd;
}

void PropfindAnswer::_AppendValues(const tree::Listing::Entry& entry) {
    _missing.clear();
    const std::size_t begin = _text.size();
    _text += "<D:propstat><D:prop>";
    const std::size_t beforeValues = _text.size();
    for (const Wanted& wanted : _wanted) {
        if (wanted.live != nullptr) {
            if (!tree::AppendElement(*wanted.live, entry.resource, _text)) {
                _missing += wanted.empty;
            }
            continue;
        }
        const auto dead = std::find_if(
            entry.deadProperties.begin(), entry.deadProperties.end(), [&](const protocol::DeadProperty& property) {
                return property.name.name == wanted.name.name && property.name.nameSpace == wanted.name.nameSpace;
            });
        if (dead == entry.deadProperties.end()) {
            _missing += wanted.empty;
        } else {
            _text += dead->xml;
        }
    }
    if (_kind == protocol::PropfindRequest::Kind::AllProperties) {
        for (const protocol::DeadProperty& dead : entry.deadProperties) {
            _text += dead.xml;
        }
    }
    if (_missing.empty() || _isMinimal) {
        // An empty propstat stays: a response must have at least one.
        _text += FoundEnd;
        return;
    }
    if (_text.size() == beforeValues) {
        _text.resize(begin);
    } else {
        _text += FoundEnd;
    }
    _text += "<D:propstat><D:prop>";
    _text += _missing;
    _text += MissingEnd;
}

}  // namespace service::dav
