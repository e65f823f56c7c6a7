#pragma once

#include <gmock/gmock.h>

#include <memory>

#include "host/http/DAVPropfindRequest.h"
#include "host/interfaces/IRequestManager.h"
#include "host/interfaces/IUrlBuilder.h"
#include "host/interfaces/factory/IHttpFactory.h"

/// Fakes of what a library is given by its host.

namespace tests {

class MockUrlBuilder : public sync::interf::IUrlBuilder {
public:
    MOCK_METHOD(std::shared_ptr<QUrl>, BuildUrl,
                (const sync::config::ServerConfiguration& server, const QString& serverPath), (override));
};

class MockHttpFactory : public sync::interf::factory::IHttpFactory {
public:
    MOCK_METHOD(std::shared_ptr<sync::http::DAVPropfindRequest>, CreatePropfindRequest,
                (std::shared_ptr<QUrl> url, int serverId, int depth), (override));
};

class MockRequestManager : public sync::interf::IRequestManager {
public:
    MOCK_METHOD(void, Execute, (const QList<std::shared_ptr<sync::interf::IHttpRequest>>& requests), (override));
};

/// A PROPFIND whose answer a test sets beforehand.
class FakePropfindRequest : public sync::http::DAVPropfindRequest {
public:
    int GetStatusCode() override { return statusCode; }
    QUrl GetUrl() override { return url; }
    void SetModifiedSinceTime(const QDateTime& time) override { modifiedSinceTime = time; }
    void SetProperties(const QStringList& names) override { properties = names; }
    std::shared_ptr<sync::http::DAVPropfindResult> GetResult() override { return result; }

    int statusCode = 207;
    QUrl url;
    std::shared_ptr<sync::http::DAVPropfindResult> result;

    QDateTime modifiedSinceTime;
    QStringList properties;
};

}  // namespace tests
