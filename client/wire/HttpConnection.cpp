#include "client/wire/HttpConnection.h"

#include <openssl/x509_vfy.h>

#include <QHostAddress>
#include <QRegularExpression>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>

#include "client/wire/CurlHandle.h"
#include "client/wire/HttpStatus.h"
#include "client/wire/TransactionError.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace wire {

namespace {

using Clock = std::chrono::steady_clock;
using Cause = TransactionError::Cause;

const long ReceiveBufferSize = 256L * 1024L;
const long SendBufferSize = 256L * 1024L;
/// Sending so much in vain costs more than asking first.
const qint64 AskBeforeSending = qint64(1024) * 1024;
const std::chrono::milliseconds ProgressInterval(200);

struct MultiDeleter {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};

bool IsLoopback(const QUrl& url) {
    return url.host() == QLatin1String("localhost") || QHostAddress(url.host()).isLoopback();
}

Cause CauseOf(CURLcode code, long verification) {
    switch (code) {
        case CURLE_COULDNT_RESOLVE_HOST:
            return Cause::UnknownHost;
        case CURLE_COULDNT_RESOLVE_PROXY:
            return Cause::UnknownProxy;
        case CURLE_COULDNT_CONNECT:
        case CURLE_PROXY:
            return Cause::NoConnection;
        case CURLE_OPERATION_TIMEDOUT:
            return Cause::ConnectTimeout;
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_UNSUPPORTED_PROTOCOL:
        case CURLE_WEIRD_SERVER_REPLY:
            return Cause::WrongProtocol;
        case CURLE_PEER_FAILED_VERIFICATION:
            // The chain was fine then, and is not looked at again.
            if (verification == X509_V_OK || verification == X509_V_ERR_UNSPECIFIED) {
                return Cause::WrongName;
            }
            return verification == X509_V_ERR_CERT_HAS_EXPIRED ? Cause::Expired : Cause::NotTrusted;
        case CURLE_SSL_CACERT_BADFILE:
            return Cause::NoCertificates;
        case CURLE_GOT_NOTHING:
        case CURLE_PARTIAL_FILE:
        case CURLE_SEND_ERROR:
        case CURLE_RECV_ERROR:
        case CURLE_BAD_CONTENT_ENCODING:
            return Cause::CutOff;
        default:
            return Cause::Other;
    }
}

QString TransportReason(CURLcode code, const char* detail) {
    const char* const text = *detail != '\0' ? detail : curl_easy_strerror(code);
    QString message = QString::fromUtf8(text);
    switch (code) {
        case CURLE_PEER_FAILED_VERIFICATION:
            return QStringLiteral("the server's certificate is not trusted: ") + message;
        case CURLE_PARTIAL_FILE:
        case CURLE_RECV_ERROR:
        case CURLE_BAD_CONTENT_ENCODING:
            return QStringLiteral("the answer was cut off or damaged: ") + message;
        default:
            return message;
    }
}

}  // namespace

/// One handle of the HTTP library with its connections, and the transaction that it is busy with.
class HttpConnection::Transfer {
public:
    Transfer(const ConnectionSettings& settings, const QAuthenticator& credentials)
        : _settings(settings), _credentials(credentials) {
        _Open();
        _multi.reset(curl_multi_init());
        if (!_multi) {
            throw std::bad_alloc();
        }
    }

    void Perform(HttpTransaction& transaction) {
        _transaction = &transaction;
        _answer = AnswerSummary();
        _bodySize = 0;
        _headers.clear();
        _headersEnded = false;
        _headersHandedOn = false;
        _isDigestAsked = false;
        _refusal = nullptr;
        _detail[0] = '\0';
        _cause = Cause::Other;
        transaction.Forget();
        if (_knowsBasic && _settings.digestHosts->ForbidBasic(transaction.Url())) {
            // It would send the password without being asked again.
            _Open();
            _knowsBasic = false;
        }

        const QString failure = _Send();
        if (failure.isEmpty() && !_refusal) {
            _HandOn([&] {
                _HandOnHeaders();
                transaction.OnEnd();
            });
        }
        if (!failure.isEmpty() || _refusal) {
            transaction.Forget();
        }
        if (_refusal) {
            _ThrowRefusal();
        }
        if (!failure.isEmpty()) {
            _answer.status = _Status();
            throw TransactionError(transaction.Method(), transaction.Url(), failure, _answer, _cause);
        }
    }

