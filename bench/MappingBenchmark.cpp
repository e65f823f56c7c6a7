// What turning an answer into file records costs, beside copying the same fields without computing any path.

#include <benchmark/benchmark.h>

#include <memory>

#include "dvsync/ResourceMapping.h"
#include "host/core/QtCompat.h"

namespace {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using sync::http::DAVPropfindProperties;
using sync::http::DAVPropfindResponse;
using sync::http::DAVPropfindResult;

FolderConfiguration Folder() {
    FolderConfiguration folder;
    folder.serverId = 1;
    folder.serverRootPath = QStringLiteral("Projects");
    folder.localPath = QStringLiteral("/home/user/Projects");
    return folder;
}

std::shared_ptr<DAVPropfindResult> ResultOf(int entries) {
    auto result = std::make_shared<DAVPropfindResult>();
    for (int i = 0; i < entries; ++i) {
        // Every fourth name has escapes, as names with blanks have.
        const QString name =
            (i % 4 == 0 ? QStringLiteral("sheet%20no%20%1.dwg") : QStringLiteral("sheet-number-%1.dwg"))
                .arg(i, 6, 10, QLatin1Char('0'));
        DAVPropfindProperties properties;
        properties.filename = name;
        properties.resourceClassType = QStringLiteral("drovane.objects.File");
        properties.versionId = QStringLiteral("v%1").arg(i);
        properties.itemId = QStringLiteral("i%1").arg(i);
        properties.ownerId = QStringLiteral("user");
        properties.privileges = QStringLiteral("rw");
        properties.visibility = QStringLiteral("show");
        properties.checkSumMD5 = QStringLiteral("0123456789abcdef0123456789abcdef");
        properties.createdDate = QDateTime::fromMSecsSinceEpoch(1700000000000 + i * 1000LL, Qt::UTC);
        properties.lastModifiedDate = properties.createdDate;
        DAVPropfindResponse response(QStringLiteral("/Projects/Bridge/Sheets/") + name, properties);
        response.contentLength = i;
        response.versionNumber = 1 + i % 9;
        response.resourceId = 1000 + i;
        result->fileResponses.insert(name, response);
    }
    return result;
}

void BuildRecords(benchmark::State& state) {
    FolderConfiguration folder = Folder();
    const auto result = ResultOf(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(sync::dv::dvsync::BuildFileConfigsFromFindResult(folder, result));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetComplexityN(state.range(0));
}

void CopyFieldsWithoutPaths(benchmark::State& state) {
    const FolderConfiguration folder = Folder();
    const auto result = ResultOf(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        auto files = std::make_shared<QVector<FileConfiguration>>();
        for (auto entry = result->fileResponses.begin(); entry != result->fileResponses.end(); ++entry) {
            const DAVPropfindResponse& response = entry.value();
            if (!sync::dv::dvsync::IsFileClassType(response)) {
                continue;
            }
            FileConfiguration file;
            file.name = response.getFilename();
            file.attribute = QLatin1Char(response.attribute);
            file.customProperties.insert(QStringLiteral("version"), QString::number(response.versionNumber));
            file.customProperties.insert(QStringLiteral("versionId"), response.getVersionId());
            file.customProperties.insert(QStringLiteral("resourceId"), QString::number(response.resourceId));
            file.customProperties.insert(QStringLiteral("visibility"), QStringLiteral("1"));
            file.size = response.contentLength;
            file.lastModifiedDate = response.getLastModifiedDate();
            file.createdDate = response.getCreatedDate();
            file.ownerId = response.getOwnerId();
            file.serverId = folder.serverId;
            file.setPrivileges(response.getPrivileges());
            file.itemId = response.getItemId();
            file.versionId = response.getVersionId();
            file.md5Checksum = response.getCheckSumMD5();
            file.linksExtractedAtTime = response.getLinksExtractedAtFileTime();
            file.setSyncOptionPersistentAcrossMachines(
                sync::core::compat::SplitSkippingEmptyParts(response.getSyncOption(), QLatin1Char(',')));
            files->append(file);
        }
        benchmark::DoNotOptimize(files);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetComplexityN(state.range(0));
}

BENCHMARK(BuildRecords)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);
BENCHMARK(CopyFieldsWithoutPaths)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

}  // namespace
