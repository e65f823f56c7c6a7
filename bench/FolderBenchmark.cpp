// What listing and measuring a tree of 100,000 files costs the library, with and without forms in it, and how it grows.

#include <benchmark/benchmark.h>

#include <memory>

#include "dvsync/DrovaneRemoteFolderManager.h"
#include "tests/fakes/Contract.h"
#include "tests/fakes/InstalledConfiguration.h"

namespace {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using sync::http::DAVPropfindProperties;
using sync::http::DAVPropfindResponse;
using sync::http::DAVPropfindResult;
using testing::NiceMock;
using testing::Return;

/// Leaves nothing out.
class NoFilter : public sync::interf::ISyncFilter {
public:
    bool IsFileExcluded(const QString&, qint64, int) override { return false; }
    bool IsFolderExcluded(const QString&, int) override { return false; }
};

DAVPropfindResponse Entry(const QString& path, const char* classType, int id, int parentId) {
    DAVPropfindProperties properties;
    properties.filename = path.section(QLatin1Char('/'), -1);
    properties.resourceClassType = QLatin1String(classType);
    DAVPropfindResponse response(QLatin1Char('/') + path, properties);
    response.resourceId = id;
    response.parentResourceId = parentId;
    response.contentLength = 10;
    return response;
}

// `files` files in folders of ten; every folder is a form when `inForms` is set, and so are none of them otherwise.
std::shared_ptr<DAVPropfindResult> TreeOf(int files, bool inForms) {
    auto result = std::make_shared<DAVPropfindResult>();
    for (int i = 0; i < files; ++i) {
        const int folder = i / 10;
        const QString folderPath = QStringLiteral("P/container-%1").arg(folder, 6, 10, QLatin1Char('0'));
        if (i % 10 == 0) {
            auto& map = inForms ? result->fileResponses : result->collectionResponses;
            map.insert(folderPath,
                       Entry(folderPath, inForms ? "drovane.objects.Form" : "drovane.objects.Folder", 1 + folder, 0));
        }
        const QString path = folderPath + QStringLiteral("/file-%1.txt").arg(i % 10);
        result->fileResponses.insert(path, Entry(path, "drovane.objects.File", 1000000 + i, 1 + folder));
    }
    return result;
}

/// A manager whose every PROPFIND is answered with a tree.
class Setting {
public:
    Setting(int files, bool inForms) : _tree(TreeOf(files, inForms)) {
        ON_CALL(*_urlBuilder, BuildUrl(testing::_, testing::_)).WillByDefault(Return(std::make_shared<QUrl>()));
        ON_CALL(*_httpFactory, CreatePropfindRequest(testing::_, testing::_, testing::_))
            .WillByDefault(Return(_request));
        ON_CALL(*_httpFactory, CreateRequestExecutor(testing::_, testing::_))
            .WillByDefault(Return(std::make_shared<tests::FakeRequestExecutor>()));
    }

    sync::interf::IRemoteFolderManager& Manager() { return _manager; }

    // A listing takes entries out of the result it is given.
    void RenewAnswer() { _request->result = std::make_shared<DAVPropfindResult>(*_tree); }

private:
    const tests::InstalledConfiguration _installed;
    const std::shared_ptr<DAVPropfindResult> _tree;
    const std::shared_ptr<NiceMock<tests::MockUrlBuilder>> _urlBuilder =
        std::make_shared<NiceMock<tests::MockUrlBuilder>>();
    const std::shared_ptr<NiceMock<tests::MockHttpFactory>> _httpFactory =
        std::make_shared<NiceMock<tests::MockHttpFactory>>();
    const std::shared_ptr<tests::FakePropfindRequest> _request = std::make_shared<tests::FakePropfindRequest>();
    sync::dv::dvsync::DrovaneRemoteFolderManager _manager{
        _urlBuilder, 1, nullptr, _httpFactory,
        std::make_shared<tests::FakeConfigurationFactory>(_installed.ServerConfigManager(), nullptr)};
};

void MeasureTree(benchmark::State& state, bool inForms) {
    Setting setting(static_cast<int>(state.range(0)), inForms);
    setting.RenewAnswer();
    const auto filter = std::make_shared<NoFilter>();
    for (auto _ : state) {
        int count = 0;
        qint64 size = 0;
        setting.Manager().GetFolderSize(QStringLiteral("P"), 1, true, count, size, filter, filter);
        benchmark::DoNotOptimize(size);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetComplexityN(state.range(0));
}

void ListTree(benchmark::State& state, bool inForms) {
    Setting setting(static_cast<int>(state.range(0)), inForms);
    FolderConfiguration folder;
    std::shared_ptr<QVector<FolderConfiguration>> folders;
    std::shared_ptr<QVector<FileConfiguration>> files;
    for (auto _ : state) {
        state.PauseTiming();
        setting.RenewAnswer();
        state.ResumeTiming();
        setting.Manager().GetAllFilesAndSubFoldersByFolder(folder, folders, files);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetComplexityN(state.range(0));
}

BENCHMARK_CAPTURE(MeasureTree, Folders, false)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);
BENCHMARK_CAPTURE(MeasureTree, Forms, true)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);
BENCHMARK_CAPTURE(ListTree, Folders, false)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);
BENCHMARK_CAPTURE(ListTree, Forms, true)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

}  // namespace