    const AnswerSummary& Answer() const { return _answer; }

    void Cancel() {
        _isCancelled = true;
        curl_multi_wakeup(_multi.get());
    }

private:
    void _Open() {
        _easy = NewCurlHandle();
        _Set(CURLOPT_PROTOCOLS_STR, "http,https");
        _Set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
        _Set(CURLOPT_USERAGENT, "ovsync/" OVSYNC_VERSION);
        _Set(CURLOPT_PATH_AS_IS, 1L);
        _Set(CURLOPT_FOLLOWLOCATION, 0L);
        _Set(CURLOPT_NOSIGNAL, 1L);
        _Set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
        _Set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(_settings.connectLimit.count()));
        _Set(CURLOPT_BUFFERSIZE, ReceiveBufferSize);
        _Set(CURLOPT_UPLOAD_BUFFERSIZE, SendBufferSize);
        if (_settings.bandwidth > 0) {
            _Set(CURLOPT_MAX_RECV_SPEED_LARGE, static_cast<curl_off_t>(_settings.bandwidth));
            _Set(CURLOPT_MAX_SEND_SPEED_LARGE, static_cast<curl_off_t>(_settings.bandwidth));
            // A larger piece would be waited for, without a sign of life.
            _Set(CURLOPT_BUFFERSIZE, static_cast<long>(std::clamp<qint64>(_settings.bandwidth, CURL_MAX_WRITE_SIZE / 16,
                                                                          ReceiveBufferSize)));
            _Set(CURLOPT_UPLOAD_BUFFERSIZE,
                 static_cast<long>(std::clamp<qint64>(_settings.bandwidth, CURL_MAX_WRITE_SIZE, SendBufferSize)));
        }
        _Set(CURLOPT_SSL_VERIFYPEER, 1L);
        _Set(CURLOPT_SSL_VERIFYHOST, 2L);
        if (!_settings.caFile.isEmpty()) {
            _Set(CURLOPT_CAINFO, _settings.caFile.toUtf8().constData());
            _Set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
        }
        _Set(CURLOPT_HTTPAUTH, CURLAUTH_BASIC | CURLAUTH_DIGEST);
        _Set(CURLOPT_PROXYAUTH, CURLAUTH_BASIC | CURLAUTH_DIGEST);
        if (!_credentials.isNull()) {
            _Set(CURLOPT_USERNAME, _credentials.user().toUtf8().constData());
            _Set(CURLOPT_PASSWORD, _credentials.password().toUtf8().constData());
        }
        _Set(CURLOPT_ERRORBUFFER, _detail);
        _Set(CURLOPT_HEADERFUNCTION, &_OnHeaderLine);
        _Set(CURLOPT_HEADERDATA, this);
        _Set(CURLOPT_WRITEFUNCTION, &_OnBody);
        _Set(CURLOPT_WRITEDATA, this);
        _Set(CURLOPT_READFUNCTION, &_OnRead);
        _Set(CURLOPT_READDATA, this);
        _Set(CURLOPT_SEEKFUNCTION, &_OnRewind);
        _Set(CURLOPT_SEEKDATA, this);
    }

    template <typename Value>
    void _Set(CURLoption option, Value value) {
        SetCurlOption(_easy, option, value);
    }

    /// Returns what went wrong on the way; empty when nothing did.
    QString _Send() {
        const QUrl url = _transaction->Url();
        const QByteArray method = _transaction->Method();
        const QByteArray body = _transaction->RequestBody();
        ContentSource* const stream = _transaction->StreamedBody();
        const bool asksFirst = stream != nullptr && _transaction->StreamedBodySize() > AskBeforeSending;
        // Without an empty Expect the library asks before it sends any stream.
        CurlList headers(curl_slist_append(nullptr, asksFirst ? "Expect: 100-continue" : "Expect:"));
        for (const auto& header : _transaction->RequestHeaders()) {
            const QByteArray line = header.first + ": " + header.second;
            curl_slist* const longer = curl_slist_append(headers.get(), line.constData());
            if (longer == nullptr) {
                throw std::bad_alloc();
            }
            (void)headers.release();
            headers.reset(longer);
        }
        _Set(CURLOPT_URL, url.toEncoded(QUrl::RemoveUserInfo | QUrl::RemoveFragment).constData());
        _Set(CURLOPT_UPLOAD, 0L);
        if (method == "HEAD") {
            _Set(CURLOPT_NOBODY, 1L);
        } else if (stream != nullptr) {
            _HandOn([stream] { stream->Restart(); });
            if (_refusal) {
                return QString();
            }
            _Set(CURLOPT_UPLOAD, 1L);
            _Set(CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(_transaction->StreamedBodySize()));
        } else if (body.isEmpty()) {
            _Set(CURLOPT_HTTPGET, 1L);
        } else {
            _Set(CURLOPT_POST, 1L);
            _Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
            _Set(CURLOPT_POSTFIELDS, body.constData());
        }
        _Set(CURLOPT_CUSTOMREQUEST, method.constData());
        _Set(CURLOPT_HTTPHEADER, headers.get());
        // Within one machine compressing takes longer than sending.
        const bool mayComeCompressed = _transaction->MayComeCompressed() && !IsLoopback(url);
        _Set(CURLOPT_ACCEPT_ENCODING, mayComeCompressed ? "gzip" : static_cast<const char*>(nullptr));

        curl_multi_add_handle(_multi.get(), _easy.get());
        QString failure = _Run();
        curl_multi_remove_handle(_multi.get(), _easy.get());
        if (_settings.onProgress) {
            _settings.onProgress(_bodySize, true);
        }
        return failure;
    }

    QString _Run() {
        _lastSign = Clock::now();
        _lastProgress = _lastSign;
        _sizeThen = 0;
        int running = 0;
        while (!_isCancelled) {
            CURLMcode result = curl_multi_perform(_multi.get(), &running);
            if (result == CURLM_OK && running == 0) {
                return _Outcome();
            }
            const auto silence = [this] {
                return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - _lastSign);
            };
            int active = 0;
            if (result == CURLM_OK) {
                auto patience = std::max(_settings.silenceLimit - silence(), std::chrono::milliseconds(0));
                if (_settings.onProgress) {
                    _settings.onProgress(_bodySize, false);
                    patience = std::min(patience, ProgressInterval);
                }
                result = curl_multi_poll(_multi.get(), nullptr, 0, static_cast<int>(patience.count()), &active);
            }
            if (result != CURLM_OK) {
                return QString::fromUtf8(curl_multi_strerror(result));
            }
            if (active > 0) {
                _lastSign = Clock::now();
            } else if (silence() >= _settings.silenceLimit) {
                _cause = Cause::Silence;
                return QStringLiteral("nothing was received or sent for %1 s")
                    .arg(static_cast<double>(_settings.silenceLimit.count()) / 1000.0);
            }
            if (_IsTooSlow()) {
                _cause = Cause::Slowness;
                return QStringLiteral("less than %1 bytes a second were received for %2 s")
                    .arg(_settings.leastRate)
                    .arg(static_cast<double>(_settings.slownessLimit.count()) / 1000.0);
            }
        }
        _cause = Cause::Cancelled;
        return QStringLiteral("it was cancelled");
    }

    bool _IsTooSlow() {
        const auto now = Clock::now();
        if (now - _lastProgress < _settings.slownessLimit) {
            return false;
        }
        const double seconds = std::chrono::duration<double>(now - _lastProgress).count();
        const bool isTooSlow =
            static_cast<double>(_bodySize - _sizeThen) < static_cast<double>(_settings.leastRate) * seconds;
        _lastProgress = now;
        _sizeThen = _bodySize;
        return isTooSlow;
    }

    QString _Outcome() {
        int left = 0;
        const CURLMsg* const message = curl_multi_info_read(_multi.get(), &left);
        if (message == nullptr) {
            return QStringLiteral("the HTTP library ended without a result");
        }
        const CURLcode code = message->data.result;
        long verification = 0;
        curl_easy_getinfo(_easy.get(), CURLINFO_SSL_VERIFYRESULT, &verification);
        _cause = CauseOf(code, verification);
        return code == CURLE_OK ? QString() : TransportReason(code, _detail);
    }

    int _Status() const {
        long status = 0;
        curl_easy_getinfo(_easy.get(), CURLINFO_RESPONSE_CODE, &status);
        return static_cast<int>(status);
    }

    /// Keeps what `action` throws, because it is called from C code.
    template <typename Action>
    void _HandOn(Action action) {
        try {
            action();
        } catch (...) {
            _refusal = std::current_exception();
        }
    }

    [[noreturn]] void _ThrowRefusal() {
        try {
            std::rethrow_exception(_refusal);
        } catch (const sync::core::SyncException& reason) {
            throw TransactionError(_transaction->Method(), _transaction->Url(), reason.Message(), _answer);
        }
    }

    /// Not before the body or the end, because a 401 whose challenge is then answered has no body as far as this class
    /// can see, and is not the answer.
    void _HandOnHeaders() {
        if (_headersHandedOn) {
            return;
        }
        _headersHandedOn = true;
        _answer.status = _Status();
        _answer.contentType = HttpTransaction::ValueOf(_headers, "content-type");
        // The HTTP library takes a connection that ends inside the head for the end of an answer without a body.
        if (!_headersEnded) {
            throw sync::core::SyncException(
                QStringLiteral("the answer was cut off or damaged: the connection ended inside its head"));
        }
        _CheckContentLength();
        const bool isRefused =
            _answer.status == HttpStatus::Unauthorized || _answer.status == HttpStatus::ProxyAuthenticationRequired;
        if (_isDigestAsked && !isRefused) {
            _settings.digestHosts->Add(_transaction->Url());
        }
        _transaction->OnHeaders(_answer.status, _headers);
    }

    /// The HTTP library takes the last of several sizes, and with it a cut-off body for a whole one.
    void _CheckContentLength() const {
        const QList<QByteArray> sizes = HttpTransaction::ValueOf(_headers, "content-length").split(',');
        for (const QByteArray& size : sizes) {
            if (size.trimmed() != sizes.first().trimmed()) {
                throw sync::core::SyncException(QStringLiteral("the answer announces more than one size of its body"));
            }
        }
    }

    void _TakeHeaderLine(const QByteArray& line) {
        if (line.startsWith("HTTP/")) {
            _headers.clear();
            _headersEnded = false;
            return;
        }
        if (line.isEmpty()) {
            _headersEnded = true;
            if (_Status() == HttpStatus::Unauthorized) {
                _TakeChallenge();
            }
        }
        const int colon = line.indexOf(':');
        // What follows the end is a trailer.
        if (colon > 0 && !_headersEnded) {
            _headers.append({line.left(colon), line.mid(colon + 1).trimmed()});
        }
    }

    /// Before the HTTP library answers it. It answers with Digest wherever that is offered.
    void _TakeChallenge() {
        static const QRegularExpression quoted(QStringLiteral("\"([^\"\\\\]|\\\\.)*\""));
        static const QRegularExpression digest(QStringLiteral("(^|,)\\s*digest[ \\t]"),
                                               QRegularExpression::CaseInsensitiveOption);
        QString challenges = QString::fromLatin1(HttpTransaction::ValueOf(_headers, "www-authenticate"));
        const bool mayBeBasic = challenges.contains(QLatin1String("basic"), Qt::CaseInsensitive);
        _isDigestAsked = digest.match(challenges.replace(quoted, QStringLiteral("\"\""))).hasMatch();
        if (_isDigestAsked || !mayBeBasic) {
            return;
        }
        _knowsBasic = true;
        if (_settings.digestHosts->ForbidBasic(_transaction->Url())) {
            _answer.status = HttpStatus::Unauthorized;
            throw sync::core::SyncException(
                QStringLiteral("the password is asked for in clear, as Basic over http, although it was taken as "
                               "Digest before: it was not sent"));
        }
    }

    void _TakeBody(const char* bytes, size_t size) {
        _bodySize += static_cast<qint64>(size);
        const int missing = AnswerSummary::FirstBytesLimit - _answer.firstBytes.size();
        _answer.firstBytes.append(bytes, static_cast<int>(qMin(size, static_cast<size_t>(missing))));
        if (!_refusal) {
            _HandOn([&] {
                _HandOnHeaders();
                _transaction->OnBody(bytes, size);
            });
        }
    }

    static size_t _OnRead(char* bytes, size_t /*unit*/, size_t size, void* self) {
        auto* const transfer = static_cast<Transfer*>(self);
        size_t count = CURL_READFUNC_ABORT;
        transfer->_HandOn([&] { count = transfer->_transaction->StreamedBody()->Read(bytes, size); });
        // That it took long is not the server's silence.
        transfer->_lastSign = Clock::now();
        return count;
    }

    /// To the beginning, the only place that the HTTP library goes back to when a request has to be sent again.
    static int _OnRewind(void* self, curl_off_t /*offset*/, int /*origin*/) {
        auto* const transfer = static_cast<Transfer*>(self);
        int result = CURL_SEEKFUNC_FAIL;
        transfer->_HandOn([&] {
            transfer->_transaction->StreamedBody()->Restart();
            result = CURL_SEEKFUNC_OK;
        });
        return result;
    }

    static size_t _OnHeaderLine(char* bytes, size_t /*unit*/, size_t size, void* self) {
        auto* const transfer = static_cast<Transfer*>(self);
        // A line that goes on with the one before could look like a header that the HTTP library does not see.
        const bool goesOn = size > 0 && (*bytes == ' ' || *bytes == '\t');
        if (!goesOn) {
            transfer->_HandOn([&] { transfer->_TakeHeaderLine(QByteArray(bytes, static_cast<int>(size)).trimmed()); });
        }
        return transfer->_refusal ? 0 : size;
    }

    static size_t _OnBody(char* bytes, size_t /*unit*/, size_t size, void* self) {
        auto* const transfer = static_cast<Transfer*>(self);
        transfer->_TakeBody(bytes, size);
        // A refused answer is received for as long as its first bytes are still to be shown.
        const bool isOver = transfer->_refusal && transfer->_answer.firstBytes.size() == AnswerSummary::FirstBytesLimit;
        return isOver ? 0 : size;
    }

    const ConnectionSettings _settings;
    const QAuthenticator _credentials;
    // The connections live in the second, which the first has to be taken out of before it goes.
    std::unique_ptr<CURLM, MultiDeleter> _multi;
    CurlHandle _easy;
    char _detail[CURL_ERROR_SIZE] = {};
    std::atomic<bool> _isCancelled{false};

    Clock::time_point _lastSign;
    /// When it was last looked at how much came, and how much that was.
    Clock::time_point _lastProgress;
    qint64 _sizeThen = 0;
    HttpTransaction* _transaction = nullptr;
    AnswerSummary _answer;
    qint64 _bodySize = 0;
    HttpTransaction::Headers _headers;
    bool _headersEnded = false;
    bool _headersHandedOn = false;
    bool _isDigestAsked = false;
    /// Whether the HTTP library may have answered somebody with Basic, and would do so again without being asked.
    bool _knowsBasic = false;
    std::exception_ptr _refusal;
    /// Why the transaction failed on the way.
    Cause _cause = Cause::Other;
};

HttpConnection::HttpConnection(const ConnectionSettings& settings, const QAuthenticator& credentials)
    : _transfer(std::make_unique<Transfer>(settings, credentials)) {}

HttpConnection::~HttpConnection() = default;

void HttpConnection::Perform(HttpTransaction& transaction) {
    _transfer->Perform(transaction);
}

void HttpConnection::Cancel() {
    _transfer->Cancel();
}

const AnswerSummary& HttpConnection::LastAnswer() const {
    return _transfer->Answer();
}

}  // namespace wire
}  // namespace ovsync
