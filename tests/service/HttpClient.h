#pragma once

#include <map>
#include <string>
#include <vector>

namespace service::test {

/// Talks to a service on the loopback interface, one request after the other on one connection if the service lets it.
class HttpClient {
public:
    struct Answer {
        /// 0 when no answer came.
        long status = 0;
        /// By their names in lower case.
        std::map<std::string, std::string> headers;
        std::string body;
        /// Empty, or why the answer did not come wholly.
        std::string error;
        /// How many connections had to be made for it.
        long connections = 0;
    };

    explicit HttpClient(int port, const std::string& userAndPassword = "");
    ~HttpClient();
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    /// `target` is sent as it is. A `headers` line is "Name: value".
    Answer Send(const std::string& method, const std::string& target, const std::vector<std::string>& headers = {},
                const std::string& body = "");

    /// "http://127.0.0.1:PORT" and `target`.
    std::string Url(const std::string& target) const;

private:
    int _port;
    void* _curl;
};

}  // namespace service::test
