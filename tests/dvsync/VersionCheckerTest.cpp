#include "dvsync/VersionChecker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QMetaObject>
#include <memory>
#include <string>

#include "host/core/SyncException.h"
#include "tests/dvsync/LogRecorder.h"
#include "tests/fakes/Text.h"

namespace sync {
namespace dv {
namespace dvsync {

class VersionCheckerAccess {
public:
    static bool CompareDotted(VersionChecker& checker, const QString& versionA, const QString& versionB) {
        return checker._DottedVersionAIsGreaterThanDottedVersionB(versionA, versionB);
    }
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync

namespace {

using sync::dv::dvsync::VersionChecker;
using testing::IsEmpty;
using testing::NiceMock;
using testing::Return;
using testing::Throw;
using tests::ErrorLevel;
using tests::InfoLevel;
using tests::Text;
using CheckerAccess = sync::dv::dvsync::VersionCheckerAccess;

class MockVersionManager : public sync::interf::IVersionManager {
public:
    MOCK_METHOD(QString, GetLocalAppVersion, (), (override));
    MOCK_METHOD(QString, GetMostCurrentAppVersion, (), (override));
    MOCK_METHOD(QString, GetAppInstallerUrl, (), (override));
};

class VersionCheckerTest : public testing::Test {
protected:
    VersionCheckerTest() {
        ON_CALL(*_versions, GetLocalAppVersion()).WillByDefault(Return(Text("KQ51_1001_WIN")));
        ON_CALL(*_versions, GetMostCurrentAppVersion()).WillByDefault(Return(Text("KQ52_0001_WIN")));
    }

    bool AIsGreater(const char* versionA, const char* versionB) {
        return _checker.VersionAIsGreaterThanVersionB(Text(versionA), Text(versionB));
    }

    void ExpectError(size_t index, const std::string& text) const {
        ASSERT_EQ(_log.Records().size(), index + 1);
        EXPECT_EQ(_log.Records()[index].level, ErrorLevel);
        EXPECT_EQ(_log.Records()[index].text, text);
    }

