#include "client/cli/commands/VersionCommand.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tests/fakes/Printers.h"

namespace {

using ovsync::commands::VersionReport;
using ovsync::output::Output;

class FixedVersions : public sync::interf::IVersionManager {
public:
    FixedVersions(const char* local, const char* newest)
        : _local(QString::fromLatin1(local)), _newest(QString::fromLatin1(newest)) {}

    QString GetLocalAppVersion() override { return _local; }
    QString GetMostCurrentAppVersion() override { return _newest; }
    QString GetAppInstallerUrl() override { return QString(); }

private:
    const QString _local;
    const QString _newest;
};

QByteArray Lines(const char* local, const char* newest) {
    return VersionReport(std::make_shared<FixedVersions>(local, newest), false, Output());
}

nlohmann::json Json(const char* local, const char* newest) {
    return nlohmann::json::parse(
        VersionReport(std::make_shared<FixedVersions>(local, newest), true, Output()).constData());
}

TEST(VersionCommandTest, ANewerVersionIsNew) {
    EXPECT_EQ(Lines("KQ51_1001_WIN", "KQ52_0001_WIN"),
              "Local version     KQ51_1001_WIN\n"
              "Newest version    KQ52_0001_WIN\n"
              "Installer         none\n"
              "New version       yes\n");
    EXPECT_EQ(Json("KQ51_1001_WIN", "KQ52_0001_WIN"), nlohmann::json::parse(R"({
        "local": "KQ51_1001_WIN", "newest": "KQ52_0001_WIN", "installer": "", "isNew": true, "isCompared": true
    })"));
}

TEST(VersionCommandTest, TheSameAndAnOlderVersionAreNotNew) {
    for (const char* newest : {"KQ51_1001_WIN", "KQ51_999_WIN"}) {
        EXPECT_TRUE(Lines("KQ51_1001_WIN", newest).endsWith("New version       no\n")) << newest;
        EXPECT_EQ(Json("KQ51_1001_WIN", newest)["isNew"], false);
        EXPECT_EQ(Json("KQ51_1001_WIN", newest)["isCompared"], true);
    }
}

TEST(VersionCommandTest, VersionsOfAnotherFormAreNotCompared) {
    EXPECT_TRUE(Lines("KQ51_1001_WIN", "5.2.0.0").contains("no (not compared"));
    EXPECT_TRUE(Lines("5.1.1.1001", "KQ52_0001_WIN").contains("no (not compared"));
    EXPECT_TRUE(Lines("KQ51_1001_WIN", "").contains("Newest version    none\n"));
    EXPECT_EQ(Json("KQ51_1001_WIN", "")["isCompared"], false);
}

}  // namespace
