#include <gmock/gmock.h>

#include <memory>
#include <string>

#include "client/library/RequestAuthenticatorFactory.h"
#include "client/requests/HttpFactory.h"
#include "client/requests/UrlBuilder.h"
#include "client/wire/TransactionError.h"
#include "dvsync/DrovaneRemoteFolderManager.h"
#include "tests/client/Fixtures.h"
#include "tests/client/requests/BadAnswers.h"
#include "tests/client/requests/ScriptedAnswers.h"
#include "tests/fakes/CleanEnvironment.h"
#include "tests/fakes/InstalledConfiguration.h"
#include "tests/fakes/ScriptedServer.h"

namespace ovsync {
namespace requests {

using library::RequestAuthenticatorFactory;
using wire::TransactionError;
namespace {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using testing::HasSubstr;
using testing::NiceMock;
using testing::Return;
using tests::BadAnswer;
using tests::BadAnswers;
using tests::CleanEnvironment;
using tests::FixtureAnswer;
using tests::FixtureNameOf;
using tests::ListingAnswer;
using tests::NameOf;
using tests::OptionsStep;
using tests::RawAnswer;
using tests::ScriptedServer;

/// The library's folder operations, asking a server of which every answer is known.
class FolderListingTest : public testing::Test {
protected:
    std::unique_ptr<sync::dv::dvsync::DrovaneRemoteFolderManager> ManagerFor(const ScriptedServer& server) {
        sync::config::ServerConfiguration account;
        account.baseUrl = server.Url(QStringLiteral("/"));
        const auto accounts = std::make_shared<NiceMock<tests::MockServerConfigManager>>();
        ON_CALL(*accounts, GetServerConfiguration).WillByDefault(Return(account));
        return std::make_unique<sync::dv::dvsync::DrovaneRemoteFolderManager>(
            std::make_shared<UrlBuilder>(), 0,
            std::make_shared<RequestAuthenticatorFactory>(QStringLiteral("alice"), QStringLiteral("open sesame")),
            std::make_shared<HttpFactory>(), std::make_shared<tests::FakeConfigurationFactory>(accounts, nullptr));
    }

    static FolderConfiguration Folder() {
        FolderConfiguration folder;
        folder.serverPath = QStringLiteral("Projects/A");
        return folder;
    }

    const CleanEnvironment environment;
};

TEST_F(FolderListingTest, AFormAndWhatLiesInItAreNeitherListedNorMeasured) {
    const auto listing = ScriptedServer::Answer(ListingAnswer(QStringLiteral("drovane.xml")));
    ScriptedServer server({OptionsStep(), listing, listing});
    const auto manager = ManagerFor(server);
    FolderConfiguration folder = Folder();
    std::shared_ptr<QVector<FolderConfiguration>> folders;
    std::shared_ptr<QVector<FileConfiguration>> files;
    ASSERT_EQ(manager->GetAllFilesAndSubFoldersByFolder(folder, folders, files), 0);
    ASSERT_EQ(files->size(), 1);
    EXPECT_EQ(files->first().serverPath, QStringLiteral("Projects/A/b c.txt"));
    ASSERT_EQ(folders->size(), 1);
    EXPECT_EQ(folders->first().serverPath, QStringLiteral("Projects/A/Sub"));

    class NothingExcluded : public sync::interf::ISyncFilter {
    public:
        bool IsFileExcluded(const QString& /*name*/, qint64 /*size*/, int /*kind*/) override { return false; }
        bool IsFolderExcluded(const QString& /*pathComponent*/, int /*kind*/) override { return false; }
    };
    const auto filter = std::make_shared<NothingExcluded>();
    int count = 0;
    qint64 size = 0;
    ASSERT_EQ(manager->GetFolderSize(folder.serverPath, 0, true, count, size, filter, filter), 0);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(size, 1234);
}

class BadFolderListingTest : public FolderListingTest, public testing::WithParamInterface<BadAnswer> {};

TEST_P(BadFolderListingTest, IsAnErrorAndNoListing) {
    const BadAnswer& bad = GetParam();
    const RawAnswer answer = FixtureAnswer(FixtureNameOf(bad), bad.fillSize);
    QList<ScriptedServer::Step> steps{ScriptedServer::Answer(answer.Bytes(), bad.ending)};
    if (bad.depth > 0) {
        steps.prepend(OptionsStep());
    }
    ScriptedServer server(steps);
    const auto manager = ManagerFor(server);
    FolderConfiguration folder = Folder();
    try {
        if (bad.depth > 0) {
            manager->GetNameSortedDirsByFolder(folder);
        } else {
            manager->FolderExists(folder);
        }
        FAIL();
    } catch (const TransactionError& error) {
        EXPECT_THAT(error.Utf8Message(), HasSubstr(bad.reason));
        EXPECT_THAT(error.Utf8Message(), HasSubstr("/Projects/A"));
    }
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

INSTANTIATE_TEST_SUITE_P(Answers, BadFolderListingTest, testing::ValuesIn(BadAnswers()),
                         [](const testing::TestParamInfo<BadAnswer>& tested) { return NameOf(tested.param); });

}  // namespace
}  // namespace requests
}  // namespace ovsync
