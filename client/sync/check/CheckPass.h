#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "client/sync/check/CheckFinding.h"
#include "client/sync/local/LocalSnapshot.h"
#include "client/sync/pass/RemoteTree.h"
#include "client/sync/pass/ServiceFolder.h"

namespace ovsync {
namespace check {

/// Compares a folder here with one of the service, and changes neither. Knows no records: what counts is what is there.
/// Not thread-safe.
class CheckPass {
public:
    using Teller = std::function<void(const CheckFinding&)>;

    /// The arguments outlive this object. Where the service knows no checksum, the content is compared when
    /// `downloads`, and else the size alone.
    CheckPass(const pass::ServiceFolder& service, local::ILocalTree& tree, const local::Exclusion& exclusion,
              bool downloads, const Teller& tell);

    /// Tells of every difference, in path order. Throws what the library throws, HttpException of status 404 when there
    /// is no such folder, LocalError when the folder here cannot be read, and TransactionError.
    void Run();

    /// How many files are the same, and of how many of these the size alone is known to be.
    int Same() const { return _same; }
    int SameBySizeAlone() const { return _sameBySizeAlone; }

private:
    pass::RemoteTree _List() const;
    void _TellRefused(const QVector<report::SyncEvent>& refused);
    void _Compare(const QString& path, const local::LocalSnapshot& snapshot, const pass::RemoteTree& remote);
    void _CompareFiles(const QString& path, const local::LocalEntry& here,
                       const sync::config::FileConfiguration& there);
    /// None when the file here is being written.
    std::optional<bool> _HasSameContent(const QString& path, const sync::config::FileConfiguration& there);
    bool _HasDownloadedContent(const QString& path);
    void _Tell(CheckFinding::Kind kind, const QString& path, const QString& detail = QString()) const;

    const pass::ServiceFolder& _service;
    local::ILocalTree& _tree;
    const local::Exclusion& _exclusion;
    const bool _downloads;
    const Teller& _teller;
    std::unique_ptr<content::IContentConnection> _connection;
    int _same = 0;
    int _sameBySizeAlone = 0;
};

}  // namespace check
}  // namespace ovsync
