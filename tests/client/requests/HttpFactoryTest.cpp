#include "client/requests/HttpFactory.h"

#include <gmock/gmock.h>

#include "host/core/SyncException.h"
#include "host/http/DAVPropfindRequest.h"

namespace ovsync {
namespace requests {

namespace {

using sync::core::SyncException;
using testing::HasSubstr;

HttpFactory Factory() {
    return HttpFactory();
}

QByteArray AskedUrl(const char* url, int depth) {
    return Factory()
        .CreatePropfindRequest(std::make_shared<QUrl>(QUrl::fromEncoded(url)), 0, depth)
        ->GetUrl()
        .toEncoded();
}

std::string ErrorFor(const std::shared_ptr<QUrl>& url, int depth) {
    try {
        Factory().CreatePropfindRequest(url, 0, depth);
    } catch (const SyncException& error) {
        return error.Utf8Message();
    }
    return "none";
}

TEST(HttpFactoryTest, EndsTheUrlOfAListedFolderInASlash) {
    EXPECT_EQ(AskedUrl("http://h/a/b%20c%2Fd%25", 1), "http://h/a/b%20c%2Fd%25/");
    EXPECT_EQ(AskedUrl("http://h/a/", 1), "http://h/a/");
    EXPECT_EQ(AskedUrl("http://h", 2), "http://h/");
    EXPECT_EQ(AskedUrl("http://h/a%28%29", 2), "http://h/a%28%29/");
}

TEST(HttpFactoryTest, LeavesTheUrlOfASingleResourceAsItIs) {
    EXPECT_EQ(AskedUrl("http://h/a/b.txt", 0), "http://h/a/b.txt");
    EXPECT_EQ(AskedUrl("http://h/a/", 0), "http://h/a/");
}

TEST(HttpFactoryTest, SaysWhenThereIsNoUrl) {
    EXPECT_THAT(ErrorFor(nullptr, 1), HasSubstr("needs a URL"));
    EXPECT_THAT(ErrorFor(std::make_shared<QUrl>(), 1), HasSubstr("needs an http or https URL, not \"\""));
    EXPECT_THAT(ErrorFor(std::make_shared<QUrl>(QStringLiteral("ftp://u:secret@h/a")), 1),
                HasSubstr("not \"ftp://h/a\""));
}

TEST(HttpFactoryTest, SaysWhenThereIsNoSuchDepth) {
    const auto url = std::make_shared<QUrl>(QStringLiteral("http://h/"));
    EXPECT_THAT(ErrorFor(url, 3), HasSubstr("not 3"));
    EXPECT_THAT(ErrorFor(url, -1), HasSubstr("not -1"));
}

TEST(HttpFactoryTest, EndsTheUrlsOfFoldersInASlash) {
    const auto url = std::make_shared<QUrl>(QUrl::fromEncoded("http://h/a%2Fb"));
    const sync::config::FolderConfiguration folder;
    for (const int kind : {2, 3, 6}) {
        EXPECT_EQ(Factory().CreateFolderRequest(kind, url, folder)->GetUrl().toEncoded(), "http://h/a%2Fb/");
    }
    EXPECT_EQ(Factory().CreateMoveRequest(url, url, 0)->GetUrl().toEncoded(), "http://h/a%2Fb/");
    EXPECT_EQ(Factory().CreateFileRequest(url, 0, 0)->GetUrl().toEncoded(), "http://h/a%2Fb");
}

TEST(HttpFactoryTest, MakesNoRequestWithoutAUrl) {
    const sync::config::FolderConfiguration folder;
    const auto url = std::make_shared<QUrl>(QStringLiteral("http://h/"));
    for (const int kind : {2, 3, 6}) {
        EXPECT_THROW(Factory().CreateFolderRequest(kind, nullptr, folder), SyncException);
    }
    EXPECT_THROW(Factory().CreateFileRequest(nullptr, 0, 0), SyncException);
    EXPECT_THROW(Factory().CreateMoveRequest(nullptr, url, 0), SyncException);
    EXPECT_THROW(Factory().CreateMoveRequest(url, nullptr, 0), SyncException);
}

TEST(HttpFactoryTest, SaysWhenThereIsNoSuchKindOfRequest) {
    const auto url = std::make_shared<QUrl>(QStringLiteral("http://h/"));
    for (const int kind : {0, 1, 4, 5, 7}) {
        EXPECT_THROW(Factory().CreateFolderRequest(kind, url, sync::config::FolderConfiguration()), SyncException);
    }
}

}  // namespace
}  // namespace requests
}  // namespace ovsync
