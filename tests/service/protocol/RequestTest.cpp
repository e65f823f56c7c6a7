#include "service/protocol/Request.h"

#include <gtest/gtest.h>

#include "service/protocol/HttpError.h"

namespace service::protocol {
namespace {

Request WithHeader(const std::string& name, const std::string& value) {
    Request request;
    request.headers[name] = value;
    return request;
}

int DestinationStatus(const std::string& url) {
    try {
        WithHeader("host", "127.0.0.1:8080").PathOf(url);
        return 0;
    } catch (const HttpError& error) {
        return error.Status();
    }
}

TEST(Request, TakesTargetsInBothForms) {
    Request request;
    request.target = "/a/b%20c";
    EXPECT_EQ(request.Path(), "a/b c");
    request.target = "http://127.0.0.1:8080/a/b%20c";
    EXPECT_EQ(request.Path(), "a/b c");
}

TEST(Request, TakesDestinationsOnThisServerOnly) {
    const Request request = WithHeader("host", "127.0.0.1:8080");
    EXPECT_EQ(request.PathOf("http://127.0.0.1:8080/a%20b/"), "a b");
    EXPECT_EQ(request.PathOf("HTTP://127.0.0.1:8080"), "");
    EXPECT_EQ(request.PathOf("/a"), "a");
    EXPECT_EQ(DestinationStatus("http://127.0.0.1:8081/a"), 502);
    EXPECT_EQ(DestinationStatus("https://127.0.0.1:8080/a"), 502);
    EXPECT_EQ(DestinationStatus("a"), 400);
    EXPECT_EQ(DestinationStatus("//127.0.0.1:8080/a"), 400);
    EXPECT_EQ(DestinationStatus("//a"), 400);
    EXPECT_EQ(DestinationStatus("http://127.0.0.1:8080/../a"), 400);
}

TEST(Request, ReadsTheDepth) {
    EXPECT_EQ(Request().RequestedDepth(), Request::Depth::Infinity);
    EXPECT_EQ(WithHeader("depth", "0").RequestedDepth(), Request::Depth::Zero);
    EXPECT_EQ(WithHeader("depth", "1").RequestedDepth(), Request::Depth::One);
    EXPECT_EQ(WithHeader("depth", "Infinity").RequestedDepth(), Request::Depth::Infinity);
    EXPECT_THROW(WithHeader("depth", "2").RequestedDepth(), HttpError);
}

TEST(Request, FindsThePreferenceForShortAnswersAmongOthers) {
    EXPECT_TRUE(WithHeader("prefer", "return=minimal").PrefersMinimal());
    EXPECT_TRUE(WithHeader("prefer", "respond-async, Return = \"minimal\"; foo=bar, wait=10").PrefersMinimal());
    EXPECT_FALSE(WithHeader("prefer", "return=representation, depth-noroot").PrefersMinimal());
    EXPECT_FALSE(Request().PrefersMinimal());
}

}  // namespace
}  // namespace service::protocol
