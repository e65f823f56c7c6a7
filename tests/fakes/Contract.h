#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <memory>

#include "host/http/DAVPropfindRequest.h"
#include "host/interfaces/IRequestManager.h"
#include "host/interfaces/ISyncFilter.h"
#include "host/interfaces/IUrlBuilder.h"
#include "host/interfaces/factory/IHttpFactory.h"
#include "host/interfaces/factory/IRemoteFileManagerFactory.h"

/// Fakes of what a library is given by its host.

namespace tests {

class MockUrlBuilder : public sync::interf::IUrlBuilder {
public:
    MOCK_METHOD(std::shared_ptr<QUrl>, BuildUrl,
                (const sync::config::ServerConfiguration& server, const QString& serverPath), (override));
    MOCK_METHOD(std::shared_ptr<QUrl>, BuildFolderUrl,
                (const sync::config::ServerConfiguration& server, const sync::config::FolderConfiguration& folder,
                 const QString& fileName, int urlKind),
                (override));
};

class MockHttpFactory : public sync::interf::factory::IHttpFactory {
public:
    MOCK_METHOD(std::shared_ptr<sync::http::DAVPropfindRequest>, CreatePropfindRequest,
                (std::shared_ptr<QUrl> url, int serverId, int depth), (override));
    MOCK_METHOD(std::shared_ptr<sync::interf::IHttpRequest>, CreateFolderRequest,
                (int kind, std::shared_ptr<QUrl> url, const sync::config::FolderConfiguration& folder), (override));
    MOCK_METHOD(std::shared_ptr<sync::interf::IHttpRequest>, CreateFileRequest,
                (std::shared_ptr<QUrl> url, int serverId, int options), (override));
    MOCK_METHOD(std::shared_ptr<sync::interf::IHttpRequest>, CreateMoveRequest,
                (std::shared_ptr<QUrl> source, std::shared_ptr<QUrl> destination, int serverId), (override));
    MOCK_METHOD(std::shared_ptr<sync::interf::IRequestExecutor>, CreateRequestExecutor,
                (int serverId,
                 std::shared_ptr<sync::interf::factory::IRequestAuthenticatorFactory> authenticatorFactory),
                (override));
};

class MockRequestManager : public sync::interf::IRequestManager {
public:
    MOCK_METHOD(void, Execute, (const QList<std::shared_ptr<sync::interf::IHttpRequest>>& requests), (override));
};

class MockRemoteFileManager : public sync::interf::IRemoteFileManager {
public:
    MOCK_METHOD(int, GetNameSortedFilesByFolder,
                (sync::config::FolderConfiguration & folder,
                 std::shared_ptr<QVector<sync::config::FileConfiguration>>& files),
                (override));
    MOCK_METHOD(bool, ShouldDownloadFile,
                (const sync::config::FileConfiguration& remote, sync::config::FileConfiguration& local), (override));
    MOCK_METHOD(const sync::config::FileConfiguration, GetFileByName,
                (const sync::config::FolderConfiguration& folder, const QString& name), (override));
};

class MockRemoteFileManagerFactory : public sync::interf::factory::IRemoteFileManagerFactory {
public:
    MOCK_METHOD(std::shared_ptr<sync::interf::IRemoteFileManager>, CreateRemoteFileManager, (int serverKey),
                (override));
};

class MockSyncFilter : public sync::interf::ISyncFilter {
public:
    MOCK_METHOD(bool, IsFileExcluded, (const QString& name, qint64 size, int kind), (override));
    MOCK_METHOD(bool, IsFolderExcluded, (const QString& pathComponent, int kind), (override));
};

/// What a test sets beforehand as the answer to a request.
struct FakeAnswer {
    int statusCode = 207;
    QUrl url;
    QList<QPair<QByteArray, QByteArray>> responseHeaders;
    QByteArray responseBody;
};

/// A request with an answer that a test sets beforehand.
class FakeHttpRequest : public sync::interf::IHttpRequest {
public:
    int GetStatusCode() override { return answer.statusCode; }
    QUrl GetUrl() override { return answer.url; }
    QList<QPair<QByteArray, QByteArray>> GetResponseHeaders() override { return answer.responseHeaders; }
    QByteArray GetResponseBody() override { return answer.responseBody; }

    FakeAnswer answer;
};

/// A PROPFIND with an answer that a test sets beforehand.
class FakePropfindRequest : public sync::http::DAVPropfindRequest {
public:
    int GetStatusCode() override { return statusCode; }
    QUrl GetUrl() override { return url; }
    QList<QPair<QByteArray, QByteArray>> GetResponseHeaders() override { return {}; }
    QByteArray GetResponseBody() override { return QByteArray(); }
    void SetModifiedSinceTime(const QDateTime& time) override { modifiedSinceTime = time; }
    void SetProperties(const QStringList& names) override { properties = names; }
    std::shared_ptr<sync::http::DAVPropfindResult> GetResult() override { return result; }

    int statusCode = 207;
    QUrl url;
    std::shared_ptr<sync::http::DAVPropfindResult> result;

    QDateTime modifiedSinceTime;
    QStringList properties;
};

/// Ends every request in `state`, after `onExecute` when there is one.
class FakeRequestExecutor : public sync::interf::IRequestExecutor {
public:
    void Execute(const QList<std::shared_ptr<sync::interf::IHttpRequest>>& requests) override {
        for (const auto& request : requests) {
            executed.append(request);
            if (onExecute) {
                onExecute();
            }
            Q_EMIT RequestCompleted(request, state);
        }
    }

    sync::interf::IHttpRequest::RequestState state = sync::interf::IHttpRequest::StateAnswered;
    std::function<void()> onExecute;
    QList<std::shared_ptr<sync::interf::IHttpRequest>> executed;
};

}  // namespace tests
