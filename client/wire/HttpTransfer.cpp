#include "client/wire/HttpTransfer.h"

#include <openssl/x509_vfy.h>

#include <QHostAddress>
#include <QRegularExpression>
#include <algorithm>
#include <new>

#include "client/wire/HttpStatus.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace wire {

using sync::core::SyncException;

namespace {

const long ReceiveBufferSize = 256L * 1024L;
const long SendBufferSize = 256L * 1024L;
/// A smaller one the HTTP library does not take.
const long LeastReceiveBufferSize = 1024L;
/// Sending so much in vain costs more than asking first.
const qint64 AskBeforeSending = qint64(1024) * 1024;
/// How much, and for how long, is received of a body that nobody reads, so that the connection can be kept.
const qint64 UnreadBodyLimit = qint64(64) * 1024;
const std::chrono::milliseconds UnreadBodyPatience(1000);

bool IsLoopback(const QUrl& url) {
    return url.host() == QLatin1String("localhost") || QHostAddress(url.host()).isLoopback();
}

TransactionError::Cause CauseOf(CURLcode code, long verification) {
    using Cause = TransactionError::Cause;
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
            // The name is looked at before the chain.
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

HttpTransfer::HttpTransfer(const ConnectionSettings& settings, const QAuthenticator& credentials)
    : _settings(settings), _credentials(credentials) {
    _Open();
}

void HttpTransfer::Begin(HttpTransaction& transaction, CURLM* multi) {
    _transaction = &transaction;
    _answer = AnswerSummary();
    _bodySize = 0;
    _headers.clear();
    _isHeadComplete = false;
    _isHeadHandedOn = false;
    _isForSlash = false;
    _streamed = 0;
    _isAnswerAwaited = false;
    _isDigestAsked = false;
    _refusal = nullptr;
    _heldUp.reset();
    _detail[0] = '\0';
    transaction.Forget();
    if (_hasBasic && _settings.digestHosts->ForbidBasic(transaction.Url())) {
        // It would send the password without being asked again.
        _Open();
        _hasBasic = false;
    }
    _Prepare();
    if (_refusal) {
        End(CURLE_OK, multi);
    }
    NoteSignOfLife();
    curl_multi_add_handle(multi, _easy.get());
}

bool HttpTransfer::End(CURLcode code, CURLM* multi) {
    curl_multi_remove_handle(multi, _easy.get());
    const bool isUnread = _isHeadComplete && _transaction->IsHeadEnough();
    if (code != CURLE_OK && !_refusal && !isUnread) {
        long verification = 0;
        curl_easy_getinfo(_easy.get(), CURLINFO_SSL_VERIFYRESULT, &verification);
        Fail(CauseOf(code, verification), TransportReason(code, _detail), multi);
    }
    if (!_refusal) {
        _HandOn([this] {
            _HandOnHead();
            if (!_isForSlash) {
                _transaction->OnEnd();
            }
        });
    }
    if (_refusal) {
        _transaction->Forget();
        try {
            std::rethrow_exception(_refusal);
        } catch (const SyncException& reason) {
            throw TransactionError(_transaction->Method(), _transaction->Url(), reason.Message(), _answer);
        }
    }
    return _isForSlash;
}

void HttpTransfer::Fail(TransactionError::Cause cause, const QString& reason, CURLM* multi) {
    BreakOff(multi);
    _answer.status = _Status();
    throw TransactionError(_transaction->Method(), _transaction->Url(), reason, _answer, cause);
}

void HttpTransfer::BreakOff(CURLM* multi) {
    curl_multi_remove_handle(multi, _easy.get());
    _transaction->Forget();
}

std::chrono::milliseconds HttpTransfer::Silence() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - _lastSign);
}

std::chrono::milliseconds HttpTransfer::SilenceLimit() const {
    return _isAnswerAwaited ? std::max(_settings.silenceLimit, _settings.answerLimit) : _settings.silenceLimit;
}

std::optional<std::chrono::milliseconds> HttpTransfer::Wait() const {
    if (!_heldUp) {
        return std::nullopt;
    }
    // Rounded up, so that it is not looked at again and again before.
    const auto left = _settings.bandwidth->FreeAt(*_heldUp) - Clock::now();
    return std::max(std::chrono::ceil<std::chrono::milliseconds>(left), std::chrono::milliseconds(0));
}

