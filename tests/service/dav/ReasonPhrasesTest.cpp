#include "service/dav/ReasonPhrases.h"

#include <gmock/gmock.h>

#include <set>

namespace service::dav {
namespace {

TEST(ReasonPhrases, AreGivenForWhatHasAStatusInWebDavOnly) {
    ReasonPhrases reasons;
    for (const int status : {404, 409}) {
        for (const char* method : {"PROPFIND", "PROPPATCH", "PUT", "DELETE", "MKCOL", "COPY", "MOVE"}) {
            EXPECT_TRUE(reasons.Next(status, method, "/a")) << status << method;
        }
    }
    EXPECT_TRUE(reasons.Next(405, "MKCOL", "/a"));
    EXPECT_FALSE(reasons.Next(405, "PUT", "/a"));
    EXPECT_FALSE(reasons.Next(404, "HEAD", "/a"));
    EXPECT_FALSE(reasons.Next(404, "GET", "/a"));
    for (const int status : {400, 403, 412, 414, 415, 500}) {
        EXPECT_FALSE(reasons.Next(status, "MKCOL", "/a")) << status;
    }
}

TEST(ReasonPhrases, TakeTurnsAndNameTheLastSegmentAsItWasSent) {
    ReasonPhrases reasons;
    std::vector<std::string> given(5);
    for (std::string& phrase : given) {
        phrase = reasons.Next(404, "DELETE", "/A/b%20*/").value();
    }
    EXPECT_EQ(given[0], "Folder b%20* does not exist.");
    EXPECT_EQ(given[4], given[0]);
    EXPECT_EQ(std::set<std::string>(given.begin(), given.end()).size(), 4U);
    EXPECT_EQ(reasons.Next(405, "MKCOL", "/").value(), "The file already exists. Existing: /");
}

TEST(ReasonPhrases, AreNotLongerThanAHeaderMayBe) {
    ReasonPhrases reasons;
    EXPECT_LT(reasons.Next(404, "DELETE", "/" + std::string(100000, 'n'))->size(), 300U);
}

}  // namespace
}  // namespace service::dav
