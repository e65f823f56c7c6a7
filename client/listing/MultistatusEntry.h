#pragma once

#include <QString>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ovsync {
namespace listing {

/// Without the white space of XML at both ends. Thread-safe.
std::string_view Trimmed(std::string_view text);

/// What one response element of a multistatus holds, as bytes. One object takes all entries of a document in turn and
/// keeps its buffer. Not thread-safe.
///
/// The operations that fill it follow the elements of the document. They throw SyncException, which names the entry,
/// for what makes it unfit for a listing: a href above 16 KiB, a value above 64 KiB, values above 1 MiB together, other
/// than one href, neither a propstat nor a status, and a status that says that something could not be read, unless
/// IsGone.
class MultistatusEntry {
public:
    enum Property : uint8_t {
        ContentLength,
        LastModified,
        CreationDate,
        EntityTag,
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
        Executable,
        KeptDate,
        FileId,
        FileIdOfServer,
        PropertyCount
    };

    /// PropertyCount when there is none of that name.
    static Property PropertyNamed(std::string_view nameSpace, std::string_view localName);
    static const char* NameOf(Property property);
    /// Whether `localName` is a property of the namespace DAV: that only the Drovane service knows.
    static bool IsOfService(std::string_view localName);

    void Start();
    void StartHref();
    /// Of a status or a property.
    void StartValue();
    void Append(const char* text, size_t size);
    /// The text since StartHref.
    void EndHref();
    /// The text since StartValue is a status line: of the propstat that is open, or else of the entry.
    void EndStatus();
    void EndProperty(Property property);
    void StartPropstat();
    /// The properties since StartPropstat count when its status, which may have come before or after them, is 2xx.
    void EndPropstat();
    void SetCollection();
    void End();

    /// The rest is for reading, after End.

    std::string_view Href() const { return _SliceOf(_href); }
    bool IsCollection() const { return _isCollection; }
    /// Whether there is nothing of that name any more, as an answer that tells of changes says it.
    bool IsGone() const;
    bool Found(Property property) const { return (_found >> property & 1U) != 0; }
    /// Empty when the property was not found. Valid until the next Start.
    std::string_view Value(Property property) const {
        return Found(property) ? _SliceOf(_values[property]) : std::string_view();
    }

    /// Throws a SyncException of the form "the entry <href> <reason>".
    [[noreturn]] void Fail(const QString& reason) const;

private:
    struct Range {
        size_t start;
        size_t end;
    };

    std::string_view _SliceOf(const Range& range) const {
        return std::string_view(_text).substr(range.start, range.end - range.start);
    }
    Range _LastValue() const { return {_valueStart, _text.size()}; }

    // The texts of the entry, one after the other.
    std::string _text;
    size_t _valueStart = 0;
    size_t _valueLimit = 0;
    Range _href = {};
    std::array<Range, PropertyCount> _values = {};
    std::array<Range, PropertyCount> _stagedValues = {};
    uint32_t _found = 0;
    uint32_t _staged = 0;
    int _hrefCount = 0;
    int _propstatCount = 0;
    int _status = 0;
    int _propstatStatus = 0;
    bool _isInPropstat = false;
    bool _isCollection = false;
    bool _stagedIsCollection = false;
};

}  // namespace listing
}  // namespace ovsync
