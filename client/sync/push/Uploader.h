#pragma once

#include <QString>
#include <atomic>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "client/sync/pass/TransferLoop.h"
#include "client/sync/push/Upload.h"

namespace ovsync {
namespace push {

/// Sends files to the service, several at once, and records what it has then. Nothing there is overwritten that was not
/// known. For one run. Not thread-safe.
class Uploader : private pass::TransferLoop<PushOrder, Upload> {
public:
    explicit Uploader(pass::PassContext& context) : TransferLoop(context) {}

    /// Throws Cancelled, when what is sent is recorded, and what PassContext::ReportFailure throws.
    void Run(std::deque<PushOrder> orders);

private:
    qint64 SizeOf(const PushOrder& order) const override;
    std::unique_ptr<Upload> Make(PushOrder order, const QUrl& url) override;
    void Refuse(const QString& path, const QString& reason) override;
    void Take(Transfers uploads, Pool& pool) override;
    void TakeLast(Transfers uploads) override;

    /// Lets at most one file try the conditions, and none once it is known.
    void _ChooseTrial(std::deque<PushOrder>& orders);
    void _Take(std::unique_ptr<Upload> upload, Pool& pool);
    /// Whether what is to be replaced is still what the listing had.
    bool _IsStillKnown(const Upload& upload);
    bool _IsStillThere(const PushOrder& order);
    /// Whether the file's date, in place of an entity tag, can tell what somebody else changes meanwhile.
    bool _TellsByDate(const PushOrder& order);
    void _TakeSent(const Upload& upload);
    /// Whether the service says that what it has now has `size` bytes.
    bool _HasSize(const Upload& upload, qint64 size);
    /// None when the service has something else than what was sent.
    std::optional<store::FileRecord> _RecordOf(const Upload& upload);
};

}  // namespace push
}  // namespace ovsync
