#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "service/dav/WebDavService.h"
#include "service/http/Fault.h"
#include "service/http/FaultInjector.h"
#include "service/http/FaultPlan.h"
#include "service/http/IdleConnections.h"
#include "service/http/StopSignal.h"
#include "service/tree/ServiceTree.h"

struct MHD_Connection;
struct MHD_Daemon;

namespace service::http {

/// Serves a tree over HTTP on the loopback interface, with one thread for each connection, from construction to
/// destruction. Both must be called by the same thread.
class HttpServer {
public:
    struct Options {
        /// 0: any that is free.
        std::uint16_t port = 0;
        /// Who may come in; empty: everyone, without a password.
        std::string user;
        std::string password;
        std::vector<Fault> faults;
        /// Writes a line for each request to standard error.
        bool isVerbose = false;
    };

    /// `tree` must outlive this object. Throws std::system_error when the port cannot be had.
    HttpServer(tree::ServiceTree& tree, const Options& options);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// The port that is served.
    std::uint16_t Port() const { return _port; }

private:
    struct Exchange;
    // How the HTTP library calls back.
    struct Callbacks;

    bool _IsAllowed(const protocol::Request& request) const;
    std::unique_ptr<Exchange> _Begin(MHD_Connection* connection, const char* target, const char* method,
                                     const char* version);
    bool _Finish(MHD_Connection* connection, Exchange& exchange);
    bool _Send(MHD_Connection* connection, protocol::Answer answer);
    void _Log(const Exchange& exchange, const std::string& what) const;

    tree::ServiceTree& _tree;
    Options _options;
    dav::WebDavService _service;
    FaultPlan _faults;
    StopSignal _stop;
    IdleConnections _idle;
    FaultInjector _injector{_stop};
    std::uint16_t _port = 0;
    MHD_Daemon* _daemon = nullptr;
};

}  // namespace service::http
