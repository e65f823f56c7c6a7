#include "service/http/HttpServer.h"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <iostream>
#include <system_error>

#include "service/protocol/Credentials.h"
#include "service/protocol/HttpDate.h"
#include "service/protocol/HttpError.h"

namespace service::http {
namespace {

constexpr std::size_t LargestXml = 1024UL * 1024UL;
constexpr std::size_t BlockSize = 65536;
constexpr std::size_t ConnectionMemory = 262144;
constexpr unsigned IdleSeconds = 300;
constexpr std::size_t MostIdleConnections = 100;

int Socket(MHD_Connection* connection) {
    return MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
}

bool HasLeft(int client) {
    pollfd state{client, POLLRDHUP, 0};
    return poll(&state, 1, 0) != 0;
}

store::FileDescriptor Listen(std::uint16_t port) {
    store::FileDescriptor listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int yes = 1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (!listener.IsOpen() || setsockopt(listener.Get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes)) != 0 ||
        bind(listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        listen(listener.Get(), SOMAXCONN) != 0) {
        throw std::system_error(errno, std::generic_category(), "Cannot listen on port " + std::to_string(port));
    }
    return listener;
}

std::uint16_t PortOf(int listener) {
    sockaddr_in address{};
    socklen_t size = sizeof(address);
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

}  // namespace

struct HttpServer::Exchange {
    protocol::Request request;
    bool isClear = true;
    // The body of a PUT.
    std::unique_ptr<store::UploadFile> upload;
    std::optional<Fault> fault;
    // What is answered although the request was not, or not wholly, taken in.
    std::optional<protocol::Answer> refusal;
};

struct HttpServer::Callbacks {
    static MHD_Result Handle(void* server, MHD_Connection* connection, const char* target, const char* method,
                             const char* version, const char* data, std::size_t* size, void** state) try {
        auto& self = *static_cast<HttpServer*>(server);
        auto* exchange = static_cast<Exchange*>(*state);
        if (exchange == nullptr) {
            self._idle.Busy(connection);
            exchange = self._Begin(connection, target, method, version).release();
            *state = exchange;
            // Nobody knows where the body of a request ends that is not clear.
            return exchange->isClear || self._Finish(connection, *exchange) ? MHD_YES : MHD_NO;
        }
        if (*size > 0) {
            TakeIn(*exchange, {data, *size});
            *size = 0;
            return MHD_YES;
        }
        return self._Finish(connection, *exchange) ? MHD_YES : MHD_NO;
    } catch (const std::exception&) {
        return MHD_NO;
    }

    static void TakeIn(Exchange& exchange, std::string_view data) {
        const bool discard = exchange.refusal || (exchange.fault && exchange.fault->ReplacesOperation());
        if (discard) {
            return;
        }
        if (!exchange.upload) {
            if (exchange.request.body.size() + data.size() > LargestXml) {
                exchange.refusal = dav::WebDavService::Text(413, "The body of the request is longer than 1 MiB");
                return;
            }
            exchange.request.body += data;
            return;
        }
        try {
            exchange.upload->Write(data);
        } catch (const std::system_error&) {
            exchange.refusal = dav::WebDavService::Failure();
            exchange.upload.reset();
        }
    }

    static void Notice(void* server, MHD_Connection* connection, void** /*context*/,
                       MHD_ConnectionNotificationCode code) {
        auto& self = *static_cast<HttpServer*>(server);
        if (code == MHD_CONNECTION_NOTIFY_STARTED) {
            self._idle.Opened(connection, Socket(connection));
        } else {
            self._idle.Closed(connection);
        }
    }

    static void Completed(void* server, MHD_Connection* connection, void** state, MHD_RequestTerminationCode /*code*/) {
        static_cast<HttpServer*>(server)->_idle.Idle(connection);
        const std::unique_ptr<Exchange> finished(static_cast<Exchange*>(*state));
        *state = nullptr;
    }

    // Names are decoded after the path has been taken apart.
    static std::size_t LeaveEncoded(void* /*server*/, MHD_Connection* /*connection*/, char* text) {
        return std::char_traits<char>::length(text);
    }

