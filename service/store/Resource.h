#pragma once

#include <cstdint>
#include <string>

namespace service::store {

/// A file or collection and what the service keeps about it. Texts that are not set are empty.
struct Resource {
    /// One that is made at `now` (milliseconds) in the collection `parent`.
    static Resource New(const Resource& parent, const std::string& name, const std::string& owner, bool isCollection,
                        std::int64_t now);

    std::int64_t id = 0;
    /// The id of the collection that it lies in; 0 in the root.
    std::int64_t parent = 0;
    /// The last segment of the server path; empty in the root.
    std::string name;
    bool isCollection = false;
    /// Names the resource for good; follows from the id.
    std::string itemId;
    std::string owner;
    std::string privileges = "rw";
    std::string visibility = "show";
    std::string classType;
    std::string displayName;
    std::string syncOption;
    std::string linksExtractedAt;
    std::string attribute;
    /// Stays 1 in a collection.
    std::int64_t version = 1;
    /// Bytes of a file.
    std::int64_t size = 0;
    /// The last change of the content, in nanoseconds since 1970: the time that the file or folder has on the disk, in
    /// a folder therefore the last change of its list of children.
    std::int64_t modified = 0;
    /// Whether a file may be executed by its owner on the disk.
    bool isExecutable = false;
    /// Of a file's content, 32 lower-case hexadecimal digits; empty until it is computed.
    std::string md5;
    /// When the service first knew of it, by its clock, in milliseconds.
    std::int64_t created = 0;
    /// The last change of anything in this resource, by the service's clock, in milliseconds. A new
    /// name, and a new list of children in a collection, are changes too.
    std::int64_t changed = 0;

    /// Not kept: what a collection's listing has, if it was asked for.
    std::string syncToken;

    /// Names this version of this resource and no other.
    std::string VersionId() const;

    /// The strong entity tag of a file, with its quotation marks; empty in a collection.
    std::string ETag() const;

    /// The media type of a file, by its name.
    std::string ContentType() const;

    /// The last change of the content in seconds since 1970, rounded down.
    std::int64_t ModifiedSeconds() const;
};

/// What a Resource has of the same names.
struct KnownChild {
    std::int64_t id = 0;
    std::string name;
    bool isCollection = false;
    std::int64_t size = 0;
    std::int64_t modified = 0;
    bool isExecutable = false;
    std::int64_t changed = 0;
};

}  // namespace service::store
