#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QUrl>
#include <cstring>
#include <exception>
#include <memory>
#include <string>

#include "host/core/SyncException.h"
#include "host/http/HttpException.h"
#include "tests/fakes/Layout.h"
#include "tests/fakes/Text.h"

namespace {

using sync::core::SyncException;
using sync::http::HttpException;
using testing::ElementsAre;
using tests::Text;

// "Ordner für Größen: 文件" in UTF-8.
const char* const NonAsciiMessage = "Ordner f\xC3\xBCr Gr\xC3\xB6\xC3\x9F\x65n: \xE6\x96\x87\xE4\xBB\xB6";

TEST(SyncExceptionTest, WhatIsTheMessageInUtf8) {
    const SyncException exception(QString::fromUtf8(NonAsciiMessage));
    EXPECT_STREQ(exception.what(), NonAsciiMessage);
    EXPECT_EQ(exception.Message(), QString::fromUtf8(NonAsciiMessage));
    EXPECT_EQ(exception.Utf8Message(), NonAsciiMessage);
}

TEST(SyncExceptionTest, ACopyHasBothMembersAndOutlivesTheOriginal) {
    auto original = std::make_unique<SyncException>(QString::fromUtf8(NonAsciiMessage));
    const SyncException copy(*original);
    SyncException assigned(QString::fromUtf8("other"));
    assigned = *original;
    original.reset();
    for (const SyncException* const each : {&copy, static_cast<const SyncException*>(&assigned)}) {
        EXPECT_STREQ(each->what(), NonAsciiMessage);
        EXPECT_EQ(each->Utf8Message(), NonAsciiMessage);
        EXPECT_EQ(each->Message(), QString::fromUtf8(NonAsciiMessage));
    }
}

TEST(SyncExceptionTest, AMessageWithANullCharacterIsKeptWhole) {
    const QString message = Text("a") + QChar(0) + Text("b");
    const SyncException exception(message);
    EXPECT_EQ(exception.Message(), message);
    EXPECT_EQ(exception.Utf8Message(), std::string("a\0b", 3));
}

TEST(SyncExceptionTest, AnEmptyMessageIsOne) {
    EXPECT_STREQ(SyncException(QString()).what(), "");
}

TEST(SyncExceptionTest, TheMessageLiesBeforeItsUtf8BytesAndNothingElseLiesThere) {
    const SyncException exception(Text("x"));
    EXPECT_THAT(tests::OffsetsIn(exception, {&exception.Message(), &exception.Utf8Message()}), ElementsAre(8, 16));
    EXPECT_EQ(sizeof(SyncException), 16 + sizeof(std::string));
}

TEST(SyncExceptionTest, HasNoVirtualOperationsButThoseOfEveryException) {
    EXPECT_EQ(tests::SlotCountOf<SyncException>(), tests::SlotCountOf<std::exception>());
    EXPECT_EQ(tests::SlotCountOf<HttpException>(), tests::SlotCountOf<std::exception>());
}

TEST(HttpExceptionTest, CarriesMessageStatusAndUrl) {
    const QUrl url(QString::fromUtf8("http://example.test/a%20b"));
    const HttpException exception(QString::fromUtf8(NonAsciiMessage), 503, url);
    EXPECT_STREQ(exception.what(), NonAsciiMessage);
    EXPECT_EQ(exception.StatusCode(), 503);
    EXPECT_EQ(exception.Url(), url);
}

TEST(HttpExceptionTest, IsCaughtAsEachOfItsTypes) {
    const auto throwIt = [] { throw HttpException(QString::fromUtf8(NonAsciiMessage), 404, QUrl()); };
    EXPECT_THROW(throwIt(), HttpException);
    try {
        throwIt();
    } catch (const SyncException& e) {
        EXPECT_EQ(e.Message(), QString::fromUtf8(NonAsciiMessage));
    }
    try {
        throwIt();
    } catch (const std::exception& e) {
        EXPECT_STREQ(e.what(), NonAsciiMessage);
    }
}

TEST(HttpExceptionTest, ACopyHasEveryMemberAndOutlivesTheOriginal) {
    const QUrl url(Text("http://example.test/a"));
    auto original = std::make_unique<HttpException>(QString::fromUtf8(NonAsciiMessage), 503, url);
    const HttpException copy(*original);
    HttpException assigned(Text("other"), 1, QUrl(Text("http://other.test/")));
    assigned = *original;
    original.reset();
    for (const HttpException* const each : {&copy, static_cast<const HttpException*>(&assigned)}) {
        EXPECT_STREQ(each->what(), NonAsciiMessage);
        EXPECT_EQ(each->Message(), QString::fromUtf8(NonAsciiMessage));
        EXPECT_EQ(each->StatusCode(), 503);
        EXPECT_EQ(each->Url(), url);
    }
}

TEST(HttpExceptionTest, TheStatusAndTheUrlLieBehindTheMessageInThisOrder) {
    const HttpException exception(Text("x"), 500, QUrl());
    EXPECT_THAT(tests::OffsetsIn(exception, {&exception.Url()}), ElementsAre(sizeof(SyncException) + 8));
    // What lies before it has no other address.
    int status = 0;
    std::memcpy(&status, reinterpret_cast<const char*>(&exception) + sizeof(SyncException), sizeof(status));
    EXPECT_EQ(status, 500);
    EXPECT_EQ(sizeof(HttpException), sizeof(SyncException) + 8 + sizeof(QUrl));
}

}  // namespace
