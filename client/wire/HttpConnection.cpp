#include "client/wire/HttpConnection.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <new>
#include <utility>
#include <vector>

#include "client/wire/HttpTransfer.h"
#include "client/wire/TransactionError.h"

namespace ovsync {
namespace wire {

namespace {

using Clock = HttpTransfer::Clock;

const std::chrono::milliseconds ProgressInterval(200);

struct MultiDeleter {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};

class OneTransaction : public ITransactionQueue {
public:
    explicit OneTransaction(HttpTransaction& transaction) : _next(&transaction) {}

    HttpTransaction* Next() override { return std::exchange(_next, nullptr); }
    void OnPerformed(HttpTransaction& /*transaction*/) override {}

private:
    HttpTransaction* _next;
};

}  // namespace

/// The transfers of a connection, and those of them that are under way.
class HttpConnection::Transfers {
public:
    Transfers(const ConnectionSettings& settings, const QAuthenticator& credentials)
        : _settings(settings), _credentials(credentials), _multi(curl_multi_init()) {
        if (!_multi) {
            throw std::bad_alloc();
        }
        _idle.push_back(std::make_unique<HttpTransfer>(settings, credentials));
        _last = _idle.back().get();
    }

    void Perform(ITransactionQueue& queue, size_t most) {
        _endedSize = 0;
        _sizeThen = 0;
        _lastProgress = Clock::now();
        try {
            while (_Begin(queue, most)) {
                _Move(queue);
            }
        } catch (...) {
            for (auto& transfer : _active) {
                transfer->BreakOff(_multi.get());
                _idle.push_back(std::move(transfer));
            }
            _active.clear();
            _TellProgress(true);
            throw;
        }
        _TellProgress(true);
    }

    const AnswerSummary& Answer() const { return _last->Answer(); }

    void Cancel() {
        _isCancelled = true;
        curl_multi_wakeup(_multi.get());
    }

private:
    using Transfer = std::unique_ptr<HttpTransfer>;
    using Cause = TransactionError::Cause;

    /// Takes what `queue` gives as far as there is room. False when nothing is under way then.
    bool _Begin(ITransactionQueue& queue, size_t most) {
        while (_active.size() < most) {
            HttpTransaction* const transaction = queue.Next();
            if (transaction == nullptr) {
                break;
            }
            if (_idle.empty()) {
                _idle.push_back(std::make_unique<HttpTransfer>(_settings, _credentials));
            }
            HttpTransfer& transfer = *_idle.back();
            _last = &transfer;
            transfer.Begin(*transaction, _multi.get());
            _active.push_back(std::move(_idle.back()));
            _idle.pop_back();
        }
        return !_active.empty();
    }

    /// Until one is over, or something is to be told or looked at.
    void _Move(ITransactionQueue& queue) {
        if (_isCancelled) {
            _Fail(_active.front(), TransactionError::Cause::Cancelled, QStringLiteral("it was cancelled"));
        }
        for (const Transfer& transfer : _active) {
            if (const CURLcode code = transfer->GoOn(); code != CURLE_OK) {
                _End(transfer.get(), code, queue);
                return;
            }
        }
        int running = 0;
        CURLMcode result = curl_multi_perform(_multi.get(), &running);
        int left = 0;
        if (const CURLMsg* const message = curl_multi_info_read(_multi.get(), &left)) {
            _End(*message, queue);
            return;
        }
        _TellProgress(false);
        int activeSockets = 0;
        if (result == CURLM_OK) {
            result = curl_multi_poll(_multi.get(), nullptr, 0, static_cast<int>(_Patience().count()), &activeSockets);
        }
        if (result != CURLM_OK) {
            _Fail(_active.front(), TransactionError::Cause::Other, QString::fromUtf8(curl_multi_strerror(result)));
        }
        if (activeSockets > 0 && _active.size() == 1) {
            _active.front()->NoteSignOfLife();
        }
        _CheckPace(queue);
    }

    /// Ends the transfer that `message` is about, and begins it again where it is to be asked elsewhere.
    void _End(const CURLMsg& message, ITransactionQueue& queue) {
        char* which = nullptr;
        curl_easy_getinfo(message.easy_handle, CURLINFO_PRIVATE, &which);
        _End(reinterpret_cast<HttpTransfer*>(which), message.data.result, queue);
    }

