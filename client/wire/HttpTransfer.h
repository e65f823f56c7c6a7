#pragma once

#include <curl/curl.h>

#include <QAuthenticator>
#include <QString>
#include <chrono>
#include <exception>
#include <optional>

#include "client/wire/AnswerSummary.h"
#include "client/wire/ConnectionSettings.h"
#include "client/wire/CurlHandle.h"
#include "client/wire/HttpTransaction.h"
#include "client/wire/TransactionError.h"

namespace ovsync {
namespace wire {

/// One handle of the HTTP library, and the transaction that it is busy with: what a HttpConnection has one or several
/// of. Not thread-safe.
class HttpTransfer {
public:
    using Clock = std::chrono::steady_clock;

    HttpTransfer(const ConnectionSettings& settings, const QAuthenticator& credentials);
    /// Its address is known to the HTTP library.
    HttpTransfer(const HttpTransfer&) = delete;
    HttpTransfer& operator=(const HttpTransfer&) = delete;

    /// Gives the request of `transaction` to `multi`, which from now on moves it.
    void Begin(HttpTransaction& transaction, CURLM* multi);

    /// After the HTTP library ended with `code`, takes the transfer out of `multi` and ends the transaction. True when
    /// it is to begin again: the server wants the same from another URL. Throws TransactionError when what came is no
    /// answer to it.
    bool End(CURLcode code, CURLM* multi);

    /// Ends a transaction that is under way, because of `reason`, and throws that as a TransactionError.
    [[noreturn]] void Fail(TransactionError::Cause cause, const QString& reason, CURLM* multi);

    /// Ends a transaction that is under way without a word.
    void BreakOff(CURLM* multi);

    HttpTransaction& Transaction() const { return *_transaction; }
    const AnswerSummary& Answer() const { return _answer; }
    /// Of the body, uncompressed.
    qint64 ReceivedSize() const { return _bodySize; }

    /// For how long nothing was heard.
    std::chrono::milliseconds Silence() const;
    /// For how long that may be so.
    std::chrono::milliseconds SilenceLimit() const;
    void NoteSignOfLife() { _lastSign = Clock::now(); }
    /// For how long it is held up by the bandwidth; none when it is not.
    std::optional<std::chrono::milliseconds> Wait() const;
    /// Has it go on when it was held up and need not be any longer. What it returns ends it, unless it is CURLE_OK.
    CURLcode GoOn();
    /// Whether all that counts has come, and what is left was waited for long enough.
    bool HasEnough() const;

private:
    void _Open();
    template <typename Value>
    void _Set(CURLoption option, Value value) {
        SetCurlOption(_easy, option, value);
    }
    void _Prepare();
    void _SetBody();
    int _Status() const;
    template <typename Action>
    void _HandOn(Action action);
    void _HandOnHead();
    void _CheckContentLength() const;
    bool _IsForSlash() const;
    void _TakeHeaderLine(const QByteArray& line);
    void _TakeChallenge();
    void _TakeBody(const char* bytes, size_t size);
    /// Holds it up when the bandwidth is used up.
    bool _MayMove(Bandwidth::Way way);
    void _NoteMoved(Bandwidth::Way way, size_t size);

    static size_t _OnRead(char* bytes, size_t unit, size_t size, void* self);
    static int _OnRewind(void* self, curl_off_t offset, int origin);
    static size_t _OnHeaderLine(char* bytes, size_t unit, size_t size, void* self);
    static size_t _OnBody(char* bytes, size_t unit, size_t size, void* self);

    const ConnectionSettings _settings;
    const QAuthenticator _credentials;
    CurlHandle _easy;
    char _detail[CURL_ERROR_SIZE] = {};
    /// What the HTTP library reads while it sends.
    CurlList _sentHeaders;
    QByteArray _sentBody;

    Clock::time_point _lastSign;
    Clock::time_point _headEnd;
    HttpTransaction* _transaction = nullptr;
    AnswerSummary _answer;
    qint64 _bodySize = 0;
    HttpTransaction::Headers _headers;
    bool _isHeadComplete = false;
    bool _isHeadHandedOn = false;
    bool _isForSlash = false;
    qint64 _streamed = 0;
    /// Whether a streamed body is sent to its end and the answer has not begun.
    bool _isAnswerAwaited = false;
    bool _isDigestAsked = false;
    /// Whether the HTTP library may have answered somebody with Basic, and would do so again without being asked.
    bool _hasBasic = false;
    std::exception_ptr _refusal;
    /// What it is held up with.
    std::optional<Bandwidth::Way> _heldUp;
};

}  // namespace wire
}  // namespace ovsync
