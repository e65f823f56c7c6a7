#include <gmock/gmock.h>

#include "service/protocol/HttpError.h"
#include "service/protocol/PropertyUpdate.h"
#include "service/protocol/PropfindRequest.h"

namespace service::protocol {
namespace {

std::string WhyNot(const std::string& propfind) {
    try {
        PropfindRequest::Parse(propfind);
        return "";
    } catch (const HttpError& error) {
        return std::to_string(error.Status()) + " " + error.what();
    }
}

TEST(PropfindRequest, WithoutABodyAsksForAll) {
    EXPECT_EQ(PropfindRequest::Parse("").kind, PropfindRequest::Kind::AllProperties);
}

TEST(PropfindRequest, ListsEachNameOnceWhateverItsPrefix) {
    const auto request = PropfindRequest::Parse(
        "<D:propfind xmlns:D='DAV:' xmlns:P='DAV:'><D:prop><D:getetag/><P:getetag/><x xmlns='urn:x'/><y/></D:prop>"
        "</D:propfind>");
    EXPECT_EQ(request.kind, PropfindRequest::Kind::Listed);
    ASSERT_EQ(request.names.size(), 3U);
    EXPECT_EQ(request.names[0].nameSpace, "DAV:");
    EXPECT_EQ(request.names[1].nameSpace, "urn:x");
    EXPECT_EQ(request.names[2].nameSpace, "");
}

TEST(PropfindRequest, IncludesNamesBesideAll) {
    const auto request = PropfindRequest::Parse(
        "<propfind xmlns='DAV:'><allprop/><include><syncproperties/></include><future/></propfind>");
    EXPECT_EQ(request.kind, PropfindRequest::Kind::AllProperties);
    ASSERT_EQ(request.names.size(), 1U);
    EXPECT_EQ(request.names[0].name, "syncproperties");
}

TEST(PropfindRequest, ThatCannotBeReadIsRefusedWithTheLine) {
    EXPECT_THAT(WhyNot("<propfind xmlns='DAV:'>\n<prop>\n</propfind>"), testing::HasSubstr("400 "));
    EXPECT_THAT(WhyNot("<propfind xmlns='DAV:'>\n<prop>\n</propfind>"), testing::HasSubstr("line 3"));
    EXPECT_THAT(WhyNot("<propfind xmlns='DAV:'/>"), testing::HasSubstr("exactly one"));
    EXPECT_THAT(WhyNot("<propfind xmlns='DAV:'><allprop/><propname/></propfind>"), testing::HasSubstr("exactly one"));
    EXPECT_THAT(WhyNot("<propfind><allprop/></propfind>"), testing::HasSubstr("{DAV:}propfind"));
    EXPECT_THAT(WhyNot("<D:propfind xmlns:D='DAV:'><D:prop><u:x/></D:prop></D:propfind>"), testing::HasSubstr("400 "));
    EXPECT_THAT(WhyNot("<D:propfind xmlns:D='DAV:'><D:prop><u:x xmlns:u=''/></D:prop></D:propfind>"),
                testing::HasSubstr("400 "));
    EXPECT_THAT(WhyNot("PROPFIND"), testing::HasSubstr("400 "));
}

TEST(PropfindRequest, WithADocumentTypeIsRefused) {
    EXPECT_THAT(WhyNot("<!DOCTYPE propfind [<!ENTITY a 'b'>]><propfind xmlns='DAV:'><allprop/></propfind>"),
                testing::HasSubstr("document type"));
    EXPECT_THAT(WhyNot("<!DOCTYPE propfind SYSTEM 'file:///etc/passwd'><propfind xmlns='DAV:'><allprop/></propfind>"),
                testing::HasSubstr("document type"));
}

TEST(PropertyUpdate, KeepsTheOrderAndTheWholeElements) {
    const auto update = PropertyUpdate::Parse(
        "<D:propertyupdate xmlns:D='DAV:' xmlns:a='urn:a' xml:lang='de'>"
        "<D:set><D:prop><a:one k='v'>t<b xmlns='urn:b'/>&amp;</a:one></D:prop></D:set>"
        "<D:remove><D:prop><D:displayname/></D:prop></D:remove>"
        "<D:set><D:prop><plain/></D:prop></D:set></D:propertyupdate>");
    ASSERT_EQ(update.instructions.size(), 3U);
    const auto& one = update.instructions[0];
    EXPECT_EQ(one.property.name.nameSpace, "urn:a");
    EXPECT_EQ(one.property.xml, R"(<a:one xmlns:a="urn:a" k="v" xml:lang="de">t<b xmlns="urn:b"/>&amp;</a:one>)");
    EXPECT_EQ(one.text, "t&");
    EXPECT_TRUE(one.hasElements);
    EXPECT_TRUE(update.instructions[1].isRemoval);
    EXPECT_EQ(update.instructions[2].property.xml, R"(<plain xml:lang="de"/>)");
}

TEST(PropertyUpdate, WithoutAPropertyIsRefused) {
    EXPECT_THROW(PropertyUpdate::Parse(""), HttpError);
    EXPECT_THROW(PropertyUpdate::Parse("<D:propertyupdate xmlns:D='DAV:'><D:set/></D:propertyupdate>"), HttpError);
}

}  // namespace
}  // namespace service::protocol
