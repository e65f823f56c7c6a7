#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QVector>
#include <atomic>
#include <deque>
#include <exception>
#include <memory>
#include <optional>
#include <vector>

#include "client/sync/local/Installer.h"
#include "client/sync/pass/FileComparison.h"
#include "client/sync/pass/TransferLoop.h"
#include "client/sync/pull/Download.h"

namespace ovsync {
namespace pull {

/// Fetches files of the service, several at once, checks what came, and puts it in place. For one run. Not
/// thread-safe.
class Downloader : private pass::TransferLoop<PullOrder, Download> {
public:
    /// The arguments outlive this object.
    Downloader(const pass::PassSides& sides, local::Installer& installer, const pass::FileComparison& comparison,
               const pass::RecordMaker& maker, pass::PassReport& report)
        : TransferLoop(sides, report, FlushedAtOnce), _installer(installer), _comparison(comparison), _maker(maker) {}

    /// True when everything came. Throws Cancelled, when what is finished is in place, and what
    /// PassReport::TellFailure throws.
    [[nodiscard]] bool Run(std::deque<PullOrder> orders);

    /// The paths of the files of which the service's version is in the trash now.
    const QSet<QString>& InTrash() const { return _inTrash; }

private:
    /// What is placed costs a flush of the disk and two of the records, however many files it is.
    static constexpr int FlushedAtOnce = 256;

    qint64 SizeOf(const PullOrder& order) const override;
    void Tell(const PullOrder& order) override;
    std::unique_ptr<Download> Make(PullOrder order, const QUrl& url) override;
    void Refuse(const QString& path, const QString& reason) override;
    void Take(Transfers downloads, Pool& pool) override;
    void TakeLast(Transfers downloads) override;

    /// Records how far the large downloads are that are under way.
    void _RecordParts();
    /// What came of the file is no part any more, or of no use.
    void _ForgetPart(const QString& path);
    void _Take(const Transfers& downloads);
    /// What came is what the service describes. Joins `requests`, and `placed`, when it is to be placed.
    void _TakeContent(Download& download, QVector<local::Installer::Request>& requests, std::vector<Download*>& placed);
    /// What came is something else: the file may have changed after it was listed.
    void _TakeSurprise(const Download& download);
    void _TakePlaced(const local::Installer::Request& request, const PullOrder& order);
    /// False when the disk refused.
    bool _KeepBoth(const PullOrder& order, const QString& temporary, const QString& md5);
    bool _TakeIntoTrash(const QString& path, const QString& temporary);
    /// With the content's MD5, where that is to be compared.
    pass::LocalFileState _HereOf(const PullOrder& order) const;
    /// What else would be found out when it was fetched.
    bool _IsHereAlready(const PullOrder& order) const;
    void _TellFailure(const QString& path, const std::exception_ptr& error);

    local::Installer& _installer;
    const pass::FileComparison& _comparison;
    const pass::RecordMaker& _maker;
    /// Of a large download that is under way, and what is recorded of it.
    struct Part {
        std::shared_ptr<ReceivedPart> received;
        std::optional<store::PartialDownload> recorded;
    };

    QHash<QString, Part> _parts;
    /// What earlier passes left, by path.
    QHash<QString, store::PartialDownload> _left;
    Download::Flushing _flushing = Download::Flushing::Alone;
    bool _hasAll = true;
    QSet<QString> _inTrash;
};

}  // namespace pull
}  // namespace ovsync
