#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

class PropertiesTest : public ServiceTest {
protected:
    PropertiesTest() {
        Send("MKCOL", "/A");
        Send("PUT", "/A/b%20c.txt", {}, "hello");
        Send("MKCOL", "/A/inner");
        Send("PUT", "/A/inner/deep.bin", {}, "");
    }

    Multistatus Propfind(const std::string& target, const std::string& depth, const std::string& body = "",
                         const std::vector<std::string>& more = {}) {
        std::vector<std::string> headers{"Depth: " + depth};
        headers.insert(headers.end(), more.begin(), more.end());
        const auto answer = Send("PROPFIND", target, headers, body);
        EXPECT_EQ(answer.status, 207);
        return Multistatus(answer.body);
    }

    std::vector<std::string> Hrefs(const Multistatus& answer) {
        std::vector<std::string> hrefs;
        for (const auto& [href, response] : answer.responses) {
            hrefs.push_back(href);
        }
        return hrefs;
    }

    // The status that each property of a PROPPATCH gets.
    std::map<std::string, int> Proppatch(const std::string& target, const std::string& actions) {
        const auto answer = Send("PROPPATCH", target, {},
                                 "<D:propertyupdate xmlns:D='DAV:' xmlns:u='urn:u'>" + actions + "</D:propertyupdate>");
        EXPECT_EQ(answer.status, 207);
        return Multistatus(answer.body).responses.begin()->second.statuses;
    }
};

TEST_F(PropertiesTest, ListingIsAsTheClientAsksForIt) {
    const auto answer = Send("PROPFIND", "/A", {"Depth: 1", "Prefer: return=minimal"}, Fixture("propfind-six.xml"));
    EXPECT_EQ(answer.status, 207);
    EXPECT_THAT(answer.headers.at("content-type"), HasSubstr("application/xml"));
    EXPECT_EQ(answer.headers.at("preference-applied"), "return=minimal");
    EXPECT_EQ(Normalized(answer.body), Fixture("listing-minimal.xml"));
}

TEST_F(PropertiesTest, MissingPropertiesAreSaidToBeMissingUnlessTheClientPrefersLess) {
    const std::string wanted = Fixture("propfind-absent.xml");
    EXPECT_EQ(Normalized(Send("PROPFIND", "/A", {"Depth: 0"}, wanted).body), Fixture("listing-absent.xml"));
    EXPECT_EQ(Normalized(Send("PROPFIND", "/A", {"Depth: 0", "Prefer: return=minimal"}, wanted).body),
              Fixture("listing-absent-minimal.xml"));
}

TEST_F(PropertiesTest, DepthLimitsTheListing) {
    EXPECT_THAT(Hrefs(Propfind("/A", "0")), ElementsAre("/A/"));
    EXPECT_THAT(Hrefs(Propfind("/A/", "1")), ElementsAre("/A/", "/A/b%20c.txt", "/A/inner/"));
    EXPECT_THAT(Hrefs(Propfind("/", "infinity")),
                ElementsAre("/", "/A/", "/A/b%20c.txt", "/A/inner/", "/A/inner/deep.bin"));
    EXPECT_THAT(Hrefs(Multistatus(Send("PROPFIND", "/A").body)),
                ElementsAre("/A/", "/A/b%20c.txt", "/A/inner/", "/A/inner/deep.bin"));
    EXPECT_THAT(Hrefs(Propfind("/A/b%20c.txt", "1")), ElementsAre("/A/b%20c.txt"));
    EXPECT_EQ(Status("PROPFIND", "/A", {"Depth: 2"}), 400);
    EXPECT_EQ(Status("PROPFIND", "/absent", {"Depth: 0"}), 404);
}

TEST_F(PropertiesTest, AllAreThoseOfWebDavAndTheDeadOnesAndWhatIsIncluded) {
    Proppatch("/A/b%20c.txt", "<D:set><D:prop><u:color>red</u:color></D:prop></D:set>");
    auto all = Propfind("/A/b%20c.txt", "0").responses.begin()->second.values;
    EXPECT_EQ(all["{urn:u}color"], "red");
    EXPECT_EQ(all["getcontentlength"], "5");
    EXPECT_EQ(all["getcontenttype"], "text/plain");
    EXPECT_EQ(all.count("resourceid"), 0U);
    auto more = Propfind("/A/b%20c.txt", "0",
                         "<propfind xmlns='DAV:'><allprop/><include><resourceid/><checksummd5/></include></propfind>")
                    .responses.begin()
                    ->second.values;
    EXPECT_EQ(more["{urn:u}color"], "red");
    EXPECT_EQ(more["checksummd5"], "5d41402abc4b2a76b9719d911017c592");
    EXPECT_EQ(more.count("resourceid"), 1U);
}

