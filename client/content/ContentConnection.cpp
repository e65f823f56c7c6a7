#include "client/content/ContentConnection.h"

#include <utility>

#include "client/content/LockQuery.h"
#include "client/content/LockRequest.h"
#include "client/content/ResourceChange.h"
#include "client/wire/AnswerError.h"
#include "client/wire/AttributeNames.h"
#include "client/wire/DateReader.h"
#include "client/wire/HttpStatus.h"
#include "client/wire/TransactionError.h"

namespace ovsync {
namespace content {

using wire::ConnectionSettings;
using wire::HttpDate;
using wire::HttpStatus;
using wire::HttpTransaction;
using wire::IContentSource;
using wire::TransactionError;

namespace {

/// In seconds. The server's own date, that of storing, is as good for what was changed just before that.
const qint64 LeastAgeOfToldDate = 60;

/// How long somebody who stops waits for the end of a lock.
const std::chrono::seconds LastPatience(1);

bool IsToBeKept(const QDateTime& date) {
    return date.isValid() && qAbs(date.secsTo(QDateTime::currentDateTimeUtc())) > LeastAgeOfToldDate;
}

/// Whether the answer to UNLOCK says that there is no such lock any more.
bool IsUnlocked(int status) {
    return status < HttpStatus::InternalServerError && status != HttpStatus::Forbidden &&
           !HttpStatus::IsRedirection(status) && (status == HttpStatus::NotFound || !HttpStatus::IsPassing(status));
}

/// What a request says that is only to be done while the file is the version `known`.
HttpTransaction::Headers UnchangedCondition(const QUrl& url, const ContentVersion& known) {
    if (known.entityTag.isEmpty() && !known.lastModified.isValid()) {
        throw sync::core::SyncException(
            QStringLiteral("%1 cannot be changed only if it is unchanged: the server gave neither an entity tag nor a "
                           "date for it")
                .arg(url.toString(QUrl::FullyEncoded | QUrl::RemoveUserInfo)));
    }
    return {known.entityTag.isEmpty() ? qMakePair(QByteArray("If-Unmodified-Since"), HttpDate(known.lastModified))
                                      : qMakePair(QByteArray("If-Match"), known.entityTag)};
}

}  // namespace

ContentConnection::ContentConnection(const ConnectionSettings& settings, const QAuthenticator& credentials)
    : _settings(settings), _credentials(credentials), _session(settings, credentials) {}

std::optional<ContentVersion> ContentConnection::Look(const QUrl& url) {
    ContentTransaction query("HEAD", url);
    _Perform(query);
    switch (query.StatusCode()) {
        case HttpStatus::Ok:
            return query.Version();
        case HttpStatus::NotFound:
        case HttpStatus::Gone:
            return std::nullopt;
        default:
            _ThrowRefusal(query);
    }
}

ContentVersion ContentConnection::Download(const QUrl& url, ContentSink& sink) {
    const ContentPart part = sink.Received();
    if (part.size > 0 && !part.entityTag.isEmpty()) {
        ContentDownload rest(url, sink, part);
        if (_PerformRest(rest)) {
            return rest.Whole();
        }
    }
    ContentDownload whole(url, sink, ContentPart());
    _Perform(whole);
    _RequireContent(whole);
    return whole.Whole();
}

UploadAnswer ContentConnection::Upload(const QUrl& url, IContentSource& source, qint64 size, UploadCondition condition,
                                       const ContentVersion& known) {
    HttpTransaction::Headers headers;
    if (condition == UploadCondition::New) {
        headers.append(qMakePair(QByteArray("If-None-Match"), QByteArray("*")));
    } else if (condition == UploadCondition::Unchanged) {
        headers = UnchangedCondition(url, known);
    }
    ContentUpload upload(url, source, size, headers + _LockCondition());
    _Perform(upload);
    switch (upload.StatusCode()) {
        case HttpStatus::Ok:
        case HttpStatus::Created:
        case HttpStatus::NoContent:
            _SetAttributes(upload, source);
            return {UploadOutcome::Stored, upload.Version().entityTag, upload.AnsweredAt()};
        case HttpStatus::PreconditionFailed:
            return {};
        default:
            _ThrowRefusal(upload);
    }
}

LockOutcome ContentConnection::Lock(const QUrl& url, const QByteArray& entityTag, const QString& owner,
                                    std::chrono::seconds longest) {
    if (!_hasLocks) {
        return LockOutcome::NotLocked;
    }
    LockRequest request(url, entityTag, owner, longest);
    try {
        _Perform(request);
    } catch (const TransactionError&) {
        _mayBeLocked = true;
        _hasLocks = false;
        if (_isCancelled) {
            throw;
        }
        return LockOutcome::NotLocked;
    }
    const int status = request.StatusCode();
    if (status == HttpStatus::Locked) {
        _ThrowRefusal(request);
    }
    _lockToken = request.Token();
    _lockedUrl = url;
    if (_lockToken.isEmpty()) {
        _hasLocks = status >= HttpStatus::MultipleChoices && status != HttpStatus::MethodNotAllowed &&
                    status != HttpStatus::NotImplemented;
        // Something on the way may have answered in the server's place.
        _mayBeLocked = status >= HttpStatus::InternalServerError && status != HttpStatus::NotImplemented;
        return LockOutcome::NotLocked;
    }
    const std::optional<ContentVersion> made =
        status == HttpStatus::Created ? Look(url) : std::optional<ContentVersion>();
    if (!made || made->size != 0) {
        return LockOutcome::Locked;
    }
    // There was nothing to lock, so the server made an empty file.
    ResourceChange removal("DELETE", url, _LockCondition());
    _Perform(removal);
    return LockOutcome::Gone;
}

bool ContentConnection::Unlock() noexcept {
    const bool mayBeLocked = std::exchange(_mayBeLocked, false);
    if (_lockToken.isEmpty()) {
        return !mayBeLocked;
    }
    ResourceChange unlock("UNLOCK", _lockedUrl, {{"Lock-Token", std::exchange(_lockToken, QByteArray())}});
    try {
        if (_isCancelled) {
            ConnectionSettings settings = _settings;
            settings.connectLimit = LastPatience;
            settings.silenceLimit = LastPatience;
            settings.answerLimit = LastPatience;
            wire::HttpConnection(settings, _credentials).Perform(unlock);
        } else {
            _session.Perform(unlock);
        }
        return IsUnlocked(unlock.StatusCode());
    } catch (const std::exception&) {
        return false;
    }
}

void ContentConnection::Release(const QUrl& folder, const QString& owner) {
    LockQuery query(HttpTransaction::AsCollection(folder));
    _Perform(query);
    const int status = query.StatusCode();
    const bool isGone = status == HttpStatus::NotFound || status == HttpStatus::Gone;
    if (HttpStatus::IsPassing(status) && !isGone) {
        _ThrowRefusal(query);
    }
    for (const LockQuery::HeldLock& lock : query.LocksOf(owner)) {
        ResourceChange unlock("UNLOCK", lock.url, {{"Lock-Token", lock.token}});
        _Perform(unlock);
        if (!IsUnlocked(unlock.StatusCode())) {
            _ThrowRefusal(unlock);
        }
    }
}

wire::HttpTransaction::Headers ContentConnection::_LockCondition() const {
    return _lockToken.isEmpty() ? HttpTransaction::Headers()
                                : HttpTransaction::Headers{qMakePair(QByteArray("If"), '(' + _lockToken + ')')};
}

bool ContentConnection::Remove(const QUrl& url, const ContentVersion& known) {
    ResourceChange removal("DELETE", url, UnchangedCondition(url, known));
    _Perform(removal);
    switch (removal.StatusCode()) {
        case HttpStatus::Ok:
        case HttpStatus::NoContent:
        case HttpStatus::NotFound:
        case HttpStatus::Gone:
            return true;
        case HttpStatus::PreconditionFailed:
            return false;
        default:
            _ThrowRefusal(removal);
    }
}

void ContentConnection::_SetAttributes(const ContentUpload& upload, const IContentSource& source) {
    // A new file has it off.
    if (const std::optional<bool> bit = source.IsExecutable();
        bit && !upload.IsBitTaken() && (*bit || source.ReplacesExecutable())) {
        _Set({upload.Url(), wire::ExecutableNamespace, wire::ExecutableName, *bit ? "T" : "F", _LockCondition()});
    }
    const QDateTime date = source.Modified();
    const QString md5 = source.Md5();
    if (_keepsDates && !upload.IsDateTaken() && IsToBeKept(date) && !md5.isEmpty()) {
        const QByteArray value = md5.toLatin1() + ' ' + HttpDate(date);
        const int outcome = _Set({upload.Url(), wire::KeptDateNamespace, wire::KeptDateName, value, _LockCondition()});
        _keepsDates = !HttpStatus::IsRefusal(outcome) || HttpStatus::IsPassing(outcome);
    }
}

int ContentConnection::_Set(PropertyChange change) {
    try {
        _Perform(change);
        return change.Outcome();
    } catch (const TransactionError&) {
        // The content is stored, and many servers keep no such property.
        return 0;
    }
}

void ContentConnection::Cancel() {
    _isCancelled = true;
    _session.Cancel();
}

bool ContentConnection::_PerformRest(ContentDownload& rest) {
    try {
        _Perform(rest);
    } catch (const TransactionError&) {
        if (rest.IsToBeAskedAnew()) {
            return false;
        }
        throw;
    }
    if (rest.IsToBeAskedAnew()) {
        return false;
    }
    _RequireContent(rest);
    return true;
}

void ContentConnection::_RequireContent(const ContentDownload& download) const {
    if (download.StatusCode() != HttpStatus::Ok && !download.IsRest()) {
        _ThrowRefusal(download);
    }
}

void ContentConnection::_Perform(ContentTransaction& transaction) {
    try {
        _session.Perform(transaction);
    } catch (const TransactionError&) {
        transaction.RethrowFailure();
        throw;
    }
}

void ContentConnection::_ThrowRefusal(const ContentTransaction& transaction) const {
    wire::AnswerSummary answer = _session.LastAnswer();
    if (transaction.Method() == "PUT" && answer.status == HttpStatus::MultiStatus) {
        // So one server says that the folder is locked.
        answer.status = HttpStatus::FailedDependency;
    }
    throw wire::AnswerError(transaction.Method(), transaction.Url(),
                            QStringLiteral("the service answered with %1").arg(transaction.StatusCode()), answer);
}

}  // namespace content
}  // namespace ovsync
