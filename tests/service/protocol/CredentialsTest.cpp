#include "service/protocol/Credentials.h"

#include <gtest/gtest.h>

namespace service::protocol {
namespace {

std::string UserAndPassword(const std::string& header) {
    const auto credentials = Credentials::Parse(header);
    return credentials ? credentials->user + " " + credentials->password : "none";
}

TEST(Credentials, AreReadWhateverTheLetterCaseOfTheScheme) {
    for (const char* scheme : {"Basic", "basic", "BASIC", "bAsIc"}) {
        EXPECT_EQ(UserAndPassword(scheme + std::string(" YW5uYTpwOnc=")), "anna p:w") << scheme;
    }
    EXPECT_EQ(UserAndPassword("Basic   YW5uYTpwOnc="), "anna p:w");
}

TEST(Credentials, HaveEveryLengthThatBase64Can) {
    EXPECT_EQ(UserAndPassword("Basic Og=="), " ");
    EXPECT_EQ(UserAndPassword("Basic YTo="), "a ");
    EXPECT_EQ(UserAndPassword("Basic YTpi"), "a b");
    EXPECT_EQ(UserAndPassword("Basic /////zo="), "\xFF\xFF\xFF\xFF ");
}

TEST(Credentials, ThatAreNoStrictBase64AreNone) {
    for (const char* text :
         {"YW5uYTpwOnc", "YW5uYTpwOnc==", "YW5uYTpwOnd=", "YW5u YTpwOnc=", "YW5uYTpwOnc=\n",
          "YW5uYTpwOnc= ", "YW5uYTp_Onc=", "YW5u=YTpwOnc=", "YTo====", "====", "=", "!!!", "", "YW5uYQ=="}) {
        EXPECT_EQ(UserAndPassword(std::string("Basic ") + text), "none") << text;
    }
}

TEST(Credentials, OfAnotherSchemeAreNone) {
    for (const char* header : {"", "Basic", "Bearer YTpi", "BasicYTpi", "Digest username=\"a\"", "YTpi"}) {
        EXPECT_EQ(UserAndPassword(header), "none") << header;
    }
}

}  // namespace
}  // namespace service::protocol