TEST_F(PropertiesTest, NamesComeWithoutValues) {
    Proppatch("/A", "<D:set><D:prop><u:color>red</u:color></D:prop></D:set>");
    const auto answer = Send("PROPFIND", "/A", {"Depth: 0"}, "<propfind xmlns='DAV:'><propname/></propfind>");
    EXPECT_EQ(Normalized(answer.body), Fixture("propname.xml"));
}

TEST_F(PropertiesTest, IdsSayWhatLiesWhere) {
    auto root = Properties(client, "/");
    auto inner = Properties(client, "/A");
    auto file = Properties(client, "/A/b%20c.txt");
    EXPECT_EQ(root["parentid"], "0");
    EXPECT_EQ(inner["parentid"], root["resourceid"]);
    EXPECT_EQ(file["parentid"], inner["resourceid"]);
    EXPECT_EQ(file["ownerid"], "anonymous");
    EXPECT_EQ(file["version"], "1");
    Send("PUT", "/A/b%20c.txt", {}, "hello again");
    auto newer = Properties(client, "/A/b%20c.txt");
    EXPECT_EQ(newer["version"], "2");
    EXPECT_EQ(newer["resourceid"], file["resourceid"]);
    EXPECT_NE(newer["versionid"], file["versionid"]);
    EXPECT_NE(newer["getetag"], file["getetag"]);
}

TEST_F(PropertiesTest, SettableOnesCanBeSetAndReset) {
    EXPECT_THAT(Proppatch("/A/b%20c.txt", Fixture("set-all.xml")),
                testing::AllOf(testing::SizeIs(9), testing::Each(Pair(testing::_, 200))));
    auto values = Properties(client, "/A/b%20c.txt");
    EXPECT_EQ(values["displayname"], "Another name");
    EXPECT_EQ(values["resourceclasstype"], "Drovane.Objects.FILE");
    EXPECT_EQ(values["ownerid"], "berta");
    EXPECT_EQ(values["privileges"], "r");
    EXPECT_EQ(values["visibility"], "hide");
    EXPECT_EQ(values["syncoption"], "first,second");
    EXPECT_EQ(values["linksextractedat"], "2026-11-20T10:15:30Z");
    EXPECT_EQ(values["attribute"], " ");
    EXPECT_EQ(values["{urn:u}size"], "<L>");
    EXPECT_THAT(Proppatch("/A/b%20c.txt",
                          "<D:remove><D:prop><D:displayname/><D:syncoption/><u:size/><u:absent/>"
                          "</D:prop></D:remove>"),
                testing::Each(Pair(testing::_, 200)));
    values = Properties(client, "/A/b%20c.txt");
    EXPECT_EQ(values["displayname"], "b c.txt");
    EXPECT_EQ(values.count("syncoption"), 0U);
    EXPECT_EQ(values.count("{urn:u}size"), 0U);
}

TEST_F(PropertiesTest, FormsAreListedInTreesWithAllThatIsInThem) {
    Send("MKCOL", "/A/inner/form");
    Send("PUT", "/A/inner/form/page", {}, "x");
    const std::string setForm =
        "<D:set><D:prop><D:resourceclasstype>drovane.objects.Form</D:resourceclasstype></D:prop></D:set>";
    EXPECT_EQ(Proppatch("/A/inner/form", setForm).at("resourceclasstype"), 200);
    auto tree = Propfind("/", "infinity", Fixture("propfind-six.xml")).responses;
    EXPECT_EQ(tree.size(), 7U);
    EXPECT_EQ(tree.at("/A/inner/").values.at("resourceclasstype"), "drovane.objects.Folder");
    auto& form = tree.at("/A/inner/form/").values;
    EXPECT_EQ(form.at("resourceclasstype"), "drovane.objects.Form");
    EXPECT_EQ(form.count("collection"), 1U);
    EXPECT_EQ(tree.at("/A/inner/form/page").values.at("parentid"), form.at("resourceid"));
    const auto byId = Propfind("/.ovs/folders/" + form.at("itemid"), "0", Fixture("propfind-six.xml"));
    EXPECT_EQ(byId.responses.at("/A/inner/form/").values, form);
    EXPECT_EQ(Status("DELETE", "/.ovs/folders/" + form.at("itemid")), 204);
    EXPECT_EQ(Propfind("/", "infinity").responses.size(), 5U);
}