    void _End(HttpTransfer* ended, CURLcode code, ITransactionQueue& queue) {
        _last = ended;
        if (ended->End(code, _multi.get())) {
            ended->Begin(ended->Transaction(), _multi.get());
            return;
        }
        _endedSize += ended->ReceivedSize();
        const auto place = std::find_if(_active.begin(), _active.end(),
                                        [ended](const Transfer& transfer) { return transfer.get() == ended; });
        _idle.push_back(std::move(*place));
        _active.erase(place);
        queue.OnPerformed(ended->Transaction());
    }

    [[noreturn]] void _Fail(const Transfer& transfer, TransactionError::Cause cause, const QString& reason) {
        _last = transfer.get();
        transfer->Fail(cause, reason, _multi.get());
    }

    std::chrono::milliseconds _Patience() const {
        std::chrono::milliseconds patience = ProgressInterval;
        for (const Transfer& transfer : _active) {
            patience = std::min(patience, transfer->Wait().value_or(transfer->SilenceLimit() - transfer->Silence()));
        }
        return std::max(patience, std::chrono::milliseconds(0));
    }

    void _CheckPace(ITransactionQueue& queue) {
        for (const Transfer& transfer : _active) {
            // That it waits for the bandwidth is not the server's silence.
            if (!transfer->Wait() && transfer->Silence() >= transfer->SilenceLimit()) {
                _Fail(transfer, TransactionError::Cause::Silence,
                      QStringLiteral("nothing was received or sent for %1 s")
                          .arg(static_cast<double>(transfer->SilenceLimit().count()) / 1000.0));
            }
            if (transfer->HasEnough()) {
                _End(transfer.get(), CURLE_OPERATION_TIMEDOUT, queue);
                return;
            }
        }
        const auto now = Clock::now();
        if (now - _lastProgress < _settings.slownessLimit) {
            return;
        }
        const double seconds = std::chrono::duration<double>(now - _lastProgress).count();
        const qint64 size = _ReceivedSize();
        if (static_cast<double>(size - _sizeThen) < static_cast<double>(_settings.leastRate) * seconds) {
            _Fail(_active.front(), TransactionError::Cause::Slowness,
                  QStringLiteral("less than %1 bytes a second were received for %2 s")
                      .arg(_settings.leastRate)
                      .arg(static_cast<double>(_settings.slownessLimit.count()) / 1000.0));
        }
        _lastProgress = now;
        _sizeThen = size;
    }

    qint64 _ReceivedSize() const {
        qint64 size = _endedSize;
        for (const Transfer& transfer : _active) {
            size += transfer->ReceivedSize();
        }
        return size;
    }

    void _TellProgress(bool isOver) {
        if (_settings.onProgress) {
            _settings.onProgress(_ReceivedSize(), isOver);
        }
    }

    const ConnectionSettings _settings;
    const QAuthenticator _credentials;
    /// The connections live in it. What it is given has to be taken out before it goes.
    const std::unique_ptr<CURLM, MultiDeleter> _multi;
    std::vector<Transfer> _idle;
    std::vector<Transfer> _active;
    /// The one that ended last.
    const HttpTransfer* _last = nullptr;
    std::atomic<bool> _isCancelled{false};

    qint64 _endedSize = 0;
    /// When it was last looked at how much came, and how much that was.
    Clock::time_point _lastProgress;
    qint64 _sizeThen = 0;
};

HttpConnection::HttpConnection(const ConnectionSettings& settings, const QAuthenticator& credentials)
    : _transfers(std::make_unique<Transfers>(settings, credentials)) {}

HttpConnection::~HttpConnection() = default;

void HttpConnection::Perform(HttpTransaction& transaction) {
    OneTransaction queue(transaction);
    PerformAll(queue, 1);
}

void HttpConnection::PerformAll(ITransactionQueue& queue, int most) {
    _transfers->Perform(queue, static_cast<size_t>(most));
}

void HttpConnection::Cancel() {
    _transfers->Cancel();
}

const AnswerSummary& HttpConnection::LastAnswer() const {
    return _transfers->Answer();
}

}  // namespace wire
}  // namespace ovsync
