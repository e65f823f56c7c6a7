#pragma once

#include <QDateTime>
#include <QString>

#include "client/sync/pass/FileState.h"
#include "client/sync/pass/ServiceFolder.h"

namespace ovsync {
namespace pass {

/// Makes the records of files that one listing has. Writes nothing. To be used on the pass's thread.
class RecordMaker {
public:
    /// `service` outlives this object. `listedAt` is the service's time of the listing, invalid when it told none.
    RecordMaker(const ServiceFolder& service, const QDateTime& listedAt) : _service(service), _listedAt(listedAt) {}

    const QDateTime& ListedAt() const { return _listedAt; }

    /// A record of `remote`, brought up to date by the library. Its local part is left open. When the next pass could
    /// not tell another version from it, the date is left out, and so the content is compared then.
    store::FileRecord Make(const QString& path, const sync::config::FileConfiguration& remote) const;
    /// The record that says that the file here, whose MD5 is known, has the content of the service's file.
    store::FileRecord Make(const QString& path, const sync::config::FileConfiguration& remote,
                           const LocalFileState& here) const;

    /// Whether `remote` may look the same after another change: it is known by its date alone, whose second was not
    /// over when it was listed.
    bool IsInDoubt(const sync::config::FileConfiguration& remote) const;

private:
    const ServiceFolder& _service;
    const QDateTime _listedAt;
};

}  // namespace pass
}  // namespace ovsync
