#pragma once

#include <string>

#include "service/Answer.h"
#include "service/Preconditions.h"
#include "service/ReasonPhrases.h"
#include "service/Request.h"
#include "service/ServiceTree.h"

namespace service {

/// Answers the requests of WebDAV clients from a tree. Thread-safe.
class WebDavService {
public:
    /// `tree` must outlive this object and the answers.
    explicit WebDavService(ServiceTree& tree) : _tree(tree) {}

    /// Whether a request with this method can be answered by something else than 405.
    static bool Knows(const std::string& method);

    /// Carries out the request, whose body has been read. What goes wrong becomes an answer of 400 or above.
    Answer Handle(Request& request);

    /// The answer that fits the exception being handled.
    static Answer Failure();

    /// A short text with its status.
    static Answer Text(int status, const std::string& text);

private:
    Answer _Dispatch(Request& request);
    Answer _SyncConfiguration(const Request& request);
    Answer _Options(Request& request);
    Answer _Get(Request& request);
    Answer _Put(Request& request);
    Answer _Delete(Request& request);
    Answer _MakeCollection(Request& request);
    Answer _CopyOrMove(Request& request);
    Answer _Propfind(Request& request);
    Answer _Proppatch(Request& request);

    ServiceTree& _tree;
    ReasonPhrases _reasons;
};

}  // namespace service
