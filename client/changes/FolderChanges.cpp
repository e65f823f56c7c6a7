#include "client/changes/FolderChanges.h"

#include <utility>

#include "client/changes/StateRequest.h"
#include "client/requests/PropfindRequest.h"
#include "client/wire/HttpStatus.h"
#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace changes {

using requests::AccountConnection;
using requests::PropfindRequest;
using requests::ServerKind;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using sync::http::DAVPropfindRequest;
using sync::http::DAVPropfindResult;
using wire::HttpStatus;

FolderChanges::FolderChanges(AccountConnection& connection, const QString& folder, UrlMaker urlOf, Mapper map)
    : _connection(connection),
      _folder(folder),
      _urlOf(std::move(urlOf)),
      _map(std::move(map)),
      _collection(_urlOf(folder + QLatin1Char('/'))),
      _report(connection, _collection),
      _tags(connection, _collection) {}

std::optional<QString> FolderChanges::StateNow() {
    StateRequest now(_collection);
    try {
        _connection.Perform(now);
    } catch (const wire::TransactionError& error) {
        if (!error.IsAnswerWrong()) {
            throw;
        }
        return QString();
    }
    if (HttpStatus::IsPassing(now.Status())) {
        return std::nullopt;
    }
    const QString state = _report.StateOf(now);
    return state.isEmpty() ? _tags.StateOf(now) : state;
}

QString FolderChanges::Listed(const QString& state) {
    return CollectionTags::IsState(state) ? _tags.Listed(state) : state;
}

void FolderChanges::Ask(const QString& state) {
    _asked = std::async(std::launch::async, [this, state] {
        return CollectionTags::IsState(state) ? _tags.ChangesSince(state) : _report.ChangesSince(state);
    });
}

ServiceChanges FolderChanges::Take() {
    const ToldChanges told = _asked.get();
    ServiceChanges changes;
    changes.answer = told.answer;
    changes.state = told.state;
    changes.at = told.at;
    if (told.present) {
        _map(told.present, changes);
    }
    if (told.gone) {
        ServiceChanges gone;
        _map(told.gone, gone);
        for (const FileConfiguration& file : gone.files) {
            changes.gone.append(file.serverPath);
        }
    }
    if (told.whole) {
        ServiceChanges whole;
        _map(told.whole, whole);
        changes.whole.append(_folder);
        for (const FolderConfiguration& folder : whole.folders) {
            changes.whole.append(folder.serverPath);
        }
    }
    return changes;
}

ServiceChanges FolderChanges::LookAt(const QStringList& serverPaths) {
    ServiceChanges changes;
    changes.answer = ServiceChanges::Answer::Known;
    const auto present = std::make_shared<DAVPropfindResult>();
    for (const QString& serverPath : serverPaths) {
        _LookAt(serverPath, *present, changes);
    }
    _map(present, changes);
    return changes;
}

void FolderChanges::_LookAt(const QString& serverPath, DAVPropfindResult& present, ServiceChanges& changes) {
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
