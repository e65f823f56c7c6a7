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

TEST(Request, IsClearWhenItHasOneHostAndOneEnd) {
    const auto isClear = [](const std::map<std::string, std::string>& headers, const char* version = "HTTP/1.1") {
        Request request;
        request.version = version;
        request.target = "/a%20b";
        request.headers = headers;
        try {
            request.RequireClear();
            return true;
        } catch (const HttpError& error) {
            EXPECT_EQ(error.Status(), 400);
            return false;
        }
    };
    const std::pair<const std::string, std::string> host{"host", "h.test:80"};
    EXPECT_TRUE(isClear({host, {"content-length", "0"}}));
    EXPECT_TRUE(isClear({host, {"transfer-encoding", "CHUNKED"}}));
    EXPECT_TRUE(isClear({}, "HTTP/1.0"));
    EXPECT_FALSE(isClear({}));
    for (const char* other : {"a, b", "a/b", "u@a", "a b"}) {
        EXPECT_FALSE(isClear({{"host", other}})) << other;
        EXPECT_FALSE(isClear({{"host", other}}, "HTTP/1.0")) << other;
    }
    for (const char* length : {"", "-1", "+1", "1, 1", "1 1", "0x1"}) {
        EXPECT_FALSE(isClear({host, {"content-length", length}})) << length;
    }
    for (const char* encoding : {"", "gzip", "gzip, chunked", "chunked, chunked", "identity"}) {
        EXPECT_FALSE(isClear({host, {"transfer-encoding", encoding}})) << encoding;
    }
    EXPECT_FALSE(isClear({host, {"transfer-encoding", "chunked"}}, "HTTP/1.0"));
    EXPECT_FALSE(isClear({host, {"transfer-encoding", "chunked"}, {"content-length", "1"}}));
    for (const char* name : {"", "a ", "a b", "a\x01", "a\x7f", "\xc3\xa4", "a:"}) {
        EXPECT_FALSE(isClear({host, {name, "x"}})) << name;
    }
    EXPECT_TRUE(isClear({host, {"x", "\ta \xc3\xa4"}}));
    EXPECT_FALSE(isClear({host, {"x", "a\rb"}}));
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
