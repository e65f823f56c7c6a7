#pragma once

#include <string>

#include "service/dav/ReasonPhrases.h"
#include "service/protocol/Answer.h"
#include "service/protocol/Request.h"
#include "service/tree/Checksums.h"
#include "service/tree/Preconditions.h"
#include "service/tree/ServiceTree.h"

namespace service::dav {

/// Answers the requests of WebDAV clients from a tree. Thread-safe.
class WebDavService {
public:
    /// `tree` must outlive this object, and this object the answers.
    explicit WebDavService(tree::ServiceTree& tree) : _tree(tree), _checksums(tree) {}

    /// Whether a request with this method can be answered by something else than 405.
    static bool Knows(const std::string& method);

    /// Carries out the request, whose body has been read; that of a PUT is in `upload`, which others do not have. What
    /// goes wrong becomes an answer of 400 or above.
    protocol::Answer Handle(const protocol::Request& request, store::UploadFile* upload);

    /// The answer that fits the exception being handled.
    static protocol::Answer Failure();

    /// A short text with its status.
    static protocol::Answer Text(int status, const std::string& text);

private:
    protocol::Answer _Dispatch(const protocol::Request& request, store::UploadFile* upload);
    protocol::Answer _SyncConfiguration(const protocol::Request& request);
    protocol::Answer _Options(const protocol::Request& request);
    protocol::Answer _Get(const protocol::Request& request);
    protocol::Answer _Put(const protocol::Request& request, store::UploadFile& upload);
    protocol::Answer _Delete(const protocol::Request& request);
    protocol::Answer _MakeCollection(const protocol::Request& request);
    protocol::Answer _CopyOrMove(const protocol::Request& request);
    protocol::Answer _Propfind(const protocol::Request& request);
    protocol::Answer _Report(const protocol::Request& request);
    protocol::Answer _Proppatch(const protocol::Request& request);

    tree::ServiceTree& _tree;
    tree::Checksums _checksums;
    ReasonPhrases _reasons;
};

}  // namespace service::dav