CURLcode HttpTransfer::GoOn() {
    if (!_heldUp || _settings.bandwidth->FreeAt(*_heldUp) > Clock::now()) {
        return CURLE_OK;
    }
    _heldUp.reset();
    NoteSignOfLife();
    return curl_easy_pause(_easy.get(), CURLPAUSE_CONT);
}

bool HttpTransfer::HasEnough() const {
    return _isHeadComplete && _transaction->IsHeadEnough() && Clock::now() - _headEnd >= UnreadBodyPatience;
}

void HttpTransfer::_Open() {
    _easy = NewCurlHandle();
    _Set(CURLOPT_PRIVATE, this);
    _Set(CURLOPT_PROTOCOLS_STR, "http,https");
    _Set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    _Set(CURLOPT_USERAGENT, "ovsync/" OVSYNC_VERSION);
    _Set(CURLOPT_PATH_AS_IS, 1L);
    _Set(CURLOPT_FOLLOWLOCATION, 0L);
    _Set(CURLOPT_NOSIGNAL, 1L);
    _Set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    // Somebody on the way forgets a connection on which nothing is said for minutes.
    _Set(CURLOPT_TCP_KEEPALIVE, 1L);
    _Set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(_settings.connectLimit.count()));
    _Set(CURLOPT_BUFFERSIZE, ReceiveBufferSize);
    _Set(CURLOPT_UPLOAD_BUFFERSIZE, SendBufferSize);
    // The HTTP library has a limit of its own, which it does not keep to when a server is quick.
    if (_settings.bandwidth) {
        _Set(CURLOPT_BUFFERSIZE, static_cast<long>(std::clamp<qint64>(_settings.bandwidth->PieceSize(),
                                                                      LeastReceiveBufferSize, ReceiveBufferSize)));
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

void HttpTransfer::_Prepare() {
    const QUrl url = _transaction->Url();
    const bool isAskedFirst =
        _transaction->StreamedBody() != nullptr && _transaction->StreamedBodySize() > AskBeforeSending;
    // Without an empty Expect the library asks before it sends any stream.
    _sentHeaders.reset(curl_slist_append(nullptr, isAskedFirst ? "Expect: 100-continue" : "Expect:"));
    for (const auto& header : _transaction->RequestHeaders()) {
        const QByteArray line = header.first + ": " + header.second;
        curl_slist* const longer = curl_slist_append(_sentHeaders.get(), line.constData());
        if (longer == nullptr) {
            throw std::bad_alloc();
        }
        (void)_sentHeaders.release();
        _sentHeaders.reset(longer);
    }
    _Set(CURLOPT_URL, url.toEncoded(QUrl::RemoveUserInfo | QUrl::RemoveFragment).constData());
    _SetBody();
    _Set(CURLOPT_CUSTOMREQUEST, _transaction->Method().constData());
    _Set(CURLOPT_HTTPHEADER, _sentHeaders.get());
    // Within one machine compressing takes longer than sending.
    const bool isCompressible = _transaction->MayComeCompressed() && !IsLoopback(url);
    _Set(CURLOPT_ACCEPT_ENCODING, isCompressible ? "gzip" : static_cast<const char*>(nullptr));
}

void HttpTransfer::_SetBody() {
    IContentSource* const stream = _transaction->StreamedBody();
    _sentBody = _transaction->RequestBody();
    _Set(CURLOPT_UPLOAD, 0L);
    if (_transaction->Method() == "HEAD") {
        _Set(CURLOPT_NOBODY, 1L);
    } else if (stream != nullptr) {
        _HandOn([stream] { stream->Restart(); });
        _Set(CURLOPT_UPLOAD, 1L);
        _Set(CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(_transaction->StreamedBodySize()));
    } else if (_sentBody.isEmpty()) {
        _Set(CURLOPT_HTTPGET, 1L);
    } else {
        _Set(CURLOPT_POST, 1L);
        _Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(_sentBody.size()));
        _Set(CURLOPT_POSTFIELDS, _sentBody.constData());
    }
}

int HttpTransfer::_Status() const {
    long status = 0;
    curl_easy_getinfo(_easy.get(), CURLINFO_RESPONSE_CODE, &status);
    return static_cast<int>(status);
}

