#include "tests/client/sync/SyncTest.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include "client/http/EnumTable.h"
#include "client/sync/PullPass.h"
#include "client/sync/PushPass.h"

namespace tests {

using ovsync::store::RecordDatabase;
using ovsync::syncing::PassContext;
using ovsync::syncing::PullPass;
using ovsync::syncing::PushPass;
using ovsync::syncing::SyncEvent;
using ovsync::syncing::SyncOutcome;

namespace {

struct KindName {
    SyncEvent::Kind kind;
    const char* name;
};

constexpr KindName KindNames[] = {
    {SyncEvent::Kind::Fetched, "Fetched"},
    {SyncEvent::Kind::Updated, "Updated"},
    {SyncEvent::Kind::Deleted, "Deleted"},
    {SyncEvent::Kind::FolderMade, "FolderMade"},
    {SyncEvent::Kind::Sent, "Sent"},
    {SyncEvent::Kind::FolderSent, "FolderSent"},
    {SyncEvent::Kind::DeletedHere, "DeletedHere"},
    {SyncEvent::Kind::NewerThere, "NewerThere"},
    {SyncEvent::Kind::Skipped, "Skipped"},
    {SyncEvent::Kind::Conflict, "Conflict"},
    {SyncEvent::Kind::Kept, "Kept"},
    {SyncEvent::Kind::Refused, "Refused"},
    {SyncEvent::Kind::Failed, "Failed"},
};
static_assert(ovsync::http::HasRowOfEach(KindNames, &KindName::kind, SyncEvent::Kind::Failed),
              "A kind is the index of its name.");

}  // namespace

SyncTest::SyncTest() : disk(folder.path()), tree(disk) {
    options.isStopped = &isStopped;
    options.transfers = 2;
    options.deletionLimit = *ovsync::syncing::DeletionLimit::Read(Text("100%"));
}

SyncOutcome SyncTest::Pull() {
    return _Run([](PassContext& context) { return PullPass(context).Run(); });
}

SyncOutcome SyncTest::Push() {
    return _Run([](PassContext& context) { return PushPass(context).Run(); });
}

SyncOutcome SyncTest::_Run(const std::function<SyncOutcome(PassContext&)>& pass) {
    events.clear();
    RecordDatabase records(folder.path(),
                           options.isTrial ? RecordDatabase::Access::Try : RecordDatabase::Access::Change);
    const ovsync::syncing::ServiceFolder serviceFolder = service.Folder(folder.path());
    PassContext context(serviceFolder, tree, records, options, *this);
    return pass(context);
}

void SyncTest::Write(const char* path, const QByteArray& content) {
    ASSERT_TRUE(QDir().mkpath(QFileInfo(Path(path)).path()));
    QFile file(Path(path));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path;
    ASSERT_EQ(file.write(content), content.size());
}

void SyncTest::Remove(const char* path) {
    ASSERT_TRUE(QFile::remove(Path(path))) << path;
}

QByteArray SyncTest::Content(const char* path) const {
    QFile file(Path(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

std::map<QString, QByteArray> SyncTest::Contents() const {
    std::map<QString, QByteArray> contents;
    QDirIterator files(folder.path(), QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        const QString path = QDir(folder.path()).relativeFilePath(file.fileName());
        if (!path.startsWith(Text(".ovsync/")) && file.open(QIODevice::ReadOnly)) {
            contents[path] = file.readAll();
        }
    }
    return contents;
}

QString SyncTest::Path(const char* path) const {
    return folder.filePath(Text(path));
}

bool SyncTest::HasTemporaryFiles() const {
    const std::map<QString, QByteArray> contents = Contents();
    return std::any_of(contents.begin(), contents.end(),
                       [](const auto& file) { return file.first.contains(Text("SyncTemp")); });
}

QStringList SyncTest::Told() const {
    QStringList told;
    for (const SyncEvent& event : events) {
        if (event.kind != SyncEvent::Kind::Fetched && event.kind != SyncEvent::Kind::Updated) {
            told.append(Text(KindNames[static_cast<size_t>(event.kind)].name) + QLatin1Char(' ') + event.path);
        }
    }
    told.sort();
    return told;
}

QStringList SyncTest::Details() const {
    QStringList details;
    for (const SyncEvent& event : events) {
        details.append(event.detail);
    }
    return details;
}

}  // namespace tests
