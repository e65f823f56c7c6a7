#include "client/cli/output/SettingsFormat.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

namespace {

using ovsync::output::Output;
using ovsync::output::SettingsJson;
using ovsync::output::SettingsTable;
using sync::dv::dvsync::ExternalSyncConfig;
using testing::ContainsRegex;

/// A tuning that no two values are the same in.
class UnlikeTuning : public sync::interf::ISyncConfiguration {
public:
    int GetSyncFrequency() override { return 1; }
    bool IsIncrementalSyncEnabled() override { return true; }
    bool IsIncrementalSyncEnabledForFile(const QString& path) override { return path == QStringLiteral("a/b.txt"); }
    qint64 GetMinFileSizeForIncrementalSync() override { return Q_INT64_C(5000000000); }
    float GetMaxChangeForIncrementalSync() override { return 0.1F; }
    float GetMaxDeltaForIncrementalSync() override { return 0.7F; }
    int GetMaxParallelTransfers() override { return 2; }
    bool GetLimitsForUploadFinishedEvent(int& maxFiles, int& maxDelay) override {
        maxFiles = 3;
        maxDelay = 4;
        return true;
    }
    bool GetLimitsForCreateDeleteReferences(int& maxCreated, int& maxDeleted, int& maxDelay, bool) override {
        maxCreated = 5;
        maxDeleted = 6;
        maxDelay = 7;
        return true;
    }
    bool GetLimitsForGetParentsChildrenReferences(int& maxParents, int& maxChildren, bool) override {
        maxParents = 8;
        maxChildren = 9;
        return hasQueryLimits;
    }
    int GetMaxTransferRetries() override { return 10; }
    int GetSyncDelayAfterServerError() override { return 11; }
    int GetMaxFailedPasses() override { return 12; }

    bool hasQueryLimits = true;
};

class SettingsFormatTest : public testing::Test {
protected:
    SettingsFormatTest() {
        published->syncFrequency = 13;
        published->mostCurrentVersion = QStringLiteral("KQ51_14_WIN");
        published->installerUrl = QStringLiteral("http://h/15");
    }

    nlohmann::json Json(const QString& asked) {
        return nlohmann::json::parse(SettingsJson(tuning, published, asked).constData());
    }
    std::string Table(const QString& asked) { return SettingsTable(tuning, published, asked, Output()).toStdString(); }

    UnlikeTuning tuning;
    std::optional<ExternalSyncConfig> published = ExternalSyncConfig();
    const QString path = QStringLiteral("a/b.txt");
};

TEST_F(SettingsFormatTest, JsonNamesEachValueOfEachSide) {
    EXPECT_EQ(Json(path), nlohmann::json::parse(R"({
        "library": {
            "syncFrequency": 1, "incrementalSync": true, "incrementalSyncOfPath": true,
            "minIncrementalFileSize": 5000000000, "maxIncrementalChange": 0.1, "maxIncrementalDelta": 0.7,
            "uploadFinishedLimits": {"files": 3, "delay": 4},
            "referenceChangeLimits": {"created": 5, "deleted": 6, "delay": 7},
            "referenceQueryLimits": {"parents": 8, "children": 9},
            "maxParallelTransfers": 2, "maxTransferRetries": 10, "delayAfterServerError": 11, "maxFailedPasses": 12
        },
        "service": {"syncFrequency": 13, "mostCurrentVersion": "KQ51_14_WIN", "installerUrl": "http://h/15"}
    })"));
}

TEST_F(SettingsFormatTest, TheTableHasEachValueOnItsSide) {
    const std::string table = Table(path);
    for (const char* line :
         {"\nSync frequency +1 +13\n", "\nNewest version +- +KQ51_14_WIN\n", "\nInstaller +- +http://h/15\n",
          "\nIncremental sync +yes +-\n", "\n  of this path +yes +-\n", "\n  from a size of, bytes +5000000000 +-\n",
          "\n  up to a change of +0.1 +-\n", "\n  up to a difference of +0.7 +-\n",
          "\nLimits of finished uploads +files 3, delay 4 +-\n",
          "\nLimits of changed references +created 5, deleted 6, delay 7 +-\n",
          "\nLimits of asked references +parents 8, children 9 +-\n", "\nParallel transfers +2 +-\n",
          "\nRetries of a transfer +10 +-\n", "\nDelay after a server error +11 +-\n",
          "\nFailed passes in a row +12 +-\n"}) {
        EXPECT_THAT(table, ContainsRegex(line));
    }
}

TEST_F(SettingsFormatTest, WhereNothingIsPublishedThatIsSaidAndTheLibraryCounts) {
    published.reset();
    EXPECT_THAT(Table(path), ContainsRegex("^This server publishes no settings.*\nSync frequency +1 +-\n"));
    EXPECT_EQ(Json(path)["service"], nullptr);
    EXPECT_EQ(Json(path)["library"]["syncFrequency"], 1);
}

TEST_F(SettingsFormatTest, WhatDependsOnThePathIsAskedForThatPath) {
    EXPECT_EQ(Json(QStringLiteral("c"))["library"]["incrementalSyncOfPath"], false);
    EXPECT_THAT(Table(QStringLiteral("c")), ContainsRegex("\n  of this path +no +-\n"));
}

TEST_F(SettingsFormatTest, ALimitThatIsNotSetHasNoValueWhateverWasWritten) {
    tuning.hasQueryLimits = false;
    EXPECT_EQ(Json(path)["library"]["referenceQueryLimits"], nullptr);
    EXPECT_THAT(Table(path), ContainsRegex("\nLimits of asked references +none +-\n"));
}

}  // namespace
