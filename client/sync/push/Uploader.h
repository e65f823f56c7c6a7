#pragma once

#include <QString>
#include <atomic>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "client/sync/pass/PassContext.h"
#include "client/sync/pass/TransferPool.h"
#include "client/sync/push/Upload.h"

namespace ovsync {
namespace push {

/// Sends files to the service, several at once, and records what it has then. Nothing there is overwritten that was not
/// known. For one run. Not thread-safe.
class Uploader {
public:
    explicit Uploader(pass::PassContext& context) : _context(context) {}

    /// Throws Cancelled, when what is sent is recorded, and what PassContext::ReportFailure throws.
    void Run(std::deque<PushOrder> orders);

private:
    using Pool = pass::TransferPool<Upload>;

    /// Lets at most one file try the conditions, and none once it is known.
    void _ChooseTrial();
    void _Start(Pool& pool);
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

    pass::PassContext& _context;
    std::deque<PushOrder> _orders;
    std::atomic<qint64> _bytes{0};
    report::SyncProgress _progress;
};

}  // namespace push
}  // namespace ovsync
