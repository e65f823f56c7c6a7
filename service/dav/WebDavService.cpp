#include "service/dav/WebDavService.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <map>
#include <system_error>

#include "service/dav/FileBody.h"
#include "service/dav/PropfindAnswer.h"
#include "service/dav/TextBody.h"
#include "service/protocol/ByteRange.h"
#include "service/protocol/HttpDate.h"
#include "service/protocol/HttpError.h"
#include "service/protocol/ServerPath.h"
#include "service/protocol/SyncCollectionRequest.h"
#include "service/protocol/UnixTime.h"
#include "service/protocol/XmlText.h"

namespace service::dav {
namespace {

constexpr int NotAllowed = 405;
constexpr std::array<const char*, 11> Methods{"OPTIONS", "GET",  "HEAD",     "PUT",       "DELETE", "MKCOL",
                                              "COPY",    "MOVE", "PROPFIND", "PROPPATCH", "REPORT"};
constexpr const char* XmlType = "application/xml; charset=\"utf-8\"";

constexpr std::array<const char*, 3> MethodsById{"DELETE", "MKCOL", "PROPFIND"};
constexpr std::array<const char*, 2> MethodsOfSyncConfiguration{"GET", "HEAD"};

template <typename Names>
std::string AllBut(const Names& offered, const std::string& refused) {
    std::string list;
    for (const char* method : offered) {
        if (method != refused) {
            list += (list.empty() ? "" : ", ") + std::string(method);
        }
    }
    return list;
}

// What may be asked instead of a method that the address of the request does not take.
std::string AllowedInstead(const protocol::Request& request) {
    if (request.IsForSyncConfiguration()) {
        return AllBut(MethodsOfSyncConfiguration, "");
    }
    return request.IsByFolderId() ? AllBut(MethodsById, "") : AllBut(Methods, request.method);
}

int StatusOf(const std::system_error& error) {
    switch (error.code().value()) {
        case EACCES:
        case EPERM:
        case EROFS:
            return 403;
        case ENOSPC:
        case EDQUOT:
            return 507;
        default:
            return 500;
    }
}

// What a header says; nothing when it is not there or cannot be read.
template <typename Value>
std::optional<Value> HeaderValue(const protocol::Request& request, const char* name,
                                 std::optional<Value> (*parse)(std::string_view text)) {
    const std::string* text = request.Header(name);
    return text == nullptr ? std::nullopt : parse(*text);
}

std::optional<bool> ParseBit(std::string_view text) {
    return text == "T" || text == "F" ? std::optional(text == "T") : std::nullopt;
}

// Whether a GET may be answered by 304.
bool IsCurrent(const protocol::Request& request, const store::Resource& resource) {
    if (const std::string* tags = request.Header("if-none-match")) {
        return tree::HasTag(*tags, resource, true);
    }
    const std::string* date = request.Header("if-modified-since");
    const auto since = date == nullptr ? std::nullopt : protocol::ParseHttpDate(*date);
    return since && resource.ModifiedSeconds() <= *since;
}

// What only addresses by path take.
void RefuseByFolderId(const protocol::Request& request) {
    const bool isOffered = std::find(MethodsById.begin(), MethodsById.end(), request.method) != MethodsById.end();
    if (!isOffered || (request.method != "MKCOL" && !request.Where().path.empty())) {
        throw protocol::HttpError(NotAllowed, "The address of a folder by its id does not take " + request.method);
    }
    if (request.method == "PROPFIND" && request.RequestedDepth() != protocol::Request::Depth::Zero) {
        throw protocol::HttpError(403, "The address of a folder by its id takes no other Depth than 0");
    }
}

void AddFolderHeaders(protocol::Answer& answer, const store::Resource& folder) {
    answer.headers.emplace_back("x-ovs-id", folder.itemId);
    const bool fits =
        std::none_of(folder.owner.begin(), folder.owner.end(), [](unsigned char c) { return std::iscntrl(c) != 0; });
    if (fits) {
        answer.headers.emplace_back("x-ovs-ownerid", folder.owner);
    }
}

protocol::Answer UnmetPrecondition(int status, const std::string& name) {
    protocol::Answer answer;
    answer.status = status;
    answer.headers.emplace_back("Content-Type", XmlType);
    answer.body = std::make_unique<TextBody>(
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<D:error xmlns:D=\"DAV:\"><D:" + name + "/></D:error>\n");
    return answer;
}

}  // namespace

bool WebDavService::Knows(const std::string& method) {
    return std::find(Methods.begin(), Methods.end(), method) != Methods.end();
}

protocol::Answer WebDavService::Text(int status, const std::string& text) {
    protocol::Answer answer;
    answer.status = status;
    answer.headers.emplace_back("Content-Type", "text/plain; charset=utf-8");
    answer.body = std::make_unique<TextBody>(text + "\n");
    return answer;
}

protocol::Answer WebDavService::Handle(const protocol::Request& request, store::UploadFile* upload) {
    try {
        return _Dispatch(request, upload);
    } catch (...) {
        protocol::Answer answer = Failure();
        auto reason =
            request.IsOfOwnClient() ? _reasons.Next(answer.status, request.method, request.target) : std::nullopt;
        if (reason) {
            answer.status = 400;
            answer.headers.emplace_back("x-ovs-reason-phrase", std::move(*reason));
        } else if (answer.status == NotAllowed) {
            answer.headers.emplace_back("Allow", AllowedInstead(request));
        }
        return answer;
    }
}

protocol::Answer WebDavService::Failure() {
    try {
        throw;
    } catch (const protocol::HttpError& error) {
        return Text(error.Status(), error.what());
    } catch (const std::system_error& error) {
        return Text(StatusOf(error), error.what());
    } catch (const std::exception& error) {
        return Text(500, error.what());
    }
}

protocol::Answer WebDavService::_Dispatch(const protocol::Request& request, store::UploadFile* upload) {
    static const std::map<std::string, protocol::Answer (WebDavService::*)(const protocol::Request&)> operations{
        {"OPTIONS", &WebDavService::_Options},
        {"GET", &WebDavService::_Get},
        {"HEAD", &WebDavService::_Get},
        {"DELETE", &WebDavService::_Delete},
        {"MKCOL", &WebDavService::_MakeCollection},
        {"COPY", &WebDavService::_CopyOrMove},
        {"MOVE", &WebDavService::_CopyOrMove},
        {"PROPFIND", &WebDavService::_Propfind},
        {"PROPPATCH", &WebDavService::_Proppatch},
        {"REPORT", &WebDavService::_Report},
    };
    const auto operation = operations.find(request.method);
    if (operation == operations.end() && upload == nullptr) {
        throw protocol::HttpError(NotAllowed, "The service does not know the method " + request.method);
    }
    if (request.IsForSyncConfiguration()) {
        return _SyncConfiguration(request);
    }
    if (request.IsByFolderId()) {
        RefuseByFolderId(request);
    }
    return upload == nullptr ? (this->*operation->second)(request) : _Put(request, *upload);
}

protocol::Answer WebDavService::_SyncConfiguration(const protocol::Request& request) {
    if (request.method != "GET" && request.method != "HEAD") {
        throw protocol::HttpError(NotAllowed, "The sync configuration does not take " + request.method);
    }
    auto document = _tree.OpenSyncConfiguration();
    if (!document) {
        throw protocol::HttpError(404, "The service publishes no sync configuration");
    }
    protocol::Answer answer;
    // The encoding is for the document to say.
    answer.headers.emplace_back("Content-Type", "application/xml");
    answer.body = std::make_unique<FileBody>(std::move(document->file), 0, document->size);
    return answer;
}

protocol::Answer WebDavService::_Options(const protocol::Request& request) {
    if (request.target != "*") {
        request.Path();
    }
    protocol::Answer answer;
    answer.headers = {{"DAV", "1, drovane"}, {"Allow", AllBut(Methods, "")}, {"MS-Author-Via", "DAV"}};
    return answer;
}

protocol::Answer WebDavService::_Get(const protocol::Request& request) {
    const std::string path = request.Path();
    auto [resource, file] = _tree.Open(path, tree::Preconditions(request));
    if (resource.isCollection) {
        std::string names;
        for (const auto& entry : _tree.List({path}, protocol::Request::Depth::One, {}, request.isAbandoned).entries) {
            names += entry.path == path
                         ? ""
                         : protocol::LastSegment(entry.path) + (entry.resource.isCollection ? "/\n" : "\n");
        }
        return Text(200, names);
    }
    protocol::Answer answer;
    answer.headers = {{"ETag", resource.ETag()},
                      {"Last-Modified", protocol::FormatHttpDate(resource.ModifiedSeconds())},
                      {"x-ovs-executable", resource.isExecutable ? "T" : "F"}};
    if (IsCurrent(request, resource)) {
        answer.status = 304;
        return answer;
    }
    answer.headers.emplace_back("Content-Type", resource.ContentType());
    answer.headers.emplace_back("Accept-Ranges", "bytes");
    const auto size = static_cast<std::uint64_t>(resource.size);
    const std::string* rangeHeader = request.Header("range");
    const std::string* ifRange = request.Header("if-range");
    std::optional<protocol::ByteRange> range;
    if (rangeHeader != nullptr && (ifRange == nullptr || *ifRange == resource.ETag())) {
        range = protocol::ByteRange::Parse(*rangeHeader, size);
    }
    if (range && range->size == 0) {
        answer = Text(416, "The file has only " + std::to_string(size) + " bytes");
        answer.headers.emplace_back("Content-Range", "bytes */" + std::to_string(size));
        return answer;
    }
    if (range) {
        answer.status = 206;
        answer.headers.emplace_back("Content-Range", "bytes " + std::to_string(range->first) + "-" +
                                                         std::to_string(range->first + range->size - 1) + "/" +
                                                         std::to_string(size));
    }
    const protocol::ByteRange part = range.value_or(protocol::ByteRange{0, size});
    answer.body = std::make_unique<FileBody>(std::move(file), part.first, part.size);
    return answer;
}

protocol::Answer WebDavService::_Put(const protocol::Request& request, store::UploadFile& upload) {
    if (request.Header("content-range") != nullptr) {
        throw protocol::HttpError(400, "A file cannot be put in parts");
    }
    const std::string path = request.Path();
    if (request.target.back() == '/') {
        throw protocol::HttpError(NotAllowed, "The URL ends in '/', so it is that of a collection");
    }
    const auto modified = HeaderValue(request, "x-oc-mtime", protocol::ParseUnixTime);
    const auto isExecutable = HeaderValue(request, "x-ovs-executable", ParseBit);
    const auto [resource, isNew] =
        _tree.Put(path, upload, {modified, isExecutable}, request.user, tree::Preconditions(request));
    protocol::Answer answer;
    answer.status = isNew ? 201 : 204;
    answer.headers.emplace_back("ETag", resource.ETag());
    if (modified) {
        answer.headers.emplace_back("X-OC-Mtime", "accepted");
    }
    if (isExecutable) {
        answer.headers.emplace_back("x-ovs-executable", "accepted");
    }
    return answer;
}

protocol::Answer WebDavService::_Delete(const protocol::Request& request) {
    if (request.RequestedDepth() != protocol::Request::Depth::Infinity) {
        throw protocol::HttpError(400, "DELETE takes no other Depth than infinity");
    }
    _tree.Remove(request.Where(), tree::Preconditions(request));
    protocol::Answer answer;
    answer.status = 204;
    return answer;
}

protocol::Answer WebDavService::_MakeCollection(const protocol::Request& request) {
    if (!request.body.empty()) {
        throw protocol::HttpError(415, "MKCOL takes no body");
    }
    const store::Resource made = _tree.MakeCollection(request.Where(), request.user, tree::Preconditions(request));
    protocol::Answer answer;
    answer.status = 201;
    if (request.IsOfOwnClient()) {
        AddFolderHeaders(answer, made);
        std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<Response><Folders><Folder><id>";
        protocol::AppendEscaped(xml, made.itemId);
        xml += "</id><ownerId>";
        protocol::AppendEscaped(xml, made.owner);
        xml += "</ownerId></Folder></Folders></Response>\n";
        answer.headers.emplace_back("Content-Type", XmlType);
        answer.body = std::make_unique<TextBody>(std::move(xml));
    }
    return answer;
}

protocol::Answer WebDavService::_CopyOrMove(const protocol::Request& request) {
    const std::string* destination = request.Header("destination");
    if (destination == nullptr) {
        throw protocol::HttpError(400, "The header Destination is missing");
    }
    const std::string from = request.Path();
    const std::string to = request.PathOf(*destination);
    const std::string* overwriteHeader = request.Header("overwrite");
    const bool overwrite = overwriteHeader == nullptr || strcasecmp(overwriteHeader->c_str(), "F") != 0;
    const protocol::Request::Depth depth = request.RequestedDepth();
    const bool isMove = request.method == "MOVE";
    if (depth == protocol::Request::Depth::One || (isMove && depth == protocol::Request::Depth::Zero)) {
        throw protocol::HttpError(400, request.method + " does not take this Depth");
    }
    const tree::Preconditions preconditions(request);
    const bool isNew = isMove
                           ? _tree.Move(from, to, overwrite, preconditions)
                           : _tree.Copy(from, to, depth, overwrite, request.user, preconditions, request.isAbandoned);
    protocol::Answer answer;
    answer.status = isNew ? 201 : 204;
    return answer;
}

protocol::Answer WebDavService::_Propfind(const protocol::Request& request) {
    protocol::PropfindRequest wanted = protocol::PropfindRequest::Parse(request.body);
    tree::Listing listing = _tree.List(request.Where(), request.RequestedDepth(),
                                       {WantsDeadProperties(wanted), WantsSyncToken(wanted)}, request.isAbandoned);
    const std::string* date = request.Header("if-modified-since");
    const auto since = date == nullptr ? std::nullopt : protocol::ParseHttpDate(*date);
    protocol::Answer answer;
    // A date cannot say on which side of it a change within its second lay.
    if (since && listing.lastChange / 1000 < *since) {
        answer.status = 304;
        return answer;
    }
    answer.status = 207;
    answer.headers.emplace_back("Content-Type", XmlType);
    const store::Resource& asked = listing.entries.front().resource;
    if (request.IsOfOwnClient() && asked.isCollection) {
        AddFolderHeaders(answer, asked);
    }
    const bool isMinimal = request.PrefersMinimal();
    if (isMinimal) {
        answer.headers.emplace_back("Preference-Applied", "return=minimal");
    }
    answer.body =
        std::make_unique<PropfindAnswer>(std::move(listing.entries), std::move(wanted), isMinimal, _checksums);
    return answer;
}

protocol::Answer WebDavService::_Report(const protocol::Request& request) {
    protocol::SyncCollectionRequest wanted = protocol::SyncCollectionRequest::Parse(request.body);
    if (request.Header("depth") != nullptr && request.RequestedDepth() != protocol::Request::Depth::Zero) {
        throw protocol::HttpError(400, "A sync-collection says by its sync-level how deep it goes; its Depth is 0");
    }
    tree::Changes changes;
    try {
        changes = _tree.ListChanges(request.Path(), wanted.depth, wanted.token, WantsDeadProperties(wanted.properties),
                                    request.isAbandoned);
    } catch (const tree::InvalidSyncToken&) {
        return UnmetPrecondition(403, "valid-sync-token");
    }
    if (wanted.limit && changes.entries.size() + changes.removals.size() > *wanted.limit) {
        return UnmetPrecondition(507, "number-of-matches-within-limits");
    }
    std::string trailer;
    for (const auto& removal : changes.removals) {
        trailer += "<D:response><D:href>";
        protocol::AppendEscaped(trailer, protocol::Href(removal.path, removal.isCollection));
        trailer += "</D:href><D:status>HTTP/1.1 404 Not Found</D:status></D:response>\n";
    }
    trailer += "<D:sync-token>" + changes.token + "</D:sync-token>\n";
    protocol::Answer answer;
    answer.status = 207;
    answer.headers.emplace_back("Content-Type", XmlType);
    answer.body = std::make_unique<PropfindAnswer>(std::move(changes.entries), std::move(wanted.properties),
                                                   request.PrefersMinimal(), _checksums, std::move(trailer));
    return answer;
}

protocol::Answer WebDavService::_Proppatch(const protocol::Request& request) {
    const protocol::PropertyUpdate update = protocol::PropertyUpdate::Parse(request.body);
    const std::string path = request.Path();
    const auto [outcomes, isCollection] = _tree.SetProperties(path, update, tree::Preconditions(request));
    std::string xml = MultistatusBegin();
    xml += "<D:response><D:href>" + protocol::Href(path, isCollection) + "</D:href>\n";
    for (const auto& outcome : outcomes) {
        xml += "<D:propstat><D:prop>";
        AppendEmptyElement(xml, outcome.name);
        xml += "</D:prop>";
        switch (outcome.status) {
            case 200:
                xml += "<D:status>HTTP/1.1 200 OK</D:status>";
                break;
            case 403:
                xml +=
                    "<D:status>HTTP/1.1 403 Forbidden</D:status>"
                    "<D:error><D:cannot-modify-protected-property/></D:error>";
                break;
            case 409:
                xml += "<D:status>HTTP/1.1 409 Conflict</D:status>";
                break;
            default:
                xml += "<D:status>HTTP/1.1 424 Failed Dependency</D:status>";
                break;
        }
        if (!outcome.reason.empty()) {
            xml += "<D:responsedescription>";
            protocol::AppendEscaped(xml, outcome.reason);
            xml += "</D:responsedescription>";
        }
        xml += "</D:propstat>\n";
    }
    xml += "</D:response>\n";
    xml += MultistatusEnd;
    protocol::Answer answer;
    answer.status = 207;
    answer.headers.emplace_back("Content-Type", XmlType);
    answer.body = std::make_unique<TextBody>(std::move(xml));
    return answer;
}

}  // namespace service::dav
