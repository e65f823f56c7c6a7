#include "client/requests/ResourceQueryRequest.h"

#include <gmock/gmock.h>

#include "client/wire/HttpConnection.h"
#include "client/wire/TransactionError.h"
#include "tests/client/requests/ScriptedAnswers.h"
#include "tests/fakes/CleanEnvironment.h"

namespace ovsync {
namespace requests {

using wire::HttpConnection;
using wire::TransactionError;
namespace {

using tests::AnswerOf;
using tests::CleanEnvironment;
using tests::ScriptedServer;

const QString ResourcePath = QStringLiteral("/Projects/A%20b");

class ResourceQueryRequestTest : public testing::Test {
protected:
    /// Whether there is a folder, according to `answer`.
    bool HasFolder(const QByteArray& answer) {
        ScriptedServer server({ScriptedServer::Answer(answer)});
        ResourceQueryRequest request(server.Url(ResourcePath));
        session.Perform(request);
        server.Stop();
        EXPECT_EQ(server.Requests().first().method, "PROPFIND");
        EXPECT_EQ(server.Requests().first().target, ResourcePath.toLatin1());
        EXPECT_EQ(server.Requests().first().headers.value("depth"), "0");
        return request.HasFolder();
    }

    static QByteArray Listed(const QByteArray& href, const QByteArray& type) {
        const QByteArray body = "<D:multistatus xmlns:D=\"DAV:\"><D:response><D:href>" + href +
                                "</D:href><D:propstat><D:prop><D:resourcetype>" + type +
                                "</D:resourcetype></D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat>"
                                "</D:response></D:multistatus>";
        return "HTTP/1.1 207 Multi-Status\r\nContent-Type: application/xml\r\nContent-Length: " +
               QByteArray::number(body.size()) + "\r\n\r\n" + body;
    }

    static QByteArray Redirect(int status, const QByteArray& location) {
        return "HTTP/1.1 " + QByteArray::number(status) + " Moved\r\nContent-Length: 0\r\nLocation: " + location +
               "\r\n\r\n";
    }

    const CleanEnvironment environment;
    HttpConnection session{wire::ConnectionSettings(), QAuthenticator()};
};

TEST_F(ResourceQueryRequestTest, WhatIsThereIsToldByItsType) {
    EXPECT_FALSE(HasFolder(Listed("/Projects/A%20b", "")));
    EXPECT_TRUE(HasFolder(Listed("/Projects/A%20b/", "<D:collection/>")));
    EXPECT_TRUE(HasFolder(Listed("/Projects/A%20b", "<D:collection/>")));
}

TEST_F(ResourceQueryRequestTest, ARedirectToTheSamePathWithASlashMeansAFolder) {
    for (const int status : {301, 302, 307, 308}) {
        EXPECT_TRUE(HasFolder(Redirect(status, "/Projects/A%20b/"))) << status;
    }
    EXPECT_TRUE(HasFolder(Redirect(301, "http://another.example.com/Projects/A%20b/")));
}

TEST_F(ResourceQueryRequestTest, AnotherRedirectIsNoAnswer) {
    for (const char* location : {"/Projects/", "/login", "/Projects/A%20b", ""}) {
        EXPECT_THROW(HasFolder(Redirect(301, location)), TransactionError) << location;
    }
}

TEST_F(ResourceQueryRequestTest, AFailureIsNoFolder) {
    ScriptedServer server({AnswerOf("statuses/not-found-404"), AnswerOf("statuses/forbidden-403")});
    for (const int status : {404, 403}) {
        ResourceQueryRequest request(server.Url(ResourcePath));
        session.Perform(request);
        EXPECT_FALSE(request.HasFolder());
        EXPECT_EQ(request.GetStatusCode(), status);
    }
}

}  // namespace
}  // namespace requests
}  // namespace ovsync