TEST_F(PropertiesTest, ChangingPropertiesDoesNotChangeTheVersion) {
    auto before = Properties(client, "/A/b%20c.txt");
    Proppatch("/A/b%20c.txt", "<D:set><D:prop><D:visibility>hide</D:visibility></D:prop></D:set>");
    auto after = Properties(client, "/A/b%20c.txt");
    EXPECT_EQ(after["version"], before["version"]);
    EXPECT_EQ(after["getetag"], before["getetag"]);
}

TEST_F(PropertiesTest, UpdateIsMadeWhollyOrNotAtAll) {
    const auto answer =
        Send("PROPPATCH", "/A", {},
             "<D:propertyupdate xmlns:D='DAV:' xmlns:u='urn:u'><D:set><D:prop><u:color>red</u:color>"
             "<D:resourcetype/><D:resourceclasstype>drovane.objects.File</D:resourceclasstype></D:prop></D:set>"
             "</D:propertyupdate>");
    EXPECT_EQ(answer.status, 207);
    EXPECT_EQ(answer.body, Fixture("proppatch-refused.xml"));
    EXPECT_EQ(Properties(client, "/A").count("{urn:u}color"), 0U);
}

TEST_F(PropertiesTest, ProtectedOnesCannotBeSet) {
    for (const char* name : {"resourcetype", "getcontentlength", "getcontenttype", "getetag", "getlastmodified",
                             "creationdate", "syncproperties", "resourceid", "parentid", "version", "versionid",
                             "itemid", "checksummd5", "lockdiscovery", "supportedlock", "getcontentlanguage"}) {
        EXPECT_THAT(Proppatch("/A", std::string("<D:set><D:prop><D:") + name + ">1</D:" + name + "></D:prop></D:set>"),
                    ElementsAre(Pair(name, 403)));
    }
}

TEST_F(PropertiesTest, UnknownNamesAreKeptWhateverTheirNamespace) {
    Proppatch("/A",
              "<D:set><D:prop><D:unknown>1</D:unknown><none>2</none><u:tree a='b'><u:leaf/>t</u:tree>"
              "</D:prop></D:set>");
    const auto answer = Send("PROPFIND", "/A", {"Depth: 0"},
                             "<D:propfind xmlns:D='DAV:' xmlns:u='urn:u'><D:prop><D:unknown/><none/><u:tree/></D:prop>"
                             "</D:propfind>");
    EXPECT_EQ(answer.body, Fixture("dead-properties.xml"));
    Send("MOVE", "/A", {Destination("/B")});
    Send("COPY", "/B", {Destination("/C")});
    EXPECT_EQ(Properties(client, "/C")["unknown"], "1");
}

TEST_F(PropertiesTest, NamesThatXmlCannotHoldAreStillListed) {
    folder.Write("odd\x01<&>.txt", "x");
    const auto answer = Propfind("/", "1");
    ASSERT_EQ(answer.responses.count("/odd%01%3C%26%3E.txt"), 1U);
    EXPECT_EQ(answer.responses.at("/odd%01%3C%26%3E.txt").values.at("displayname"), "odd\xEF\xBF\xBD<&>.txt");
    EXPECT_EQ(Send("GET", "/odd%01%3C%26%3E.txt").body, "x");
}

TEST_F(PropertiesTest, EverythingSurvivesARestart) {
    Proppatch("/A/b%20c.txt", Fixture("set-all.xml"));
    const auto before = Send("PROPFIND", "/", {}, Fixture("propfind-six.xml")).body;
    EXPECT_EQ(service.End(SIGTERM), 0);
    ServiceProcess again({folder.Path()});
    HttpClient later(again.Port());
    EXPECT_EQ(later.Send("PROPFIND", "/", {}, Fixture("propfind-six.xml")).body, before);
}

class SeededTest : public ServiceTest {
protected:
    SeededTest() : ServiceTest({"--seed-files", "3000", "--seed-folder", "many"}) {}
};

TEST_F(SeededTest, LargeFolderIsListedWhollyWhileOthersAreServed) {
    RawConnection slow(service.Port());
    slow.Send("PROPFIND /many HTTP/1.1\r\nHost: h\r\nDepth: 1\r\n\r\n");
    slow.Read(5000, 100);
    EXPECT_EQ(Status("PUT", "/other", {}, "x"), 201);
    EXPECT_EQ(Status("DELETE", "/many/file-003000.txt"), 204);
    const auto answer = Send("PROPFIND", "/many", {"Depth: 1"}, Fixture("propfind-six.xml"));
    const Multistatus listing(answer.body);
    EXPECT_EQ(listing.responses.size(), 3000U);
    EXPECT_EQ(listing.responses.at("/many/file-000001.txt").values.at("checksummd5"),
              "f56c7bf25014d8557cbe90fe19ac8313");
}

}  // namespace
}  // namespace service::test
