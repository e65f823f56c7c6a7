#include "client/requests/PropfindRequest.h"

#include <gtest/gtest.h>

#include "host/core/SyncException.h"

namespace ovsync {
namespace requests {

namespace {

using sync::core::SyncException;

class PropfindRequestTest : public testing::Test {
protected:
    static QByteArray HeaderOf(const PropfindRequest& request, const char* name) {
        for (const auto& header : request.RequestHeaders()) {
            if (header.first == name) {
                return header.second;
            }
        }
        return "none";
    }

    /// The body for a list of properties, without the XML declaration.
    QByteArray BodyFor(const QStringList& names) {
        request.SetProperties(names);
        return request.RequestBody().split('\n').at(1);
    }

    const QUrl url{QStringLiteral("http://h/a/")};
    PropfindRequest request{url, PropfindRequest::Children};
};

TEST_F(PropfindRequestTest, AsksForWhatARecordHolds) {
    EXPECT_EQ(request.Method(), "PROPFIND");
    EXPECT_EQ(request.RequestBody(),
              "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
              "<D:propfind xmlns:D=\"DAV:\" xmlns:P=\"DAV:\"><D:prop><D:resourcetype/><P:getcontentlength/>"
              "<D:getlastmodified/><D:creationdate/><P:resourceclasstype/><P:syncproperties/></D:prop></D:propfind>\n");
    EXPECT_EQ(HeaderOf(request, "Content-Type"), "application/xml; charset=\"utf-8\"");
    EXPECT_EQ(HeaderOf(request, "Prefer"), "return=minimal");
}

TEST_F(PropfindRequestTest, NamesTheDepth) {
    EXPECT_EQ(HeaderOf(PropfindRequest(url, PropfindRequest::Resource), "Depth"), "0");
    EXPECT_EQ(HeaderOf(PropfindRequest(url, PropfindRequest::Children), "Depth"), "1");
    EXPECT_EQ(HeaderOf(PropfindRequest(url, PropfindRequest::Tree), "Depth"), "infinity");
}

TEST_F(PropfindRequestTest, IsConditionalOnceATimeIsGiven) {
    EXPECT_EQ(HeaderOf(request, "If-Modified-Since"), "none");
    request.SetModifiedSinceTime(QDateTime(QDate(2026, 11, 20), QTime(10, 15, 30, 999), Qt::UTC));
    EXPECT_EQ(HeaderOf(request, "If-Modified-Since"), "Fri, 20 Nov 2026 10:15:30 GMT");
    request.SetModifiedSinceTime(QDateTime());
    EXPECT_EQ(HeaderOf(request, "If-Modified-Since"), "none");
}

TEST_F(PropfindRequestTest, AsksForTheGivenPropertiesAndTheResourceType) {
    EXPECT_EQ(BodyFor({QStringLiteral("{DAV:}D:getetag")}),
              "<D:propfind xmlns:D=\"DAV:\"><D:prop><D:resourcetype/><D:getetag/></D:prop></D:propfind>");
    EXPECT_EQ(BodyFor({QStringLiteral("{DAV:}P:resourcetype"), QStringLiteral("{DAV:}P:version")}),
              "<D:propfind xmlns:D=\"DAV:\" xmlns:P=\"DAV:\"><D:prop><P:resourcetype/><P:version/></D:prop>"
              "</D:propfind>");
    EXPECT_EQ(BodyFor({}), "<D:propfind xmlns:D=\"DAV:\"><D:prop><D:resourcetype/></D:prop></D:propfind>");
}

TEST_F(PropfindRequestTest, LeavesOutWhatOnlyTheServiceKnows) {
    QStringList names;
    for (const char* name :
         {"getcontentlength", "getcontenttype",    "getetag",        "getlastmodified",  "creationdate",
          "displayname",      "resourceclasstype", "syncproperties", "resourceid",       "parentid",
          "version",          "versionid",         "itemid",         "ownerid",          "privileges",
          "visibility",       "checksummd5",       "syncoption",     "linksextractedat", "attribute"}) {
        names += QLatin1String("{DAV:}D:") + QLatin1String(name);
    }
    request.SetServerKind(ServerKind::Foreign);
    EXPECT_EQ(BodyFor(names),
              "<D:propfind xmlns:D=\"DAV:\"><D:prop><D:resourcetype/><D:getcontentlength/><D:getcontenttype/>"
              "<D:getetag/><D:getlastmodified/><D:creationdate/><D:displayname/></D:prop></D:propfind>");
}

TEST_F(PropfindRequestTest, DeclaresEveryNamespaceOnce) {
    EXPECT_EQ(BodyFor({QStringLiteral("{http://x/?a&b}Z:one"), QStringLiteral("{http://x/?a&b}Z:two"),
                       QStringLiteral("{urn:y}Z:three"), QStringLiteral("{urn:y}D:resourcetype")}),
              "<D:propfind xmlns:D=\"DAV:\" xmlns:Z=\"http://x/?a&amp;b\"><D:prop><D:resourcetype/><Z:one/><Z:two/>"
              "<Z:three xmlns:Z=\"urn:y\"/><D:resourcetype xmlns:D=\"urn:y\"/></D:prop></D:propfind>");
}

TEST_F(PropfindRequestTest, RefusesNamesThatAreNone) {
    const QByteArray before = request.RequestBody();
    for (const char* name :
         {"", "getetag", "D:getetag", "{DAV:}getetag", "{}D:getetag", "{DAV:}D:", "{DAV:}:getetag", "{DAV:}D:get etag",
          "{DAV:}D:a:b", "{DAV:}1:a", "{DAV:}D:-a", "{DAV:}D:a/><evil", "{a\"b}D:a", "{a<b}D:a", "{a b}D:a",
          " {DAV:}D:a", "{DAV:}D:a\n", "{DAV:}xmlns:a", "{DAV:}XML:a"}) {
        EXPECT_THROW(request.SetProperties({QString::fromLatin1(name)}), SyncException) << name;
    }
    EXPECT_EQ(request.RequestBody(), before);
}

TEST_F(PropfindRequestTest, HasNoAnswerBeforeItWasExecuted) {
    EXPECT_EQ(request.GetStatusCode(), 0);
    EXPECT_FALSE(request.GetResult());
    EXPECT_EQ(request.GetUrl(), url);
}

}  // namespace
}  // namespace requests
}  // namespace ovsync
