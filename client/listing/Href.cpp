#include "client/listing/Href.h"

#include <QString>
#include <algorithm>
#include <array>

#include "client/wire/Printable.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace listing {

using sync::core::SyncException;
using wire::Printable;

namespace {

constexpr bool IsUnreserved(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
           c == '_' || c == '~';
}

constexpr std::array<bool, 256> MakeSegmentBytes() {
    std::array<bool, 256> bytes = {};
    for (size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = IsUnreserved(static_cast<char>(i));
    }
    for (const char c : {'!', '$', '&', '\'', '(', ')', '*', '+', ',', ';', '=', ':', '@'}) {
        bytes[static_cast<unsigned char>(c)] = true;
    }
    return bytes;
}

/// Which bytes may stand in a path segment as themselves.
constexpr std::array<bool, 256> SegmentBytes = MakeSegmentBytes();

bool IsSegmentByte(char c) {
    return SegmentBytes[static_cast<unsigned char>(c)];
}

char ToLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

int HexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = ToLower(c);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool IsEscape(const char* at, const char* end) {
    return end - at >= 3 && *at == '%' && HexValue(at[1]) >= 0 && HexValue(at[2]) >= 0;
}

void AppendEscaped(std::string& text, char byte) {
    static const char* const hexDigits = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(byte);
    text += '%';
    text += hexDigits[value >> 4];
    text += hexDigits[value & 0xf];
}

void DecodeSegment(const char* text, size_t size, std::string& decoded) {
    decoded.clear();
    const char* const end = text + size;
    for (const char* at = text; at != end; ++at) {
        if (IsEscape(at, end)) {
            decoded += static_cast<char>(HexValue(at[1]) * 16 + HexValue(at[2]));
            at += 2;
        } else {
            decoded += *at;
        }
    }
}

/// Whether a QString can hold `bytes`: it cannot hold what is not UTF-8, and would drop a leading byte order mark.
bool SurvivesAsText(const std::string& bytes) {
    const QByteArray original = QByteArray::fromRawData(bytes.data(), static_cast<int>(bytes.size()));
    return QString::fromUtf8(original).toUtf8() == original;
}

void RefuseDots(const char* segment, size_t size) {
    if ((size == 1 && segment[0] == '.') || (size == 2 && segment[0] == '.' && segment[1] == '.')) {
        throw SyncException(QStringLiteral("it has a '.' or '..' in it"));
    }
}

/// The size of "http://" or "https://" in front of `text`; 0 when there is neither.
size_t SchemeSize(const char* text, size_t size) {
    for (const std::string& scheme : {std::string("http://"), std::string("https://")}) {
        if (size >= scheme.size() &&
            std::equal(scheme.begin(), scheme.end(), text, [](char a, char b) { return a == ToLower(b); })) {
            return scheme.size();
        }
    }
    return 0;
}

/// The host in a URL's authority, in lower case, without brackets.
std::string HostOfAuthority(const std::string& authority) {
    std::string host = authority.substr(authority.rfind('@') + 1);
    if (!host.empty() && host.front() == '[') {
        host = host.substr(1, host.find(']') - 1);
    } else {
        host = host.substr(0, host.find(':'));
    }
    std::transform(host.begin(), host.end(), host.begin(), ToLower);
    return host;
}

}  // namespace

Href::Href(const QUrl& asked)
    : _host(asked.host(QUrl::FullyEncoded).toLower().toStdString()),
      _asked(asked.path(QUrl::FullyEncoded).toStdString()),
      _base(_asked.substr(0, _asked.rfind('/') + 1)) {}

void Href::Read(const char* text, size_t size) {
    _path.clear();
    _key.clear();
    if (size > 0 && *text == '/') {
        _ReadPath(text, size);
        return;
    }
    const size_t schemeSize = SchemeSize(text, size);
    if (schemeSize == 0) {
        const std::string resolved = size == 0 ? _asked : _base + std::string(text, size);
        _ReadPath(resolved.data(), resolved.size());
        return;
    }
    const char* const end = text + size;
    const char* const path = std::find(text + schemeSize, end, '/');
    const std::string host = HostOfAuthority(std::string(text + schemeSize, path));
    if (host != _host) {
        throw SyncException(QStringLiteral("it names the host \"%1\", but \"%2\" was asked")
                                .arg(Printable(QByteArray::fromStdString(host)), QString::fromStdString(_host)));
    }
    _ReadPath(path, static_cast<size_t>(end - path));
}

std::string Href::EncodedName() const {
    const size_t end = _path.back() == '/' ? _path.size() - 1 : _path.size();
    const size_t start = end == 0 ? 0 : _path.rfind('/', end - 1) + 1;
    return _path.substr(start, end - start);
}

std::string Href::DecodedName() const {
    std::string encoded = EncodedName();
    std::string decoded;
    DecodeSegment(encoded.data(), encoded.size(), decoded);
    if (!SurvivesAsText(decoded)) {
        return encoded;
    }
    for (size_t slash = decoded.find('/'); slash != std::string::npos; slash = decoded.find('/', slash)) {
        decoded.replace(slash, 1, "%2F");
    }
    return decoded;
}

std::string Href::ParentKey(const std::string& key) {
    const size_t slash = key.rfind('/');
    return slash == std::string::npos ? std::string() : key.substr(0, slash);
}

void Href::_ReadPath(const char* text, size_t size) {
    const char* const end = text + size;
    const char* at = text;
    while (at != end) {
        if (*at == '/') {
            ++at;
            continue;
        }
        const char* const start = at;
        bool isPlain = true;
        for (; at != end && *at != '/'; ++at) {
            isPlain = isPlain && IsSegmentByte(*at);
        }
        const auto segmentSize = static_cast<size_t>(at - start);
        _path += '/';
        if (!_key.empty()) {
            _key += '/';
        }
        if (isPlain) {
            RefuseDots(start, segmentSize);
            _path.append(start, segmentSize);
            _key.append(start, segmentSize);
        } else {
            _AppendSegment(start, segmentSize);
        }
    }
    if (_path.empty() || end[-1] == '/') {
        _path += '/';
    }
}

void Href::_AppendSegment(const char* text, size_t size) {
    DecodeSegment(text, size, _segment);
    RefuseDots(_segment.data(), _segment.size());
    if (_segment.find('\0') != std::string::npos) {
        throw SyncException(QStringLiteral("it has a NUL"));
    }
    const char* const end = text + size;
    for (const char* at = text; at != end; ++at) {
        if (IsSegmentByte(*at) || IsEscape(at, end)) {
            _path += *at;
        } else {
            AppendEscaped(_path, *at);
        }
    }
    const bool isText = SurvivesAsText(_segment);
    for (const char byte : _segment) {
        if (isText ? (byte == '%' || byte == '/') : !IsUnreserved(byte)) {
            AppendEscaped(_key, byte);
        } else {
            _key += byte;
        }
    }
}

}  // namespace listing
}  // namespace ovsync
