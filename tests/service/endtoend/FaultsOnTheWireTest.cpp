#include <chrono>

#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Ending = RawConnection::Ending;

const std::string FileContent = "0123456789";

// A service with faults and the file "f"; what it sends is looked at byte by byte.
class FaultyService {
public:
    explicit FaultyService(const std::vector<std::string>& faults) {
        _folder.Write("f", FileContent);
        std::vector<std::string> arguments{_folder.Path()};
        for (const std::string& fault : faults) {
            arguments.insert(arguments.end(), {"--fault", fault});
        }
        _service = std::make_unique<ServiceProcess>(arguments);
    }

    std::string Request(const std::string& request, int milliseconds = 10000) {
        RawConnection connection(_service->Port());
        connection.Send(request);
        std::string answer = connection.Read(milliseconds);
        _ending = connection.End();
        return answer;
    }

    std::string Get() { return Request("GET /f HTTP/1.1\r\nHost: h\r\nConnection: close\r\n\r\n"); }
    std::string List() { return Request("PROPFIND / HTTP/1.1\r\nHost: h\r\nDepth: 1\r\nConnection: close\r\n\r\n"); }
    std::string Put(int milliseconds = 10000) {
        return Request("PUT /new HTTP/1.1\r\nHost: h\r\nConnection: close\r\nContent-Length: 3\r\n\r\nabc",
                       milliseconds);
    }

    Ending End() const { return _ending; }
    const TemporaryFolder& Folder() const { return _folder; }
    int Port() const { return _service->Port(); }

private:
    TemporaryFolder _folder;
    std::unique_ptr<ServiceProcess> _service;
    Ending _ending = Ending::Open;
};

std::string BodyOf(const std::string& answer) {
    const std::size_t end = answer.find("\r\n\r\n");
    return end == std::string::npos ? "" : answer.substr(end + 4);
}

// The content of the chunks, also of those of an answer that ends too early.
std::string Unchunked(std::string body) {
    std::string whole;
    while (!body.empty()) {
        const std::size_t line = body.find("\r\n");
        const std::size_t size = std::stoul(body.substr(0, line), nullptr, 16);
        whole += body.substr(line + 2, size);
        body.erase(0, line + 2 + size + 2);
    }
    return whole;
}

TEST(FaultOnTheWire, CutEndsTheBodyTooEarly) {
    FaultyService service({"cut=4"});
    const std::string answer = service.Get();
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 "));
    EXPECT_THAT(answer, HasSubstr("Content-Length: 10\r\n"));
    EXPECT_EQ(BodyOf(answer), "0123");
    EXPECT_NE(service.End(), Ending::Open);
}

TEST(FaultOnTheWire, CutNeverReachesTheLastChunk) {
    FaultyService service({"cut=50,method=PROPFIND"});
    const std::string answer = service.List();
    EXPECT_THAT(answer, HasSubstr("Transfer-Encoding: chunked"));
    EXPECT_EQ(Unchunked(BodyOf(answer)).size(), 50U);
    EXPECT_THAT(answer, Not(EndsWith("0\r\n\r\n")));
    EXPECT_NE(service.End(), Ending::Open);
    FaultyService longer({"cut=1000000"});
    const std::string whole = longer.List();
    EXPECT_THAT(Unchunked(BodyOf(whole)), EndsWith("</D:multistatus>\n"));
    EXPECT_THAT(whole, Not(EndsWith("0\r\n\r\n")));
}

TEST(FaultOnTheWire, CutToNothingLeavesTheHeaders) {
    FaultyService service({"cut=0"});
    const std::string answer = service.Get();
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 "));
    EXPECT_EQ(BodyOf(answer), "");
}

TEST(FaultOnTheWire, CutIsMadeAfterTheChange) {
    FaultyService service({"cut=0,method=PUT"});
    service.Put();
    EXPECT_EQ(service.Folder().Read("new"), "abc");
}

TEST(FaultOnTheWire, HangAnswersNothingAndChangesNothing) {
    FaultyService service({"hang,request=1"});
    EXPECT_EQ(service.Put(300), "");
    EXPECT_EQ(service.End(), Ending::Open);
    EXPECT_FALSE(service.Folder().Has("new"));
    EXPECT_THAT(service.Put(), StartsWith("HTTP/1.1 201 "));
}

TEST(FaultOnTheWire, ResetComesInsteadOfAnAnswer) {
    FaultyService service({"reset"});
    EXPECT_EQ(service.Get(), "");
    EXPECT_EQ(service.End(), Ending::Reset);
    EXPECT_EQ(service.Put(), "");
    EXPECT_EQ(service.End(), Ending::Reset);
    EXPECT_FALSE(service.Folder().Has("new"));
}

TEST(FaultOnTheWire, ResetComesInMidBody) {
    FaultyService service({"reset=4"});
    const std::string answer = service.Get();
    EXPECT_EQ(BodyOf(answer), "0123");
    EXPECT_EQ(service.End(), Ending::Reset);
    EXPECT_EQ(Unchunked(BodyOf(service.List())).size(), 4U);
    EXPECT_EQ(service.End(), Ending::Reset);
}

TEST(FaultOnTheWire, RedirectLeadsToTheSameServer) {
    for (const char* status : {"301", "302", "307", "308"}) {
        FaultyService service({std::string("redirect=") + status});
        const std::string answer = service.Put();
        EXPECT_THAT(answer, StartsWith(std::string("HTTP/1.1 ") + status));
        EXPECT_THAT(answer, HasSubstr("Location: http://127.0.0.1:" + std::to_string(service.Port()) + "/new?"));
        EXPECT_FALSE(service.Folder().Has("new"));
    }
}

