#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/service/HttpClient.h"
#include "tests/service/Multistatus.h"
#include "tests/service/RawConnection.h"
#include "tests/service/ServiceProcess.h"
#include "tests/service/TemporaryFolder.h"

namespace service::test {

/// A running service with an empty folder, and a client of it.
class ServiceTest : public testing::Test {
protected:
    explicit ServiceTest(const std::vector<std::string>& options = {}) : _service(_WithFolder(options)) {}

    HttpClient::Answer Send(const std::string& method, const std::string& target,
                            const std::vector<std::string>& headers = {}, const std::string& body = "") {
        return _client.Send(method, target, headers, body);
    }
    long Status(const std::string& method, const std::string& target, const std::vector<std::string>& headers = {},
                const std::string& body = "") {
        return Send(method, target, headers, body).status;
    }
    std::string Destination(const std::string& target) { return "Destination: " + _client.Url(target); }

    TemporaryFolder _folder;
    ServiceProcess _service;
    HttpClient _client{_service.Port()};

private:
    std::vector<std::string> _WithFolder(std::vector<std::string> options) const {
        options.insert(options.begin(), _folder.Path());
        return options;
    }
};

}  // namespace service::test
