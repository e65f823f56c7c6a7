#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "client/content/IContentConnection.h"

namespace ovsync {
namespace pass {

/// Runs transfers on threads of its own, each with a connection. `Transfer` has an operation
/// `void Run(content::IContentConnection&) noexcept`. To be used by one thread.
template <typename Transfer>
class TransferPool {
public:
    /// How many to have started and not taken back: there is always one waiting for a thread, also while as many as
    /// are taken at once are dealt with.
    static constexpr int MaxUnfinished = 1024;
    /// How long to wait for those that finish, so that progress can be told.
    static constexpr std::chrono::milliseconds ProgressInterval{200};

    /// So many are worth being taken back at once, `batch`.
    TransferPool(int threads, int batch,
                 const std::function<std::unique_ptr<content::IContentConnection>()>& newConnection)
        : _batch(batch) {
        for (int i = 0; i < threads; ++i) {
            _sessions.push_back(newConnection());
        }
        for (const auto& session : _sessions) {
            _threads.emplace_back([this, &session = *session] { _Work(session); });
        }
    }

    /// Ends what is under way.
    ~TransferPool() {
        Cancel();
        for (std::thread& thread : _threads) {
            thread.join();
        }
    }

    TransferPool(const TransferPool&) = delete;
    TransferPool& operator=(const TransferPool&) = delete;

    void Start(std::unique_ptr<Transfer> transfer) {
        {
            const std::lock_guard<std::mutex> lock(_mutex);
            ++_unfinished;
            _waiting.push_back(std::move(transfer));
        }
        _work.notify_one();
    }

    /// How many were started and not taken yet.
    int Unfinished() const { return _unfinished; }

    /// Those that are finished by now; waits for a batch, or for all, as long as `patience`.
    std::vector<std::unique_ptr<Transfer>> TakeFinished(std::chrono::milliseconds patience) {
        std::unique_lock<std::mutex> lock(_mutex);
        _result.wait_for(lock, patience, [this] { return _IsBatchFinished(); });
        std::vector<std::unique_ptr<Transfer>> finished = std::move(_finished);
        _finished.clear();
        _unfinished -= static_cast<int>(finished.size());
        return finished;
    }

    /// Transfers that have not begun never will, and those that have end with an error.
    void Cancel() {
        {
            const std::lock_guard<std::mutex> lock(_mutex);
            _isCancelled = true;
            _unfinished -= static_cast<int>(_waiting.size());
            _waiting.clear();
        }
        _work.notify_all();
        for (const auto& session : _sessions) {
            session->Cancel();
        }
    }

private:
    void _Work(content::IContentConnection& session) {
        std::unique_lock<std::mutex> lock(_mutex);
        for (;;) {
            _work.wait(lock, [this] { return _isCancelled || !_waiting.empty(); });
            if (_isCancelled) {
                return;
            }
            std::unique_ptr<Transfer> transfer = std::move(_waiting.front());
            _waiting.pop_front();
            lock.unlock();
            transfer->Run(session);
            lock.lock();
            _finished.push_back(std::move(transfer));
            if (_IsBatchFinished()) {
                _result.notify_one();
            }
        }
    }

    bool _IsBatchFinished() const { return static_cast<int>(_finished.size()) >= std::min(_batch, _unfinished); }

    const int _batch;
    std::vector<std::unique_ptr<content::IContentConnection>> _sessions;
    std::mutex _mutex;
    std::condition_variable _work;
    std::condition_variable _result;
    std::deque<std::unique_ptr<Transfer>> _waiting;
    std::vector<std::unique_ptr<Transfer>> _finished;
    int _unfinished = 0;
    bool _isCancelled = false;
    std::vector<std::thread> _threads;
};

}  // namespace pass
}  // namespace ovsync
