#include "tests/client/sync/pass/SyncTest.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include "client/sync/both/TwoWayPass.h"
#include "client/sync/pull/PullPass.h"
#include "client/sync/push/PushPass.h"
#include "client/wire/EnumTable.h"

namespace tests {

using ovsync::both::TwoWayPass;
using ovsync::pass::SyncPass;
using ovsync::pull::PullPass;
using ovsync::push::PushPass;
using ovsync::report::SyncEvent;
using ovsync::report::SyncOutcome;
using ovsync::store::RecordDatabase;

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
    {SyncEvent::Kind::Moved, "Moved"},
    {SyncEvent::Kind::MovedThere, "MovedThere"},
    {SyncEvent::Kind::DeletedThere, "DeletedThere"},
    {SyncEvent::Kind::DeletedHere, "DeletedHere"},
    {SyncEvent::Kind::NewerThere, "NewerThere"},
    {SyncEvent::Kind::Skipped, "Skipped"},
    {SyncEvent::Kind::Noted, "Noted"},
    {SyncEvent::Kind::Conflict, "Conflict"},
    {SyncEvent::Kind::Kept, "Kept"},
    {SyncEvent::Kind::Refused, "Refused"},
    {SyncEvent::Kind::Failed, "Failed"},
    {SyncEvent::Kind::Waiting, "Waiting"},
};
static_assert(ovsync::wire::HasRowOfEach(KindNames, &KindName::kind, SyncEvent::Kind::Waiting),
              "A kind is the index of its name.");

}  // namespace

SyncTest::SyncTest() : disk(folder.path()), tree(disk) {
    options.isStopped = &isStopped;
    options.transfers = 2;
    options.deletionLimit = *ovsync::pass::DeletionLimit::Read(Text("100%"));
}

SyncOutcome SyncTest::Pull() {
    return _Run([](SyncPass& pass) { return PullPass(pass).Run(); });
}

SyncOutcome SyncTest::Push() {
    return _Run([](SyncPass& pass) { return PushPass(pass).Run(); });
}

SyncOutcome SyncTest::Sync() {
    return _Run([](SyncPass& pass) { return TwoWayPass(pass).Run(); });
}

void SyncTest::Begin(const std::vector<const char*>& paths) {
    for (const char* path : paths) {
        Write(path, QByteArray("1 of ") + path);
    }
    ASSERT_EQ(Sync(), SyncOutcome::InStep);
    ASSERT_EQ(Sync(), SyncOutcome::InStep);
    service.ForgetCounts();
}

void SyncTest::ExpectInStep() {
    EXPECT_EQ(Contents(), service.Contents());
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_TRUE(Told().isEmpty()) << Told().join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(Contents(), service.Contents());
}

void SyncTest::BeforeRequest(const char* method, const std::function<void()>& happens) {
    service.onRequest = [method, happens, isOver = false](const QString& met, const QString&) mutable {
        if (!isOver && met == Text(method)) {
            isOver = true;
            happens();
        }
    };
}

SyncOutcome SyncTest::SyncPlaces(const QSet<QString>& changedHere) {
    return _Run([&changedHere](SyncPass& pass) { return TwoWayPass(pass, changedHere).Run(); });
}

SyncOutcome SyncTest::_Run(const std::function<SyncOutcome(SyncPass&)>& pass) {
    events.clear();
    RecordDatabase records(folder.path(),
                           options.isDryRun ? RecordDatabase::Access::Try : RecordDatabase::Access::Change);
    const ovsync::pass::ServiceFolder serviceFolder = service.Folder(folder.path());
    SyncPass common(serviceFolder, tree, records, options, *this);
    return pass(common);
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

std::vector<QByteArray> SyncTest::TrashContents() const {
    std::vector<QByteArray> contents;
    QDirIterator files(Path(".ovsync/trash"), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.open(QIODevice::ReadOnly)) {
            contents.push_back(file.readAll());
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
