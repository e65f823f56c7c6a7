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
    explicit ServiceTest(const std::vector<std::string>& options = {}) : service(_WithFolder(options)) {}

    HttpClient::Answer Send(const std::string& method, const std::string& target,
                            const std::vector<std::string>& headers = {}, const std::string& body = "") {
        return client.Send(method, target, headers, body);
    }
    long Status(const std::string& method, const std::string& target, const std::vector<std::string>& headers = {},
                const std::string& body = "") {
        return Send(method, target, headers, body).status;
    }
    std::string Destination(const std::string& target) { return "Destination: " + client.Url(target); }

    TemporaryFolder folder;
    ServiceProcess service;
    HttpClient client{service.Port()};

private:
    std::vector<std::string> _WithFolder(std::vector<std::string> options) const {
        options.insert(options.begin(), folder.Path());
        return options;
    }
};

}  // namespace service::test
