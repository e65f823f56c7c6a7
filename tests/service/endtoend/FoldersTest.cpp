#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>

#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

using testing::HasSubstr;
using testing::IsSupersetOf;

const std::string Version = "x-ovs-version: 1";

// The words of a reason as clients take it apart.
std::set<std::string> Words(std::string reason) {
    for (char& c : reason) {
        c = c == '.' || c == ':' ? ' ' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    std::istringstream stream(reason);
    return {std::istream_iterator<std::string>(stream), {}};
}

class FoldersTest : public ServiceTest {
protected:
    FoldersTest() {
        Send("MKCOL", "/A");
        Send("PUT", "/A/f", {}, "x");
    }

    HttpClient::Answer SendOwn(const std::string& method, const std::string& target, std::vector<std::string> more = {},
                               const std::string& body = "") {
        more.push_back(Version);
        return Send(method, target, more, body);
    }

    std::string Id(const std::string& target) { return Properties(client, target).at("itemid"); }
    static std::string ById(const std::string& id, const std::string& name = "") {
        return "/.ovs/folders/" + id + "/" + (name.empty() ? "" : name + "/");
    }
    std::string Href(const std::string& id) {
        return Multistatus(Send("PROPFIND", ById(id), {"Depth: 0"}).body).responses.begin()->first;
    }

    // Refused the way the service's own clients are told. Returns the words of the reason.
    std::set<std::string> Reason(const HttpClient::Answer& answer) {
        EXPECT_EQ(answer.status, 400);
        EXPECT_THAT(answer.headers.at("content-type"), HasSubstr("text/plain"));
        EXPECT_EQ(answer.headers.count("allow"), 0U);
        EXPECT_NE(answer.body, "");
        const auto reason = answer.headers.find("x-ovs-reason-phrase");
        return reason == answer.headers.end() ? std::set<std::string>() : Words(reason->second);
    }

    void SetOwner(const std::string& target, const std::string& owner) {
        const auto answer = Send("PROPPATCH", target, {},
                                 "<D:propertyupdate xmlns:D='DAV:'><D:set><D:prop><D:ownerid>" + owner +
                                     "</D:ownerid></D:prop></D:set></D:propertyupdate>");
        EXPECT_THAT(answer.body, HasSubstr("200 OK"));
    }

    const std::set<std::string> exists{"existing", "file", "already", "exists"};
    const std::set<std::string> absent{"does", "not", "exist"};
};

TEST_F(FoldersTest, FolderIsFoundByItsIdAndByItsPath) {
    const std::string id = Id("/A");
    for (const std::string& target : {ById(id), "/.ovs/folders/" + id, std::string("/A/"), std::string("/A")}) {
        const auto answer = SendOwn("PROPFIND", target, {"Depth: 0"}, Fixture("propfind-six.xml"));
        ASSERT_EQ(answer.status, 207) << target;
        EXPECT_EQ(answer.headers.at("x-ovs-id"), id);
        EXPECT_EQ(answer.headers.at("x-ovs-ownerid"), "anonymous");
        const Multistatus found(answer.body);
        ASSERT_EQ(found.responses.size(), 1U);
        EXPECT_EQ(found.responses.begin()->first, "/A/");
        EXPECT_EQ(found.responses.begin()->second.values.at("itemid"), id);
    }
}

TEST_F(FoldersTest, RootHasAnIdToo) {
    const auto answer = SendOwn("PROPFIND", ById(Id("/")), {"Depth: 0"});
    EXPECT_EQ(answer.headers.at("x-ovs-id"), Id("/"));
    EXPECT_EQ(Href(Id("/")), "/");
    EXPECT_EQ(SendOwn("MKCOL", ById(Id("/"), "B")).status, 201);
    EXPECT_TRUE(folder.Has("B"));
    EXPECT_EQ(SendOwn("DELETE", ById(Id("/"))).status, 403);
}

TEST_F(FoldersTest, IdFollowsTheFolder) {
    Send("MKCOL", "/B");
    Send("MKCOL", "/A/inner");
    const std::string id = Id("/A/inner");
    EXPECT_EQ(Href(id), "/A/inner/");
    Send("MOVE", "/A", {Destination("/B/C%20%C3%A4")});
    EXPECT_EQ(Href(id), "/B/C%20%C3%A4/inner/");
    Send("MKCOL", "/A");
    Send("MKCOL", "/A/inner");
    EXPECT_EQ(SendOwn("DELETE", ById(id)).status, 204);
    EXPECT_FALSE(folder.Has("B/C \xC3\xA4/inner"));
    EXPECT_TRUE(folder.Has("A/inner"));
}

TEST_F(FoldersTest, IdMayBeEncodedAsMuchAsOneLikes) {
    std::string encoded;
    for (const char c : Id("/A")) {
        constexpr const char* digits = "0123456789abcdef";
        encoded += {'%', digits[c / 16], digits[c % 16]};
    }
    EXPECT_EQ(Href(encoded), "/A/");
    EXPECT_EQ(Send("PROPFIND", "//%2eovs/%66olders//" + encoded + "//", {"Depth: 0"}).status, 207);
}

TEST_F(FoldersTest, ListingsOfTheServicesOwnClientsNameTheAskedFolder) {
    const auto listing = SendOwn("PROPFIND", "/A", {"Depth: infinity"});
    EXPECT_EQ(listing.headers.at("x-ovs-id"), Id("/A"));
    EXPECT_EQ(Multistatus(listing.body).responses.size(), 2U);
    const auto file = SendOwn("PROPFIND", "/A/f", {"Depth: 0"});
    EXPECT_EQ(file.status, 207);
    EXPECT_EQ(file.headers.count("x-ovs-id"), 0U);
}

TEST_F(FoldersTest, OwnerIsNamedWhereAHeaderCanHoldIt) {
    SetOwner("/A", "J\xC3\xB6rg &amp; Co");
    EXPECT_EQ(SendOwn("PROPFIND", "/A", {"Depth: 0"}).headers.at("x-ovs-ownerid"), "J\xC3\xB6rg & Co");
    SetOwner("/A", "two\nlines");
    const auto answer = SendOwn("PROPFIND", "/A", {"Depth: 0"});
    EXPECT_EQ(answer.status, 207);
    EXPECT_EQ(answer.headers.at("x-ovs-id"), Id("/A"));
    EXPECT_EQ(answer.headers.count("x-ovs-ownerid"), 0U);
}

TEST_F(FoldersTest, FolderIsMadeInsideAnother) {
    for (const std::string& target : {ById(Id("/A"), "b%20%C3%A4"), std::string("/A/by-path/")}) {
        const auto made = SendOwn("MKCOL", target);
        EXPECT_EQ(made.status, 201) << target;
        const std::string id = made.headers.at("x-ovs-id");
        EXPECT_EQ(made.headers.at("x-ovs-ownerid"), "anonymous");
        EXPECT_THAT(made.headers.at("content-type"), HasSubstr("application/xml"));
        EXPECT_THAT(made.body, HasSubstr("<id>" + id + "</id>"));
        EXPECT_EQ(Id(Href(id)), id);
    }
    EXPECT_TRUE(folder.Has("A/b \xC3\xA4"));
    EXPECT_TRUE(folder.Has("A/by-path"));
}

TEST_F(FoldersTest, CreationIsAnsweredWithADocument) {
    EXPECT_EQ(Normalized(SendOwn("MKCOL", ById(Id("/A"), "B")).body), Fixture("folder-created.xml"));
}

TEST_F(FoldersTest, NothingIsMadeWhereSomethingIs) {
    Send("MKCOL", "/A/B");
    const std::string id = Id("/A");
    std::set<std::string> phrases;
    for (const std::string& target : {ById(id, "B"), ById(id, "f"), std::string("/A/B"), std::string("/A/f"),
                                      std::string("/"), ById(id), ById(Id("/"), "A")}) {
        const auto answer = SendOwn("MKCOL", target);
        EXPECT_THAT(Reason(answer), IsSupersetOf(exists)) << target;
        phrases.insert(answer.headers.at("x-ovs-reason-phrase"));
    }
    EXPECT_GE(phrases.size(), 4U) << "they are to take turns";
    EXPECT_EQ(Send("GET", "/A/f").body, "x");
}

TEST_F(FoldersTest, NothingIsMadeInAParentThatIsNotThere) {
    for (const std::string& target : {ById("unknown", "B"), ById(Id("/A/f"), "B"), ById("%zz", "B"), ById("%2F", "B"),
                                      std::string("/absent/B"), std::string("/A/f/B")}) {
        const auto words = Reason(SendOwn("MKCOL", target));
        EXPECT_FALSE(words.empty()) << target;
        EXPECT_THAT(words, testing::Not(IsSupersetOf(exists))) << target;
        EXPECT_THAT(words, testing::Not(IsSupersetOf(absent))) << target;
        EXPECT_EQ(Status("MKCOL", target), 409) << target;
    }
}

TEST_F(FoldersTest, CreationIsRefusedForNamesThatCannotBe) {
    const std::string id = Id("/A");
    for (const char* name : {"..", ".", "%2e%2e", "a%2Fb", "a%00b", "%FF", "%zz", "%"}) {
        const auto answer = SendOwn("MKCOL", ById(id, name));
        EXPECT_EQ(answer.status, 400) << name;
        EXPECT_EQ(answer.headers.count("x-ovs-reason-phrase"), 0U) << name;
    }
    EXPECT_EQ(SendOwn("MKCOL", ById(id, std::string(256, 'n'))).status, 414);
    EXPECT_EQ(SendOwn("MKCOL", ById(id, "B/C")).status, 403);
    EXPECT_EQ(SendOwn("MKCOL", ById(id, "B"), {}, "<mkcol/>").status, 415);
    EXPECT_EQ(Multistatus(Send("PROPFIND", "/A").body).responses.size(), 2U);
}

TEST_F(FoldersTest, FolderIsDeletedWithAllThatIsInIt) {
    Send("MKCOL", "/A/B");
    Send("PUT", "/A/B/f", {}, "x");
    const std::string id = Id("/A/B");
    const auto deleted = SendOwn("DELETE", ById(id));
    EXPECT_EQ(deleted.status, 204);
    EXPECT_EQ(deleted.body, "");
    EXPECT_FALSE(folder.Has("A/B"));
    EXPECT_THAT(Reason(SendOwn("DELETE", ById(id))), IsSupersetOf(absent));
    EXPECT_EQ(Status("DELETE", ById(id)), 404);
    EXPECT_TRUE(folder.Has("A/f"));
}

TEST_F(FoldersTest, DeletionKeepsItsConditions) {
    const std::string id = Id("/A");
    EXPECT_EQ(SendOwn("DELETE", ById(id), {"Depth: 0"}).status, 400);
    EXPECT_EQ(SendOwn("DELETE", ById(id), {"If-Match: \"other\""}).status, 412);
    EXPECT_EQ(SendOwn("DELETE", ById(id), {"If: ([\"other\"])"}).status, 412);
    EXPECT_TRUE(folder.Has("A/f"));
}

TEST_F(FoldersTest, IdsOfNothingDoNotExist) {
    Send("MKCOL", "/gone");
    const std::string gone = Id("/gone");
    Send("DELETE", "/gone");
    Send("MKCOL", "/by-hand");
    const std::string byHand = Id("/by-hand");
    std::filesystem::remove(folder / "by-hand");
    const std::string id = Id("/A");
    const std::string store = id.substr(0, id.rfind('-') + 1);
    const std::string number = id.substr(store.size());
    std::string upper = store;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    upper.front() = 'F';
    std::set<std::string> phrases;
    const std::vector<std::string> unknownIds{gone,
                                              byHand,
                                              Id("/A/f"),
                                              std::string("unknown"),
                                              std::string(),
                                              store,
                                              number,
                                              store + "0" + number,
                                              store + "+" + number,
                                              store + "%20" + number,
                                              store + number + "x",
                                              store + number + "%00",
                                              store + "-" + number,
                                              upper + number,
                                              store + "99999999999999999999",
                                              store + "9223372036854775807",
                                              store + "0",
                                              store + "-1",
                                              std::string("path:A"),
                                              std::string("%"),
                                              std::string("%zz"),
                                              std::string("%2F"),
                                              std::string("A%2Ff"),
                                              std::string("%00"),
                                              std::string("%FF"),
                                              std::string("."),
                                              std::string(".."),
                                              std::string("%2e%2e"),
                                              std::string("'%20OR%201=1"),
                                              std::string("%C3%A4"),
                                              std::string("*"),
                                              std::string(20000, 'n')};
    for (const std::string& unknown : unknownIds) {
        for (const char* method : {"PROPFIND", "DELETE"}) {
            std::vector<std::string> headers;
            if (method == std::string("PROPFIND")) {
                headers.emplace_back("Depth: 0");
            }
            const auto answer = SendOwn(method, ById(unknown), headers);
            EXPECT_THAT(Reason(answer), IsSupersetOf(absent)) << method << " " << unknown;
            phrases.insert(answer.headers.at("x-ovs-reason-phrase"));
            EXPECT_EQ(Status(method, ById(unknown), headers), 404) << method << " " << unknown;
        }
    }
    EXPECT_GE(phrases.size(), 4U) << "they are to take turns";
    EXPECT_TRUE(folder.Has("A/f"));
}

TEST_F(FoldersTest, AddressesByIdTakeNothingElse) {
    const std::string id = Id("/A");
    for (const std::string& target : {ById(id), ById("unknown"), ById(id, "f")}) {
        for (const char* method : {"OPTIONS", "GET", "HEAD", "PUT", "COPY", "MOVE", "PROPPATCH", "LOCK"}) {
            for (const auto& headers : {std::vector<std::string>{}, std::vector<std::string>{Version}}) {
                const auto answer = Send(method, target, headers, std::string(method) == "PUT" ? "x" : "");
                EXPECT_EQ(answer.status, 405) << method << " " << target;
                EXPECT_EQ(answer.headers.at("allow"), "DELETE, MKCOL, PROPFIND") << method;
            }
        }
    }
    for (const char* method : {"PROPFIND", "DELETE"}) {
        EXPECT_EQ(SendOwn(method, ById(id, "f")).status, 405) << method;
    }
    for (const char* depth : {"Depth: 1", "Depth: infinity", "Depth;"}) {
        EXPECT_EQ(SendOwn("PROPFIND", ById(id), {depth}).status, depth == std::string("Depth;") ? 400 : 403) << depth;
    }
    EXPECT_EQ(SendOwn("PROPFIND", ById(id)).status, 403);
    EXPECT_EQ(Send("GET", "/A/f").body, "x");
}

TEST_F(FoldersTest, NothingIsStoredUnderTheReservedName) {
    for (const char* target : {"/.ovs", "/.ovs/", "/%2eovs", "/.ovs/A", "/.ovs/other/A"}) {
        for (const char* method : {"GET", "PUT", "DELETE", "MKCOL", "PROPFIND"}) {
            EXPECT_EQ(SendOwn(method, target, {}, std::string(method) == "PUT" ? "x" : "").status, 403)
                << method << " " << target;
        }
        for (const char* method : {"COPY", "MOVE"}) {
            EXPECT_EQ(Status(method, "/A", {Destination(target)}), 403) << target;
            EXPECT_EQ(Status(method, "/A", {Destination(ById(Id("/A"), "B"))}), 403);
        }
    }
    for (const char* name : {".ovs", "%2Eovs", ".ovsync-service"}) {
        EXPECT_EQ(SendOwn("MKCOL", ById(Id("/"), name)).status, 403) << name;
        EXPECT_EQ(SendOwn("MKCOL", ById(Id("/A"), name)).status, std::string(name) == "%2Eovs" ? 400 : 201) << name;
    }
    EXPECT_FALSE(folder.Has(".ovs"));
}

TEST_F(FoldersTest, ReservedNameIsNotListed) {
    folder.Write(".ovs/folders/f", "by hand");
    folder.Write("A/.ovs/f", "by hand");
    const auto listing = Multistatus(Send("PROPFIND", "/", {"Depth: infinity"}).body);
    EXPECT_EQ(listing.responses.count("/.ovs/"), 0U);
    EXPECT_EQ(listing.responses.count("/A/.ovs/f"), 1U);
    EXPECT_EQ(folder.Read(".ovs/folders/f"), "by hand");
}

TEST_F(FoldersTest, OtherClientsAreAnsweredAsWebDavSays) {
    for (const auto& headers : {std::vector<std::string>{}, std::vector<std::string>{"x-ovs-version: 2"},
                                std::vector<std::string>{"x-ovs-version;"}}) {
        const auto made = Send("MKCOL", "/A/B", headers);
        EXPECT_EQ(made.status, 201);
        EXPECT_EQ(made.body, "");
        EXPECT_EQ(made.headers.count("x-ovs-id"), 0U);
        EXPECT_EQ(Status("MKCOL", "/A/B", headers), 405);
        EXPECT_EQ(Status("MKCOL", "/absent/B", headers), 409);
        EXPECT_EQ(Send("PROPFIND", "/A/B", headers).headers.count("x-ovs-id"), 0U);
        EXPECT_EQ(Send("DELETE", "/absent", headers).headers.count("x-ovs-reason-phrase"), 0U);
        EXPECT_EQ(Status("DELETE", "/A/B", headers), 204);
        EXPECT_EQ(Status("DELETE", "/A/B", headers), 404);
    }
}

TEST_F(FoldersTest, ReasonsReplaceTheStatusOfOtherMethodsToo) {
    EXPECT_THAT(Reason(SendOwn("PROPFIND", "/absent", {"Depth: 1"})), IsSupersetOf(absent));
    EXPECT_THAT(Reason(SendOwn("DELETE", "/absent")), IsSupersetOf(absent));
    EXPECT_THAT(Reason(SendOwn("MOVE", "/absent", {Destination("/B")})), IsSupersetOf(absent));
    EXPECT_FALSE(Reason(SendOwn("MOVE", "/A", {Destination("/absent/B")})).empty());
    EXPECT_FALSE(Reason(SendOwn("PUT", "/absent/f", {}, "x")).empty());
    EXPECT_EQ(SendOwn("PUT", "/A", {}, "x").status, 405);
    EXPECT_EQ(SendOwn("LOCK", "/A").status, 405);
}

TEST_F(FoldersTest, FolderIsMovedWithoutReplacingAnything) {
    Send("MKCOL", "/B");
    const std::string id = Id("/A");
    EXPECT_EQ(SendOwn("MOVE", "/A/", {Destination("/B/"), "Overwrite: F"}).status, 412);
    EXPECT_EQ(SendOwn("MOVE", "/A/", {Destination("/B/A/"), "Overwrite: F"}).status, 201);
    EXPECT_EQ(Href(id), "/B/A/");
}

TEST_F(FoldersTest, AbsentFileIsNotFound) {
    EXPECT_EQ(SendOwn("HEAD", "/A/f").status, 200);
    EXPECT_EQ(SendOwn("HEAD", "/A/absent").status, 404);
    EXPECT_EQ(SendOwn("GET", "/A/absent").status, 404);
}

TEST_F(FoldersTest, QuietFolderIsUnchangedByItsIdToo) {
    const auto since = [&](const char* date) {
        return SendOwn("PROPFIND", ById(Id("/A")), {"Depth: 0", std::string("If-Modified-Since: ") + date}).status;
    };
    EXPECT_EQ(since("Fri, 20 Nov 2015 10:15:30 GMT"), 207);
    EXPECT_EQ(since("Thu, 20 Nov 2498 10:15:30 GMT"), 304);
}

TEST_F(FoldersTest, IdsStayOverARestart) {
    const std::string id = Id("/A");
    ASSERT_EQ(service.End(SIGTERM), 0);
    const ServiceProcess again({folder.Path()});
    HttpClient later(again.Port());
    EXPECT_EQ(later.Send("PROPFIND", ById(id), {"Depth: 0", Version}).headers.at("x-ovs-id"), id);
}

}  // namespace
}  // namespace service::test
