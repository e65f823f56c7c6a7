#include "client/changes/SyncCollection.h"

#include <algorithm>

#include "client/wire/HttpStatus.h"
#include "client/wire/TransactionError.h"

namespace ovsync {
namespace changes {

using requests::ServerKind;
using sync::http::DAVPropfindResult;
using wire::HttpStatus;
using wire::TransactionError;

namespace {

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

QString SyncCollection::StateOf(const StateRequest& now) {
    const QByteArray& token = now.Token();
    if (token.isEmpty() || _connection.KindOf(_collection) == ServerKind::Service) {
        return QString::fromUtf8(token);
    }
    ServiceChanges::Answer answer = ServiceChanges::Answer::Known;
    const std::unique_ptr<ChangeReport> whole = _Report(QByteArray(), answer);
    return whole && GoesDeep(*whole->Changes().present, _collection) ? QString::fromUtf8(whole->Token()) : QString();
}

ToldChanges SyncCollection::ChangesSince(const QString& state) {
    ToldChanges told;
    if (const std::unique_ptr<ChangeReport> report = _Report(state.toUtf8(), told.answer)) {
        told.present = report->Changes().present;
        told.gone = report->Changes().gone;
        told.state = QString::fromUtf8(report->Token());
        told.at = report->ServerTime();
    }
    return told;
}

std::unique_ptr<ChangeReport> SyncCollection::_Report(const QByteArray& token, ServiceChanges::Answer& answer) {
    answer = ServiceChanges::Answer::NotAble;
    auto report = std::make_unique<ChangeReport>(_collection, token, _connection.Limits());
    try {
        _connection.Perform(*report);
    } catch (const TransactionError& error) {
        if (!error.IsAnswerWrong()) {
            throw;
        }
        return nullptr;
    }
    if (report->Status() == HttpStatus::MultiStatus) {
        answer = ServiceChanges::Answer::Known;
        return report;
    }
    if (report->IsTokenUnknown() || HttpStatus::IsPassing(report->Status())) {
        answer = ServiceChanges::Answer::Forgotten;
    }
    return nullptr;
}

}  // namespace changes
}  // namespace ovsync
