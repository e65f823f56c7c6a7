#include "client/changes/SyncCollection.h"

#include <algorithm>
#include <utility>

#include "client/changes/TokenRequest.h"
#include "client/requests/PropfindRequest.h"
#include "client/wire/HttpStatus.h"
#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace changes {

using requests::AccountConnection;
using requests::PropfindRequest;
using requests::ServerKind;
using sync::http::DAVPropfindRequest;
using sync::http::DAVPropfindResult;
using wire::HttpStatus;
using wire::TransactionError;

namespace {

/// Whether such a status may be another one the next time; a listing tells more then.
bool IsPassing(int status) {
    return status == HttpStatus::Unauthorized || status == HttpStatus::ProxyAuthenticationRequired ||
           status == HttpStatus::NotFound || status == HttpStatus::Gone || status == HttpStatus::Locked ||
           status == HttpStatus::TooManyRequests ||
           (status >= HttpStatus::InternalServerError && status != HttpStatus::NotImplemented);
}

bool IsAnswerWrong(const TransactionError& error) {
    return error.Why() == TransactionError::Cause::WrongAnswer || error.Why() == TransactionError::Cause::CutOff;
}

int LevelOf(const QString& path) {
    return path.count(QLatin1Char('/')) - (path.endsWith(QLatin1Char('/')) ? 1 : 0);
}

/// Whether the answer has anything that does not lie right in the collection.
bool GoesDeep(const DAVPropfindResult& listed, const QUrl& collection) {
    const int level = LevelOf(collection.path(QUrl::FullyEncoded)) + 1;
    const auto isDeeper = [level](const sync::http::DAVPropfindResponse& entry) {
        return LevelOf(entry.getHref()) > level;
    };
    return std::any_of(listed.fileResponses.cbegin(), listed.fileResponses.cend(), isDeeper) ||
           std::any_of(listed.collectionResponses.cbegin(), listed.collectionResponses.cend(), isDeeper);
}

}  // namespace

SyncCollection::SyncCollection(AccountConnection& connection, const QUrl& collection, UrlMaker urlOf, Mapper map)
    : _connection(connection), _collection(collection), _urlOf(std::move(urlOf)), _map(std::move(map)) {}

std::optional<QString> SyncCollection::StateNow() {
    TokenRequest request(_collection);
    try {
        _connection.Perform(request);
    } catch (const TransactionError& error) {
        if (!IsAnswerWrong(error)) {
            throw;
        }
        return QString();
    }
    if (IsPassing(request.Status())) {
        return std::nullopt;
    }
    const QByteArray token = request.Token();
    if (token.isEmpty() || _connection.KindOf(_collection) == ServerKind::Service) {
        return QString::fromUtf8(token);
    }
    ServiceChanges::Answer answer = ServiceChanges::Answer::Known;
    const std::unique_ptr<ChangeReport> whole = _Report(QByteArray(), answer);
    return whole && GoesDeep(*whole->Changes().present, _collection) ? QString::fromUtf8(whole->Token()) : QString();
}

void SyncCollection::Ask(const QString& state) {
    _asked = std::async(std::launch::async, [this, state] { return _Report(state.toUtf8(), _answer); });
}

ServiceChanges SyncCollection::Take() {
    const std::unique_ptr<ChangeReport> report = _asked.get();
    ServiceChanges changes;
    changes.answer = _answer;
    if (!report) {
        return changes;
    }
    changes.state = QString::fromUtf8(report->Token());
    changes.at = report->ServerTime();
    ServiceChanges gone;
    _map(report->Changes().gone, gone);
    for (const sync::config::FileConfiguration& file : gone.files) {
        changes.gone.append(file.serverPath);
    }
    _map(report->Changes().present, changes);
    return changes;
}

std::unique_ptr<ChangeReport> SyncCollection::_Report(const QByteArray& token, ServiceChanges::Answer& answer) {
    answer = ServiceChanges::Answer::NotAble;
    auto report = std::make_unique<ChangeReport>(_collection, token, _connection.Limits());
    try {
        _connection.Perform(*report);
    } catch (const TransactionError& error) {
        if (!IsAnswerWrong(error)) {
            throw;
        }
        return nullptr;
    }
    if (report->Status() == HttpStatus::MultiStatus) {
        answer = ServiceChanges::Answer::Known;
        return report;
    }
    if (report->IsTokenUnknown() || IsPassing(report->Status())) {
        answer = ServiceChanges::Answer::Forgotten;
    }
    return nullptr;
}

ServiceChanges SyncCollection::LookAt(const QStringList& serverPaths) {
    ServiceChanges changes;
    changes.answer = ServiceChanges::Answer::Known;
    const auto present = std::make_shared<DAVPropfindResult>();
    for (const QString& serverPath : serverPaths) {
        _LookAt(serverPath, *present, changes);
    }
    _map(present, changes);
    return changes;
}

void SyncCollection::_LookAt(const QString& serverPath, DAVPropfindResult& present, ServiceChanges& changes) {
    PropfindRequest request(_urlOf(serverPath), DAVPropfindRequest::Resource);
    request.SetServerKind(ServerKind::Unknown);
    _connection.Perform(request);
    const int status = request.GetStatusCode();
    if (status == HttpStatus::NotFound || status == HttpStatus::Gone) {
        changes.gone.append(serverPath);
        return;
    }
    const auto result = request.GetResult();
    if (!result) {
        throw sync::http::HttpException(
            QStringLiteral("PROPFIND with url %1 failed with error code %2").arg(request.Url().toString()).arg(status),
            status, request.Url());
    }
    // A file that was asked for stands among the file-like entries, a collection does not.
    auto& entries = result->fileResponses.isEmpty() ? present.collectionResponses : present.fileResponses;
    entries.insert(serverPath, result->singleResponse);
}

}  // namespace changes
}  // namespace ovsync