    const std::shared_ptr<NiceMock<MockVersionManager>> _versions = std::make_shared<NiceMock<MockVersionManager>>();
    VersionChecker _checker{_versions};
    QString _mostCurrentVersion = Text("before");
    const tests::LogRecorder _log{LOG4CPLUS_TEXT("version")};
};

TEST_F(VersionCheckerTest, TheMetaObjectHasItsNameAndNothingOfItsOwn) {
    const QMetaObject& meta = VersionChecker::staticMetaObject;
    EXPECT_STREQ(meta.className(), "sync::dv::dvsync::VersionChecker");
    EXPECT_STREQ(meta.superClass()->className(), "sync::interf::IVersionChecker");
    EXPECT_EQ(meta.methodCount(), meta.methodOffset());
}

// --- The comparison

TEST_F(VersionCheckerTest, MajorAndMinorNumbersCountBeforeTheBuild) {
    EXPECT_TRUE(AIsGreater("KQ52_0001_WIN", "KQ51_9999_WIN"));
    EXPECT_FALSE(AIsGreater("KQ51_9999_WIN", "KQ52_0001_WIN"));
    EXPECT_TRUE(AIsGreater("KQ60_1_WIN", "KQ59_2_WIN"));
    EXPECT_FALSE(AIsGreater("KQ59_2_WIN", "KQ60_1_WIN"));
    EXPECT_THAT(_log.Records(), IsEmpty());
}

TEST_F(VersionCheckerTest, BuildsAreComparedAsNumbers) {
    EXPECT_FALSE(AIsGreater("KQ51_999_WIN", "KQ51_1000_WIN"));
    EXPECT_TRUE(AIsGreater("KQ51_1000_WIN", "KQ51_999_WIN"));
    EXPECT_FALSE(AIsGreater("KQ51_01_WIN", "KQ51_1_WIN"));
    EXPECT_TRUE(AIsGreater("KQ51_2147483647_WIN", "KQ51_2147483646_WIN"));
    EXPECT_THAT(_log.Records(), IsEmpty());
}

TEST_F(VersionCheckerTest, TheSameVersionIsNotGreater) {
    EXPECT_FALSE(AIsGreater("KQ51_1001_WIN", "KQ51_1001_WIN"));
    EXPECT_THAT(_log.Records(), IsEmpty());
}

TEST_F(VersionCheckerTest, AVersionIsFoundAnywhereInTheText) {
    EXPECT_TRUE(AIsGreater("xxKQ51_1002_WINyy", "KQ51_1001_WIN"));
    EXPECT_TRUE(AIsGreater("KQ51_1002_WIN KQ59_1_WIN", "aKQ51_1001_WIN"));
    EXPECT_TRUE(AIsGreater("KQKQ51_1002_WINDOWS", "\nKQ51_1001_WIN\n"));
    EXPECT_THAT(_log.Records(), IsEmpty());
}

TEST_F(VersionCheckerTest, TheFirstVersionInATextCounts) {
    EXPECT_FALSE(AIsGreater("KQ50_1_WIN KQ59_1_WIN", "KQ51_1_WIN"));
    EXPECT_TRUE(AIsGreater("KQ51_1_WIN", "KQ50_1_WIN KQ59_1_WIN"));
    EXPECT_TRUE(AIsGreater("KQ52_x_WIN KQ51_2_WIN", "KQ51_1_WIN"));
    EXPECT_THAT(_log.Records(), IsEmpty());
}

TEST_F(VersionCheckerTest, NumbersAreDecimal) {
    EXPECT_TRUE(AIsGreater("KQ51_010_WIN", "KQ51_9_WIN"));
    EXPECT_FALSE(AIsGreater("KQ51_9_WIN", "KQ51_010_WIN"));
    EXPECT_TRUE(AIsGreater("KQ51_0000000000000010_WIN", "KQ51_9_WIN"));
    EXPECT_TRUE(CheckerAccess::CompareDotted(_checker, Text("5.1.010.0"), Text("5.1.9.0")));
    EXPECT_FALSE(CheckerAccess::CompareDotted(_checker, Text("5.1.9.0"), Text("5.1.010.0")));
    EXPECT_THAT(_log.Records(), IsEmpty());
    EXPECT_FALSE(CheckerAccess::CompareDotted(_checker, Text("5.1.0x10.0"), Text("5.1.9.0")));
    EXPECT_FALSE(CheckerAccess::CompareDotted(_checker, Text("5.1.9.0"), Text("5.1.0x8.0")));
    EXPECT_EQ(_log.Records().size(), 2U);
}

TEST_F(VersionCheckerTest, ADigitOfAnotherScriptIsADigitThatCountsAsNothing) {
    // The Arabic five.
    EXPECT_TRUE(AIsGreater("KQ\xD9\xA5\x31_7_WIN", "KQ01_6_WIN"));
    EXPECT_FALSE(AIsGreater("KQ\xD9\xA5\x31_7_WIN", "KQ10_1_WIN"));
    EXPECT_TRUE(AIsGreater("KQ5\xD9\xA5_7_WIN", "KQ50_6_WIN"));
    EXPECT_FALSE(AIsGreater("KQ5\xD9\xA5_7_WIN", "KQ51_1_WIN"));
    EXPECT_THAT(_log.Records(), IsEmpty());
}

class NoVersionTest : public VersionCheckerTest, public testing::WithParamInterface<const char*> {};

TEST_P(NoVersionTest, IsRejectedAsEitherVersion) {
    const std::string text = GetParam();
    EXPECT_FALSE(AIsGreater(GetParam(), "KQ51_1_WIN"));
    ExpectError(0, "Comparing two versions, \"versionA\" <" + text +
                       "> and \"versionB\" <KQ51_1_WIN>.  \"versionA\" <" + text + "> has incorrect format.");
    EXPECT_FALSE(AIsGreater("KQ51_1_WIN", GetParam()));
    ExpectError(1, "Comparing two versions, \"versionA\" <KQ51_1_WIN> and \"versionB\" <" + text +
                       ">.  \"versionB\" <" + text + "> has incorrect format.");
}

INSTANTIATE_TEST_SUITE_P(Texts, NoVersionTest,
                         testing::Values("", "5.1.1.1001", "0.0.0.0", "KQ51_99999999999_WIN", "KQ51_2147483648_WIN",
                                         "KQ51__WIN", "KQ51_-1_WIN", "KQ51_1a_WIN", "KQ5_1_WIN", "KQ511_1_WIN",
                                         "kq51_1_win", "KQ51_1_MAC", "KQ51_1001", "KQ51-1_WIN", "KQ51_1-WIN",
                                         "KQ51_1_win", "51_1_WIN", "KQ 51_1_WIN", "KQ5x_1_WIN", "KQ51_0x10_WIN",
                                         "KQ51_ 1_WIN", "KQ51_\xD9\xA5_WIN", "KQ51_99999999999_WIN KQ51_1_WIN",
                                         "KQ %1 %0 %2", "K\xC3\xB6nig\xF0\x9F\x98\x80"));

TEST_F(VersionCheckerTest, OfTwoTextsThatAreNoVersionsTheFirstIsComplainedAbout) {
    EXPECT_FALSE(AIsGreater("a %1", "b %0"));
    ExpectError(0,
                "Comparing two versions, \"versionA\" <a %1> and \"versionB\" <b %0>.  \"versionA\" <a %1> has "
                "incorrect format.");
}

TEST_F(VersionCheckerTest, RecordsNameTheirSource) {
    AIsGreater("", "");
    ASSERT_EQ(_log.Records().size(), 1U);
    EXPECT_EQ(_log.Records()[0].logger, "version");
    EXPECT_EQ(_log.Records()[0].file, "VersionChecker");
    EXPECT_THAT(_log.Records()[0].function, testing::HasSubstr("VersionChecker::VersionAIsGreaterThanVersionB"));
}

TEST_F(VersionCheckerTest, DottedVersionsOfOtherLengthsAreRejected) {
    for (const char* text : {"5.1.1", "5.1.1.0.0", "", "%1"}) {
        const tests::LogRecorder log(LOG4CPLUS_TEXT("version"));
        EXPECT_FALSE(CheckerAccess::CompareDotted(_checker, Text(text), Text("5.1.1.0")));
        EXPECT_FALSE(CheckerAccess::CompareDotted(_checker, Text("5.1.1.0"), Text(text)));
        ASSERT_EQ(log.Records().size(), 2U);
        EXPECT_EQ(
            Text(log.Records()[0].text.c_str()),
            Text("Comparing two versions, \"versionA\" <%1> and \"versionB\" <5.1.1.0>.  \"versionA\" <%1> is the "
                 "incorrect length.")
                .arg(Text(text)));
        EXPECT_EQ(
            Text(log.Records()[1].text.c_str()),
            Text("Comparing two versions, \"versionA\" <5.1.1.0> and \"versionB\" <%1>.  \"versionB\" <%1> is the "
                 "incorrect length.")
                .arg(Text(text)));
        EXPECT_EQ(log.Records()[1].level, ErrorLevel);
    }
}

TEST_F(VersionCheckerTest, OfTwoDottedVersionsAtFaultTheFirstIsComplainedAbout) {
    EXPECT_FALSE(CheckerAccess::CompareDotted(_checker, Text("1.2"), Text("1.2.3")));
    ExpectError(0,
                "Comparing two versions, \"versionA\" <1.2> and \"versionB\" <1.2.3>.  \"versionA\" <1.2> is the "
                "incorrect length.");
    EXPECT_FALSE(CheckerAccess::CompareDotted(_checker, Text("5.x.1.0"), Text("5.y.1.0")));
    ExpectError(1,
                "Comparing two versions, \"versionA\" <5.x.1.0> and \"versionB\" <5.y.1.0>.  Cannot convert part of "
                "\"versionA\" <5.x.1.0> to an int.");
    EXPECT_FALSE(CheckerAccess::CompareDotted(_checker, Text("x.1.1.0"), Text("5.1.1")));
    ExpectError(2,
                "Comparing two versions, \"versionA\" <x.1.1.0> and \"versionB\" <5.1.1>.  \"versionB\" <5.1.1> is "
                "the incorrect length.");
}

TEST_F(VersionCheckerTest, EmptyPartsOfADottedVersionCount) {
    EXPECT_FALSE(CheckerAccess::CompareDotted(_checker, Text("5.1..1.0"), Text("5.1.1.0")));
    ExpectError(0,
                "Comparing two versions, \"versionA\" <5.1..1.0> and \"versionB\" <5.1.1.0>.  \"versionA\" "
                "<5.1..1.0> is the incorrect length.");
}

TEST_F(VersionCheckerTest, PartsOfDottedVersionsThatAreNoNumbersAreRejected) {
    EXPECT_FALSE(CheckerAccess::CompareDotted(_checker, Text("5.1.x.0"), Text("5.1.1.0")));
    ExpectError(0,
                "Comparing two versions, \"versionA\" <5.1.x.0> and \"versionB\" <5.1.1.0>.  Cannot convert part of "
                "\"versionA\" <5.1.x.0> to an int.");
    EXPECT_FALSE(CheckerAccess::CompareDotted(_checker, Text("5.1.1.0"), Text("5.1..0")));
    ExpectError(1,
                "Comparing two versions, \"versionA\" <5.1.1.0> and \"versionB\" <5.1..0>.  Cannot convert part of "
                "\"versionB\" <5.1..0> to an int.");
}

TEST_F(VersionCheckerTest, PartsAfterTheFirstDifferenceAreNotLookedAt) {
    EXPECT_TRUE(CheckerAccess::CompareDotted(_checker, Text("6.x.x.x"), Text("5.1.1.0")));
    EXPECT_FALSE(CheckerAccess::CompareDotted(_checker, Text("5.1.1.0"), Text("5.2.x.0")));
    EXPECT_THAT(_log.Records(), IsEmpty());
}

TEST_F(VersionCheckerTest, AllFourPartsOfDottedVersionsCount) {
    EXPECT_TRUE(CheckerAccess::CompareDotted(_checker, Text("5.1.1.1"), Text("5.1.1.0")));
    EXPECT_FALSE(CheckerAccess::CompareDotted(_checker, Text("5.1.1.1"), Text("5.1.1.1")));
    EXPECT_FALSE(CheckerAccess::CompareDotted(_checker, Text("5.1.1.0"), Text("5.1.1.1")));
    EXPECT_TRUE(CheckerAccess::CompareDotted(_checker, Text("5.1.2.0"), Text("5.1.1.9")));
    EXPECT_THAT(_log.Records(), IsEmpty());
}

// --- The check

TEST_F(VersionCheckerTest, ANewerVersionOnTheServiceIsNew) {
    EXPECT_TRUE(_checker.ThereIsANewAppVersion(_mostCurrentVersion));
    EXPECT_EQ(_mostCurrentVersion, Text("KQ52_0001_WIN"));
    ASSERT_EQ(_log.Records().size(), 1U);
    EXPECT_EQ(_log.Records()[0].level, InfoLevel);
    EXPECT_EQ(_log.Records()[0].text,
              "Check for new app version.  Local client is version <KQ51_1001_WIN>; most current version found from "
              "remote server query is <KQ52_0001_WIN>.");
}

TEST_F(VersionCheckerTest, TheRemoteVersionIsHandedOutEvenWhenItIsNotNew) {
    EXPECT_CALL(*_versions, GetMostCurrentAppVersion()).WillOnce(Return(Text("KQ50_9_WIN")));
    EXPECT_FALSE(_checker.ThereIsANewAppVersion(_mostCurrentVersion));
    EXPECT_EQ(_mostCurrentVersion, Text("KQ50_9_WIN"));
}

TEST_F(VersionCheckerTest, TheDefaultsOfAFailedFetchAreNoNewVersion) {
    EXPECT_CALL(*_versions, GetLocalAppVersion()).WillOnce(Return(Text("5.1.1.1001")));
    EXPECT_CALL(*_versions, GetMostCurrentAppVersion()).WillOnce(Return(Text("0.0.0.0")));
    EXPECT_FALSE(_checker.ThereIsANewAppVersion(_mostCurrentVersion));
    EXPECT_EQ(_mostCurrentVersion, Text("0.0.0.0"));
    ExpectError(1,
                "Comparing two versions, \"versionA\" <0.0.0.0> and \"versionB\" <5.1.1.1001>.  \"versionA\" "
                "<0.0.0.0> has incorrect format.");
}

TEST_F(VersionCheckerTest, ADottedLocalVersionIsNeverCompared) {
    EXPECT_CALL(*_versions, GetLocalAppVersion()).WillOnce(Return(Text("5.1.1.1001")));
    EXPECT_FALSE(_checker.ThereIsANewAppVersion(_mostCurrentVersion));
    ExpectError(1,
                "Comparing two versions, \"versionA\" <KQ52_0001_WIN> and \"versionB\" <5.1.1.1001>.  \"versionB\" "
                "<5.1.1.1001> has incorrect format.");
}

TEST_F(VersionCheckerTest, APlaceholderInAVersionStaysAsItIs) {
    EXPECT_CALL(*_versions, GetLocalAppVersion()).WillOnce(Return(Text("%1")));
    EXPECT_CALL(*_versions, GetMostCurrentAppVersion()).WillOnce(Return(Text("%0 KQ51_1_WIN")));
    _checker.ThereIsANewAppVersion(_mostCurrentVersion);
    EXPECT_EQ(_log.Records()[0].text,
              "Check for new app version.  Local client is version <%1>; most current version found from remote server "
              "query is <%0 KQ51_1_WIN>.");
}

/// Compares by another rule.
class OverridingChecker : public VersionChecker {
public:
    using VersionChecker::VersionChecker;
    bool VersionAIsGreaterThanVersionB(QString versionA, QString versionB) override {
        compared = versionA + Text(" with ") + versionB;
        return true;
    }