/// Keeps what `action` throws, because it is called from C code.
template <typename Action>
void HttpTransfer::_HandOn(Action action) {
    try {
        action();
    } catch (...) {
        _refusal = std::current_exception();
    }
}

/// Not before the body or the end, because a 401 whose challenge is then answered has no body as far as this class can
/// see, and is not the answer.
void HttpTransfer::_HandOnHead() {
    if (_isHeadHandedOn) {
        return;
    }
    _isHeadHandedOn = true;
    _answer.status = _Status();
    _answer.contentType = HttpTransaction::ValueOf(_headers, "content-type");
    if (_answer.status >= 300 && _answer.status < HttpStatus::BadRequest) {
        _answer.location = HttpTransaction::ValueOf(_headers, "location");
    }
    // The HTTP library takes a connection that ends inside the head for the end of an answer without a body.
    if (!_isHeadComplete) {
        throw SyncException(QStringLiteral("the answer was cut off or damaged: the connection ended inside its head"));
    }
    if (!_transaction->IsHeadEnough()) {
        _CheckContentLength();
    }
    const bool isRefused =
        _answer.status == HttpStatus::Unauthorized || _answer.status == HttpStatus::ProxyAuthenticationRequired;
    if (_isDigestAsked && !isRefused) {
        _settings.digestHosts->Add(_transaction->Url());
    }
    _isForSlash = _IsForSlash() && _transaction->TakeSlash();
    if (!_isForSlash) {
        _transaction->OnHeaders(_answer.status, _headers);
    }
}

/// The HTTP library takes the last of several sizes, and with it a cut-off body for a whole one.
void HttpTransfer::_CheckContentLength() const {
    const QList<QByteArray> sizes = HttpTransaction::ValueOf(_headers, "content-length").split(',');
    for (const QByteArray& size : sizes) {
        if (size.trimmed() != sizes.first().trimmed()) {
            throw SyncException(QStringLiteral("the answer announces more than one size of its body"));
        }
    }
}

/// Whether the answer says that what was asked for is a collection, whose URL ends in '/'.
bool HttpTransfer::_IsForSlash() const {
    if (_answer.status != HttpStatus::MovedPermanently && _answer.status != HttpStatus::PermanentRedirect) {
        return false;
    }
    const QUrl asked = _transaction->Url();
    const QUrl named = asked.resolved(QUrl::fromEncoded(_answer.location));
    return named.host() == asked.host() && !named.hasQuery() &&
           named.path(QUrl::FullyDecoded) == asked.path(QUrl::FullyDecoded) + QLatin1Char('/');
}

void HttpTransfer::_TakeHeaderLine(const QByteArray& line) {
    if (line.startsWith("HTTP/")) {
        _headers.clear();
        _isHeadComplete = false;
        const bool isInterim = line.split(' ').value(1).startsWith('1');
        _isAnswerAwaited = _isAnswerAwaited && isInterim;
        return;
    }
    if (line.isEmpty()) {
        _isHeadComplete = true;
        _headEnd = Clock::now();
        if (_Status() == HttpStatus::Unauthorized) {
            _TakeChallenge();
        }
    }
    const int colon = line.indexOf(':');
    // What follows the end is a trailer.
    if (colon > 0 && !_isHeadComplete) {
        _headers.append({line.left(colon), line.mid(colon + 1).trimmed()});
    }
}

/// Before the HTTP library answers it. It answers with Digest wherever that is offered.
void HttpTransfer::_TakeChallenge() {
    static const QRegularExpression quoted(QStringLiteral("\"([^\"\\\\]|\\\\.)*\""));
    static const QRegularExpression digest(QStringLiteral("(^|,)\\s*digest[ \\t]"),
                                           QRegularExpression::CaseInsensitiveOption);
    QString challenges = QString::fromLatin1(HttpTransaction::ValueOf(_headers, "www-authenticate"));
    const bool hasBasic = challenges.contains(QLatin1String("basic"), Qt::CaseInsensitive);
    _isDigestAsked = digest.match(challenges.replace(quoted, QStringLiteral("\"\""))).hasMatch();
    if (_isDigestAsked || !hasBasic) {
        return;
    }
    _hasBasic = true;
    if (_settings.digestHosts->ForbidBasic(_transaction->Url())) {
        _answer.status = HttpStatus::Unauthorized;
        throw SyncException(
            QStringLiteral("the password is asked for in clear, as Basic over http, although it was taken as "
                           "Digest before: it was not sent"));
    }
}