TEST(FaultOnTheWire, ErrorPageLooksLikeSuccess) {
    FaultyService service({"error-page"});
    const std::string answer = service.List();
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 "));
    EXPECT_THAT(answer, HasSubstr("Content-Type: text/html"));
    EXPECT_THAT(BodyOf(answer), StartsWith("<html>"));
    service.Put();
    EXPECT_FALSE(service.Folder().Has("new"));
}

TEST(FaultOnTheWire, StatusIsAnyStatus) {
    for (const char* status : {"200", "204", "304", "404", "503", "599"}) {
        FaultyService service({std::string("status=") + status});
        const std::string answer = service.Put();
        EXPECT_THAT(answer, StartsWith(std::string("HTTP/1.1 ") + status));
        EXPECT_THAT(answer, HasSubstr("Date: "));
        EXPECT_FALSE(service.Folder().Has("new"));
    }
}

TEST(FaultOnTheWire, ContentTypeIsWrong) {
    FaultyService service({"content-type=text/html; charset=utf-8,method=PROPFIND"});
    const std::string answer = service.List();
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 207 "));
    EXPECT_THAT(answer, HasSubstr("Content-Type: text/html; charset=utf-8\r\n"));
    EXPECT_THAT(answer, Not(HasSubstr("application/xml")));
    EXPECT_THAT(answer, HasSubstr("</D:multistatus>"));
}

TEST(FaultOnTheWire, ErrorInBodyEndsInGoodOrder) {
    FaultyService service({"error-in-body=60"});
    const std::string answer = service.List();
    const std::string body = Unchunked(BodyOf(answer));
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 207 "));
    EXPECT_THAT(body, StartsWith("<?xml"));
    EXPECT_EQ(body.find("<html>"), 60U);
    EXPECT_THAT(body, EndsWith("</html>\n"));
    EXPECT_THAT(answer, EndsWith("0\r\n\r\n"));
    EXPECT_THAT(Unchunked(BodyOf(service.Get())), StartsWith(FileContent + "<html>"));
}

TEST(FaultOnTheWire, DripSendsAByteASecond) {
    FaultyService service({"drip"});
    RawConnection connection(service.Port());
    const auto begin = std::chrono::steady_clock::now();
    connection.Send("GET /f HTTP/1.1\r\nHost: h\r\n\r\n");
    std::string answer;
    while (BodyOf(answer).size() < 2) {
        const std::string more = connection.Read(10000, 1);
        ASSERT_NE(more, "");
        answer += more;
    }
    // Two bytes cannot have come in less than two waits, however busy the machine is.
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(1900));
    EXPECT_EQ(BodyOf(answer), "01");
}

TEST(FaultOnTheWire, ContentLengthIsTooLargeOrTooSmall) {
    FaultyService larger({"content-length=+10"});
    const std::string tooShort = larger.Get();
    EXPECT_THAT(tooShort, HasSubstr("Content-Length: 20\r\n"));
    EXPECT_EQ(BodyOf(tooShort), FileContent);
    EXPECT_EQ(tooShort.find("Content-Length"), tooShort.rfind("Content-Length"));
    EXPECT_EQ(larger.End(), Ending::Closed);
    FaultyService smaller({"content-length=-4"});
    const std::string tooLong = smaller.Get();
    EXPECT_THAT(tooLong, HasSubstr("Content-Length: 6\r\n"));
    EXPECT_EQ(BodyOf(tooLong), FileContent);
    EXPECT_EQ(tooLong.find("Content-Length"), tooLong.rfind("Content-Length"));
    const std::string listing = smaller.List();
    EXPECT_THAT(listing, HasSubstr("Content-Length: " + std::to_string(BodyOf(listing).size() - 4) + "\r\n"));
    EXPECT_THAT(listing, Not(HasSubstr("chunked")));
}

TEST(FaultOnTheWire, MeetsOnlyTheRequestItIsFor) {
    FaultyService service({"status=503,method=GET,request=2", "status=500,method=PROPFIND"});
    EXPECT_THAT(service.Get(), StartsWith("HTTP/1.1 200 "));
    EXPECT_THAT(service.Put(), StartsWith("HTTP/1.1 201 "));
    EXPECT_THAT(service.Get(), StartsWith("HTTP/1.1 503 "));
    EXPECT_THAT(service.Get(), StartsWith("HTTP/1.1 200 "));
    EXPECT_THAT(service.List(), StartsWith("HTTP/1.1 500 "));
}

TEST(FaultOnTheWire, DoesNotCountRequestsThatWereTurnedAway) {
    const TemporaryFolder folder;
    const ServiceProcess service({folder.Path(), "--user", "anna", "--fault", "status=503,request=1"},
                                 {{"OVSYNC_SERVICE_PASSWORD", "p"}});
    EXPECT_EQ(HttpClient(service.Port()).Send("OPTIONS", "/").status, 401);
    EXPECT_EQ(HttpClient(service.Port(), "anna:p").Send("OPTIONS", "/").status, 503);
    EXPECT_EQ(HttpClient(service.Port(), "anna:p").Send("OPTIONS", "/").status, 200);
}

}  // namespace
}  // namespace service::test