    QString compared;
};

TEST_F(VersionCheckerTest, TheCheckComparesTheRemoteVersionWithTheLocalOneThroughTheInterface) {
    EXPECT_CALL(*_versions, GetMostCurrentAppVersion()).WillOnce(Return(Text("remote")));
    EXPECT_CALL(*_versions, GetLocalAppVersion()).WillOnce(Return(Text("local")));
    OverridingChecker checker(_versions);
    EXPECT_TRUE(checker.ThereIsANewAppVersion(_mostCurrentVersion));
    EXPECT_EQ(checker.compared, Text("remote with local"));
}

TEST_F(VersionCheckerTest, AStandardExceptionIsLoggedWithItsTextAndMeansNothingNew) {
    EXPECT_CALL(*_versions, GetLocalAppVersion())
        .WillOnce(Throw(sync::core::SyncException(Text("no version f\xC3\xBCr %1"))));
    EXPECT_FALSE(_checker.ThereIsANewAppVersion(_mostCurrentVersion));
    EXPECT_EQ(_mostCurrentVersion, Text("before"));
    ExpectError(0, "no version f\xC3\xBCr %1");
}

TEST_F(VersionCheckerTest, TheLocalVersionIsAskedForFirst) {
    const testing::InSequence inOrder;
    EXPECT_CALL(*_versions, GetLocalAppVersion()).WillOnce(Return(Text("KQ51_1_WIN")));
    EXPECT_CALL(*_versions, GetMostCurrentAppVersion()).WillOnce(Return(Text("KQ51_1_WIN")));
    EXPECT_CALL(*_versions, GetAppInstallerUrl()).Times(0);
    EXPECT_FALSE(_checker.ThereIsANewAppVersion(_mostCurrentVersion));
    EXPECT_EQ(_log.Records().size(), 1U);
}

TEST_F(VersionCheckerTest, WithoutALocalVersionTheRemoteOneIsNotAskedFor) {
    EXPECT_CALL(*_versions, GetLocalAppVersion()).WillOnce(Throw(1));
    EXPECT_CALL(*_versions, GetMostCurrentAppVersion()).Times(0);
    EXPECT_FALSE(_checker.ThereIsANewAppVersion(_mostCurrentVersion));
    EXPECT_EQ(_mostCurrentVersion, Text("before"));
}

TEST_F(VersionCheckerTest, TheVersionsAreKeptForTheCheckersLife) {
    auto versions = std::make_shared<NiceMock<MockVersionManager>>();
    const std::weak_ptr<MockVersionManager> watched = versions;
    auto checker = std::make_unique<VersionChecker>(std::move(versions));
    EXPECT_FALSE(watched.expired());
    checker.reset();
    EXPECT_TRUE(watched.expired());
}

TEST_F(VersionCheckerTest, AnyOtherExceptionIsLoggedAndMeansNothingNew) {
    EXPECT_CALL(*_versions, GetMostCurrentAppVersion()).WillOnce(Throw(1));
    EXPECT_FALSE(_checker.ThereIsANewAppVersion(_mostCurrentVersion));
    ExpectError(0, "Caught unknown, unexpected exception.  Swallowing exception.");
}

}  // namespace