void HttpTransfer::_TakeBody(const char* bytes, size_t size) {
    _bodySize += static_cast<qint64>(size);
    const int missing = AnswerSummary::FirstBytesLimit - _answer.firstBytes.size();
    _answer.firstBytes.append(bytes, static_cast<int>(qMin(size, static_cast<size_t>(missing))));
    if (!_refusal) {
        _HandOn([&] {
            _HandOnHead();
            if (!_isForSlash && !_transaction->IsHeadEnough()) {
                _transaction->OnBody(bytes, size);
            }
        });
    }
}

bool HttpTransfer::_MayMove(Bandwidth::Way way) {
    if (_settings.bandwidth && _settings.bandwidth->FreeAt(way) > Clock::now()) {
        _heldUp = way;
    }
    return !_heldUp;
}

void HttpTransfer::_NoteMoved(Bandwidth::Way way, size_t size) {
    if (_settings.bandwidth) {
        _settings.bandwidth->Take(way, static_cast<qint64>(size));
    }
}

size_t HttpTransfer::_OnRead(char* bytes, size_t /*unit*/, size_t size, void* self) {
    auto* const transfer = static_cast<HttpTransfer*>(self);
    if (!transfer->_MayMove(Bandwidth::Way::Send)) {
        return CURL_READFUNC_PAUSE;
    }
    if (transfer->_settings.bandwidth) {
        size = std::min(size, static_cast<size_t>(transfer->_settings.bandwidth->PieceSize()));
    }
    size_t count = CURL_READFUNC_ABORT;
    transfer->_HandOn([&] { count = transfer->_transaction->StreamedBody()->Read(bytes, size); });
    if (count <= size) {
        transfer->_NoteMoved(Bandwidth::Way::Send, count);
        transfer->_streamed += static_cast<qint64>(count);
        transfer->_isAnswerAwaited = transfer->_streamed == transfer->_transaction->StreamedBodySize();
    }
    // That it took long is not the server's silence.
    transfer->NoteSignOfLife();
    return count;
}

/// To the beginning, the only place that the HTTP library goes back to when a request has to be sent again.
int HttpTransfer::_OnRewind(void* self, curl_off_t /*offset*/, int /*origin*/) {
    auto* const transfer = static_cast<HttpTransfer*>(self);
    int result = CURL_SEEKFUNC_FAIL;
    transfer->_HandOn([&] {
        transfer->_transaction->StreamedBody()->Restart();
        transfer->_streamed = 0;
        result = CURL_SEEKFUNC_OK;
    });
    return result;
}

size_t HttpTransfer::_OnHeaderLine(char* bytes, size_t /*unit*/, size_t size, void* self) {
    auto* const transfer = static_cast<HttpTransfer*>(self);
    transfer->NoteSignOfLife();
    // A line that goes on with the one before could look like a header that the HTTP library does not see.
    const bool isContinued = size > 0 && (*bytes == ' ' || *bytes == '\t');
    if (!isContinued) {
        transfer->_HandOn([&] { transfer->_TakeHeaderLine(QByteArray(bytes, static_cast<int>(size)).trimmed()); });
    }
    return transfer->_refusal ? 0 : size;
}

size_t HttpTransfer::_OnBody(char* bytes, size_t /*unit*/, size_t size, void* self) {
    auto* const transfer = static_cast<HttpTransfer*>(self);
    if (!transfer->_MayMove(Bandwidth::Way::Receive)) {
        return CURL_WRITEFUNC_PAUSE;
    }
    transfer->NoteSignOfLife();
    transfer->_NoteMoved(Bandwidth::Way::Receive, size);
    transfer->_TakeBody(bytes, size);
    // A refused answer is received for as long as its first bytes are still to be shown.
    const bool isRefused = transfer->_refusal && transfer->_answer.firstBytes.size() == AnswerSummary::FirstBytesLimit;
    const bool isUnread = transfer->_transaction->IsHeadEnough() && transfer->_bodySize > UnreadBodyLimit;
    return isRefused || isUnread ? 0 : size;
}

}  // namespace wire
}  // namespace ovsync
