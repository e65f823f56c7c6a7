#pragma once

#include <QString>
#include <QUrl>
#include <atomic>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

#include "client/sync/pass/PassReport.h"
#include "client/sync/pass/PassSides.h"
#include "client/sync/pass/TransferPool.h"
#include "client/sync/report/Cancelled.h"

namespace ovsync {
namespace pass {

/// Starts transfers, several at once, waits for them and tells how far they are; in a dry run only tells of them. What
/// they are and what becomes of them is for a subclass to say. For one run. Not thread-safe.
template <typename Order, typename Transfer>
class TransferLoop {
protected:
    using Pool = TransferPool<Transfer>;
    using Transfers = std::vector<std::unique_ptr<Transfer>>;

    /// Finished ones are taken as soon as there are `batch` of them, and several times a second. The other arguments
    /// outlive this object.
    TransferLoop(const PassSides& sides, PassReport& report, int batch)
        : _sides(sides), _report(report), _isDryRun(sides.options.isDryRun), _batch(batch) {}
    virtual ~TransferLoop() = default;
    TransferLoop(const TransferLoop&) = delete;
    TransferLoop& operator=(const TransferLoop&) = delete;

    /// Throws Cancelled when the pass is stopped, and what the operations below throw.
    void RunAll(std::deque<Order> orders) {
        if (_isDryRun) {
            for (const Order& order : orders) {
                Tell(order);
            }
            return;
        }
        if (orders.empty()) {
            return;
        }
        _orders = std::move(orders);
        _progress.allFiles = static_cast<int>(_orders.size());
        for (const Order& order : _orders) {
            _progress.allBytes += SizeOf(order);
        }
        Pool pool(qMin(_sides.options.transfers, _progress.allFiles), _batch, _sides.service.newConnection);
        while (!_orders.empty() || pool.Unfinished() > 0) {
            while (!_orders.empty() && pool.Unfinished() < Pool::MaxUnfinished) {
                _Start(pool);
            }
            Transfers finished = pool.TakeFinished(Pool::ProgressInterval);
            if (*_sides.options.isStopped) {
                TakeLast(_Drained(std::move(finished), pool));
                throw report::Cancelled();
            }
            Take(std::move(finished), pool);
            _progress.doneBytes = _bytes;
            _report.TellProgress(_progress);
        }
    }

    /// As it is known beforehand, in bytes.
    virtual qint64 SizeOf(const Order& order) const = 0;
    /// What a dry run says of it.
    virtual void Tell(const Order& order) = 0;
    virtual std::unique_ptr<Transfer> Make(Order order, const QUrl& url) = 0;
    virtual void Refuse(const QString& path, const QString& reason) = 0;
    /// May start one of them again.
    virtual void Take(Transfers finished, Pool& pool) = 0;
    /// Of a pass that was stopped.
    virtual void TakeLast(Transfers finished) = 0;

    const PassSides& _sides;
    PassReport& _report;
    const bool _isDryRun;
    /// Those to come, to which Take may add.
    std::deque<Order> _orders;
    /// What was transferred.
    std::atomic<qint64> _bytes{0};
    report::SyncProgress _progress;

private:
    void _Start(Pool& pool) {
        Order order = std::move(_orders.front());
        _orders.pop_front();
        const QUrl url = _sides.service.UrlAt(order.path);
        if (url.isEmpty()) {
            Refuse(order.path, QStringLiteral("there is no URL for such a path"));
        } else {
            pool.Start(Make(std::move(order), url));
        }
    }

    static Transfers _Drained(Transfers finished, Pool& pool) {
        pool.Cancel();
        while (pool.Unfinished() > 0) {
            for (std::unique_ptr<Transfer>& transfer : pool.TakeFinished(Pool::ProgressInterval)) {
                finished.push_back(std::move(transfer));
            }
        }
        return finished;
    }

    const int _batch;
};

}  // namespace pass
}  // namespace ovsync
