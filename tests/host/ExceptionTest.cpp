#include <gtest/gtest.h>

#include <QUrl>
#include <cstring>
#include <exception>
#include <memory>

#include "host/core/SyncException.h"
#include "host/http/HttpException.h"

namespace {

using sync::core::SyncException;
using sync::http::HttpException;

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
    EXPECT_STREQ(copy.what(), NonAsciiMessage);
    EXPECT_STREQ(assigned.what(), NonAsciiMessage);
    EXPECT_EQ(assigned.Message(), QString::fromUtf8(NonAsciiMessage));
}

TEST(SyncExceptionTest, TheMessageLiesBeforeItsUtf8Bytes) {
    const SyncException exception(QString::fromUtf8("x"));
    EXPECT_LT(static_cast<const void*>(&exception.Message()), static_cast<const void*>(&exception.Utf8Message()));
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

TEST(HttpExceptionTest, TheStatusLiesBetweenTheMessageAndTheUrl) {
    const HttpException exception(QString::fromUtf8("x"), 500, QUrl());
    const auto* const begin = reinterpret_cast<const char*>(&exception);
    const auto* const utf8End = reinterpret_cast<const char*>(&exception.Utf8Message() + 1);
    const auto* const url = reinterpret_cast<const char*>(&exception.Url());
    // The status is the one int that lies in the gap.
    ASSERT_GE(url - utf8End, static_cast<ptrdiff_t>(sizeof(int)));
    EXPECT_LT(utf8End - begin, url - begin);
    int status = 0;
    memcpy(&status, utf8End, sizeof(status));
    EXPECT_EQ(status, 500);
}

}  // namespace
