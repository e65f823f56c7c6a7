#include <QSet>
#include <QUrl>

#include "client/listing/ListingBuilder.h"
#include "client/store/RecordDatabase.h"
#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteTree.h"
#include "dvsync/ResourceMapping.h"
#include "dvsync/TransferTexts.h"
#include "host/core/SyncException.h"
#include "tests/fuzz/FolderManager.h"
#include "tests/fuzz/Fuzzing.h"

using fuzz::Require;
using ovsync::listing::MultistatusEntry;
using ovsync::pass::RemoteTree;
using sync::http::DAVPropfindResult;

namespace {

const char* const AskedPath = "/Projects/A/";

void AddTo(ovsync::listing::ListingBuilder& listing, const QByteArray& href) {
    const QByteArray status("HTTP/1.1 200 OK");
    MultistatusEntry entry;
    entry.Start();
    entry.StartHref();
    entry.Append(href.constData(), static_cast<size_t>(href.size()));
    entry.EndHref();
    entry.StartPropstat();
    if (href.endsWith('/')) {
        entry.SetCollection();
    }
    entry.StartValue();
    entry.Append(status.constData(), static_cast<size_t>(status.size()));
    entry.EndStatus();
    entry.EndPropstat();
    entry.End();
    listing.Add(entry);
}

/// The listing of a tree with an entry of each of `hrefs`; those that end in '/' are folders. What no listing can have
/// is left out.
std::shared_ptr<DAVPropfindResult> ListingOf(const QList<QByteArray>& hrefs) {
    static const QUrl asked(QString::fromLatin1("http://127.0.0.1:8080") + QString::fromLatin1(AskedPath));
    ovsync::listing::ListingBuilder listing(asked, sync::http::DAVPropfindRequest::Tree,
                                            ovsync::listing::HrefScope::OfUrl, {}, nullptr);
    AddTo(listing, AskedPath);
    QSet<QByteArray> seen;
    ovsync::listing::Href reader(asked);
    for (const QByteArray& line : hrefs) {
        const QByteArray href = line.trimmed();
        try {
            reader.Read(href.constData(), static_cast<size_t>(href.size()));
        } catch (const sync::core::SyncException&) {
            continue;
        }
        const QByteArray key = QByteArray::fromStdString(reader.Key());
        if (!href.isEmpty() && key.startsWith("Projects/A/") && href.size() <= 16384 && !seen.contains(key)) {
            seen.insert(key);
            AddTo(listing, href);
        }
    }
    return listing.Finish();
}

void RequireIsLocal(const QString& path, const RemoteTree& tree) {
    using namespace ovsync::local;
    for (const QString& segment : path.split(QLatin1Char('/'))) {
        const QByteArray bytes = segment.toUtf8();
        Require(!bytes.isEmpty() && bytes != "." && bytes != "..", "no segment leads elsewhere");
        Require(!bytes.contains('\0') && bytes.size() <= 255, "a segment can be a file name");
        Require(QString::fromUtf8(bytes) == segment, "a segment is UTF-8");
        const QString lower = segment.toLower();
        Require(lower != ovsync::store::RecordDatabase::HiddenFolder(), "the records are out of reach");
        Require(!lower.endsWith(sync::dv::dvsync::SyncTempSuffix.toLower()) && !IsTemporaryName(segment),
                "what is temporary is out of reach");
    }
    Require(tree.HasFolder(FolderOf(path)), "what is listed lies in a folder that is listed");
    Require(!tree.IsRefused(path), "what is refused is not listed");
    const QString copy = PathWithNote(path, QString::fromLatin1("from the service, 2026-11-20 10.15.30"), 2);
    Require(FolderOf(copy) == FolderOf(path) && ReasonAgainst(NameOf(copy)).isEmpty(),
            "a copy can lie beside what is listed");
}

void RequireIsLocal(const RemoteTree& tree) {
    for (const QString& path : tree.AllFolders()) {
        RequireIsLocal(path, tree);
        Require(!tree.HasFile(path), "a folder is no file");
    }
    for (const QString& path : tree.AllFiles().keys()) {
        RequireIsLocal(path, tree);
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const auto manager = fuzz::MakeFolderManager();
    const std::shared_ptr<DAVPropfindResult> result = ListingOf(fuzz::BytesOf(data, size).split('\n'));

    ovsync::pass::ServiceFolder service;
    service.folder.serverPath = QString::fromLatin1("Projects/A");
    QSet<int> ignored;
    const auto folders = fuzz::FolderManagerAccess::Build(*manager, service.folder, result, ignored);
    const auto files = sync::dv::dvsync::BuildFileConfigsFromFindResult(service.folder, result);
    Require(folders->size() == result->collectionResponses.size() && files->size() == result->fileResponses.size(),
            "nothing that is listed is lost");

    RemoteTree tree(service, *folders, *files, ovsync::local::Exclusion());
    RequireIsLocal(tree);
    for (const bool tellsCaseApart : {false, true}) {
        for (const bool tellsFormsApart : {false, true}) {
            RemoteTree plain = tree;
            plain.RefuseClashes(QStringList(), tellsCaseApart, tellsFormsApart);
            RequireIsLocal(plain);
            QSet<QString> seen;
            for (const QString& path :
                 plain.AllFiles().keys() + QStringList(plain.AllFolders().begin(), plain.AllFolders().end())) {
                const QString folded = ovsync::local::FoldedPath(path, tellsCaseApart, tellsFormsApart);
                Require(!seen.contains(folded), "no two paths are one on a disk that takes them for the same");
                seen.insert(folded);
            }
        }
    }
    return 0;
}