    static MHD_Result AddHeader(void* headers, MHD_ValueKind /*kind*/, const char* name, const char* value) {
        std::string lower = name;
        std::transform(lower.begin(), lower.end(), lower.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        std::string& joined = (*static_cast<std::map<std::string, std::string>*>(headers))[lower];
        joined += (joined.empty() ? "" : ", ") + std::string(value == nullptr ? "" : value);
        return MHD_YES;
    }

    static ssize_t ReadBody(void* body, std::uint64_t /*position*/, char* buffer, std::size_t size) try {
        const std::size_t count = static_cast<protocol::IBody*>(body)->Read(buffer, size);
        return count == 0 ? MHD_CONTENT_READER_END_OF_STREAM : static_cast<ssize_t>(count);
    } catch (const std::exception&) {
        return MHD_CONTENT_READER_END_WITH_ERROR;
    }

    static void FreeBody(void* body) {
        const std::unique_ptr<protocol::IBody> finished(static_cast<protocol::IBody*>(body));
    }
};

HttpServer::HttpServer(tree::ServiceTree& tree, const Options& options)
    : _tree(tree), _options(options), _service(tree), _faults(options.faults), _idle(MostIdleConnections) {
    store::FileDescriptor listener = Listen(options.port);
    _port = PortOf(listener.Get());
    _daemon = MHD_start_daemon(MHD_USE_THREAD_PER_CONNECTION | MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_POLL, 0,
                               nullptr, nullptr, &Callbacks::Handle, this, MHD_OPTION_LISTEN_SOCKET, listener.Get(),
                               MHD_OPTION_NOTIFY_COMPLETED, &Callbacks::Completed, this, MHD_OPTION_NOTIFY_CONNECTION,
                               &Callbacks::Notice, this, MHD_OPTION_UNESCAPE_CALLBACK, &Callbacks::LeaveEncoded, this,
                               MHD_OPTION_CONNECTION_MEMORY_LIMIT, ConnectionMemory, MHD_OPTION_CONNECTION_TIMEOUT,
                               IdleSeconds, MHD_OPTION_END);
    if (_daemon == nullptr) {
        throw std::runtime_error("The HTTP server cannot be started");
    }
    listener.Release();
}

HttpServer::~HttpServer() {
    _stop.Stop();
    MHD_stop_daemon(_daemon);
}

bool HttpServer::_IsAllowed(const protocol::Request& request) const {
    if (_options.user.empty()) {
        return true;
    }
    const std::string* header = request.Header("authorization");
    const auto credentials = header == nullptr ? std::nullopt : protocol::Credentials::Parse(*header);
    return credentials && credentials->user == _options.user && credentials->password == _options.password;
}

std::unique_ptr<HttpServer::Exchange> HttpServer::_Begin(MHD_Connection* connection, const char* target,
                                                         const char* method, const char* version) {
    auto exchange = std::make_unique<Exchange>();
    protocol::Request& request = exchange->request;
    request.method = method;
    request.version = version;
    request.target = target;
    request.isAbandoned = [this, socket = Socket(connection)] { return _stop.IsStopped() || HasLeft(socket); };
    request.user = _options.user.empty() ? "anonymous" : _options.user;
    MHD_get_connection_values(connection, MHD_HEADER_KIND, &Callbacks::AddHeader, &request.headers);
    try {
        request.RequireClear();
    } catch (const protocol::HttpError&) {
        exchange->isClear = false;
        exchange->refusal = dav::WebDavService::Failure();
        exchange->refusal->headers.emplace_back("Connection", "close");
        return exchange;
    }
    if (!_IsAllowed(request)) {
        exchange->refusal = dav::WebDavService::Text(401, "The user's name or password is missing or wrong");
        exchange->refusal->headers.emplace_back("WWW-Authenticate", "Basic realm=\"Drovane\", charset=\"UTF-8\"");
        return exchange;
    }
    exchange->fault = _faults.Next(request.method);
    const bool isCarriedOut = !exchange->fault || !exchange->fault->ReplacesOperation();
    if (request.method == "PUT" && isCarriedOut) {
        try {
            exchange->upload = _tree.NewUpload();
        } catch (const std::system_error&) {
            exchange->refusal = dav::WebDavService::Failure();
        }
    }
    return exchange;
}

bool HttpServer::_Finish(MHD_Connection* connection, Exchange& exchange) {
    // What the client may ask "changed since" the next time, so it must lie before the answer's first look at the tree.
    const std::string date = protocol::FormatHttpDate(_tree.Now() / 1000);
    const std::optional<Fault>& fault = exchange.fault;
    protocol::Answer answer;
    if (exchange.refusal) {
        answer = std::move(*exchange.refusal);
    } else if (fault && fault->IsSilent()) {
        _Log(exchange, fault->kind == Fault::Kind::Hang ? "hang" : "reset");
        _injector.LeaveUnanswered(*fault, Socket(connection));
        return false;
    } else if (fault && fault->ReplacesOperation()) {
        answer = FaultInjector::Instead(*fault, exchange.request, "http://127.0.0.1:" + std::to_string(_port));
    } else {
        answer = _service.Handle(exchange.request, exchange.upload.get());
        if (fault) {
            answer = _injector.Spoilt(std::move(answer), *fault, Socket(connection));
        }
    }
    answer.headers.emplace_back("Date", date);
    _Log(exchange, std::to_string(answer.status));
    return _Send(connection, std::move(answer));
}

bool HttpServer::_Send(MHD_Connection* connection, protocol::Answer answer) {
    const auto release = [](MHD_Response* made) { MHD_destroy_response(made); };
    std::unique_ptr<MHD_Response, decltype(release)> response(nullptr, release);
    if (answer.body) {
        const bool lies = std::any_of(answer.headers.begin(), answer.headers.end(),
                                      [](const auto& header) { return header.first == "Content-Length"; });
        const std::uint64_t size = lies ? MHD_SIZE_UNKNOWN : answer.body->Size().value_or(MHD_SIZE_UNKNOWN);
        response.reset(MHD_create_response_from_callback(size, BlockSize, &Callbacks::ReadBody, answer.body.get(),
                                                         &Callbacks::FreeBody));
        if (response != nullptr) {
            // The response has it now.
            static_cast<void>(answer.body.release());
        }
        if (lies) {
            // Keeps the library from announcing the true length, or chunks, beside it.
            MHD_set_response_options(response.get(),
                                     static_cast<MHD_ResponseFlags>(MHD_RF_INSANITY_HEADER_CONTENT_LENGTH |
                                                                    MHD_RF_HTTP_1_0_COMPATIBLE_STRICT),
                                     MHD_RO_END);
        }
    } else {
        response.reset(MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT));
    }
    if (response == nullptr) {
        return false;
    }
    for (const auto& [name, value] : answer.headers) {
        MHD_add_response_header(response.get(), name.c_str(), value.c_str());
    }
    return MHD_queue_response(connection, static_cast<unsigned>(answer.status), response.get()) == MHD_YES;
}

void HttpServer::_Log(const Exchange& exchange, const std::string& what) const {
    if (_options.isVerbose) {
        std::clog << exchange.request.method + " " + exchange.request.target + " " + what +
                         (exchange.fault ? " (with a fault)\n" : "\n");
    }
}

}  // namespace service::http
