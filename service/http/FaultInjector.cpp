#include "service/http/FaultInjector.h"

#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

#include "service/dav/TextBody.h"
#include "service/dav/WebDavService.h"
#include "service/http/FaultyBody.h"
#include "service/store/FileDescriptor.h"

namespace service::http {
namespace {

std::string Drain(protocol::IBody& body) {
    constexpr std::size_t blockSize = 65536;
    std::string text;
    std::string block(blockSize, '\0');
    while (const std::size_t count = body.Read(block.data(), block.size())) {
        text.append(block, 0, count);
    }
    return text;
}

protocol::Answer Page(int status, const std::string& heading) {
    protocol::Answer answer;
    answer.status = status;
    answer.headers.emplace_back("Content-Type", "text/html; charset=utf-8");
    if (status != 204 && status != 304) {
        answer.body = std::make_unique<dav::TextBody>("<html><body><h1>" + heading + "</h1></body></html>\n");
    }
    return answer;
}

protocol::Answer Redirection(int status, const std::string& location) {
    protocol::Answer answer = dav::WebDavService::Text(status, "Elsewhere");
    answer.headers.emplace_back("Location", location);
    return answer;
}

}  // namespace

void FaultInjector::LeaveUnanswered(const Fault& fault, int connection) {
    if (fault.kind == Fault::Kind::Hang) {
        _Hang(connection);
    } else {
        _Reset(connection);
    }
}

protocol::Answer FaultInjector::Instead(const Fault& fault, const protocol::Request& request,
                                        const std::string& server) {
    const auto status = static_cast<int>(fault.number);
    switch (fault.kind) {
        case Fault::Kind::Redirect:
            return Redirection(status, server + request.target + "?redirected");
        case Fault::Kind::ErrorPage:
            return Page(200, "The service is down");
        default:
            return Page(status, "Status " + std::to_string(status));
    }
}

protocol::Answer FaultInjector::Spoilt(protocol::Answer answer, const Fault& fault, int connection) {
    if (!answer.body) {
        return answer;
    }
    if (fault.kind == Fault::Kind::ContentType) {
        for (auto& [name, value] : answer.headers) {
            if (name == "Content-Type") {
                value = fault.type;
            }
        }
    } else if (fault.kind == Fault::Kind::ContentLength) {
        std::string text = Drain(*answer.body);
        const std::int64_t announced = static_cast<std::int64_t>(text.size()) + fault.number;
        answer.headers.emplace_back("Content-Length", std::to_string(std::max<std::int64_t>(announced, 0)));
        answer.body = std::make_unique<dav::TextBody>(std::move(text));
    } else {
        const auto reset = [this, connection] { _Reset(connection); };
        answer.body = std::make_unique<FaultyBody>(std::move(answer.body), fault, reset, _stop);
    }
    return answer;
}

void FaultInjector::_Hang(int connection) {
    pollfd client{connection, POLLRDHUP, 0};
    while (!_stop.WaitFor(std::chrono::milliseconds(50)) && poll(&client, 1, 0) == 0) {
    }
}

// Makes the client's next read or write fail with "connection reset", once what was sent has arrived there.
void FaultInjector::_Reset(int connection) {
    int unsent = 0;
    while (ioctl(connection, SIOCOUTQ, &unsent) == 0 && unsent > 0 && !_stop.WaitFor(std::chrono::milliseconds(5))) {
    }
    const linger none{1, 0};
    setsockopt(connection, SOL_SOCKET, SO_LINGER, &none, sizeof(none));
    // The HTTP library would end the stream in an orderly way first; so it gets another socket to close.
    const store::FileDescriptor unconnected(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    dup2(unconnected.Get(), connection);
}

}  // namespace service::http
