#include "client/requests/TreeListing.h"

#include <algorithm>
#include <utility>

#include "client/listing/Href.h"
#include "client/wire/HttpStatus.h"
#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace requests {

using sync::http::DAVPropfindResponse;
using wire::HttpStatus;
using wire::HttpTransaction;

namespace {

/// As many connections as browsers open to a server.
const int FoldersAtOnce = 6;

using Entries = QMap<QString, DAVPropfindResponse>;

/// Whether a server that answers so to Depth: infinity may answer another depth otherwise. Servers word it in too many
/// ways.
bool MayBeForDepth(int status) {
    switch (status) {
        case HttpStatus::Unauthorized:
        case HttpStatus::NotFound:
        case HttpStatus::ProxyAuthenticationRequired:
        case HttpStatus::Gone:
            return false;
        case HttpStatus::NotImplemented:
            return true;
        default:
            return status >= HttpStatus::BadRequest && status < HttpStatus::InternalServerError;
    }
}

bool IsGone(int status) {
    return status == HttpStatus::NotFound || status == HttpStatus::Gone;
}

QString KeyOf(const QUrl& url) {
    listing::Href href(url);
    href.Read("", 0);
    return QString::fromStdString(href.Key());
}

QString ParentOf(const QString& key) {
    return key.left(std::max(0, key.lastIndexOf(QLatin1Char('/'))));
}

/// In front of the keys of what lies below `folder`.
QString PrefixOf(const QString& folder) {
    return folder.isEmpty() ? QString() : folder + QLatin1Char('/');
}

void EraseFrom(Entries& entries, const QString& prefix) {
    auto entry = entries.lowerBound(prefix);
    while (entry != entries.end() && entry.key().startsWith(prefix)) {
        entry = entries.erase(entry);
    }
}

bool HasChecksum(const DAVPropfindResponse& file) {
    return !file.getCheckSumMD5().isEmpty();
}

}  // namespace

TreeListing::TreeListing(wire::HttpConnection& connection, ServerTraits& server, Choice enters)
    : _connection(connection), _server(server), _enters(std::move(enters)) {}

void TreeListing::Perform(PropfindRequest& tree) {
    _tree = &tree;
    _root = KeyOf(tree.Url());
    try {
        if (!_server.isRefusingTrees && _ListAtOnce()) {
            _ListBelow(_LowestFolders());
        } else if (_ListFirstLevel()) {
            _ListBelow(_result->collectionResponses.keys());
        }
    } catch (...) {
        tree.Forget();
        throw;
    }
}

bool TreeListing::_ListAtOnce() {
    _connection.Perform(*_tree);
    _result = _tree->GetResult();
    return !MayBeForDepth(_tree->GetStatusCode());
}

bool TreeListing::_ListFirstLevel() {
    _tree->AskForOneLevel();
    _connection.Perform(*_tree);
    _result = _tree->GetResult();
    const bool isListed = _tree->GetStatusCode() == HttpStatus::MultiStatus;
    _server.isRefusingTrees = _server.isRefusingTrees || isListed;
    return isListed;
}

QStringList TreeListing::_LowestFolders() {
    const bool isListed = _tree->GetStatusCode() == HttpStatus::MultiStatus;
    if (!isListed || _server.kind == ServerKind::Service ||
        std::any_of(_result->fileResponses.cbegin(), _result->fileResponses.cend(), HasChecksum)) {
        return {};
    }
    int lowest = 0;
    for (const Entries* entries : {&_result->collectionResponses, &_result->fileResponses}) {
        for (auto entry = entries->cbegin(); entry != entries->cend(); ++entry) {
            lowest = std::max(lowest, _LevelOf(entry.key()));
        }
    }
    if (lowest < _server.levelsSeen) {
        return {};
    }
    _server.levelsSeen = lowest;
    QStringList folders;
    const Entries& all = _result->collectionResponses;
    for (auto folder = all.cbegin(); folder != all.cend(); ++folder) {
        if (_LevelOf(folder.key()) == lowest) {
            folders.append(folder.key());
        }
    }
    return folders;
}

int TreeListing::_LevelOf(const QString& key) const {
    return key.midRef(PrefixOf(_root).size()).count(QLatin1Char('/')) + 1;
}

void TreeListing::_ListBelow(const QStringList& folders) {
    for (const QString& folder : folders) {
        _Enter(folder);
    }
    _connection.PerformAll(*this, FoldersAtOnce);
}

void TreeListing::_Enter(const QString& folder) {
    if (!_enters || _enters(folder)) {
        _waiting.push_back({folder, QString(), nullptr});
    }
}

HttpTransaction* TreeListing::Next() {
    while (!_waiting.empty()) {
        Question question = std::move(_waiting.back());
        _waiting.pop_back();
        const bool isSecondLook = !question.missing.isEmpty();
        const QString& asked = isSecondLook ? question.missing : question.folder;
        // It may be gone by now, with one above it.
        if (_result->collectionResponses.contains(asked)) {
            question.request = _tree->ForFolder(_UrlOf(question.folder), !isSecondLook);
            _underWay.push_back(std::move(question));
            return _underWay.back().request.get();
        }
    }
    return nullptr;
}

void TreeListing::OnPerformed(HttpTransaction& transaction) {
    const auto place = std::find_if(_underWay.begin(), _underWay.end(), [&transaction](const Question& question) {
        return question.request.get() == &transaction;
    });
    const Question question = std::move(*place);
    _underWay.erase(place);
    if (question.missing.isEmpty()) {
        _TakeFolder(question);
    } else {
        _TakeSecondLook(question);
    }
}

void TreeListing::_TakeFolder(const Question& question) {
    const QString& folder = question.folder;
    const int status = question.request->GetStatusCode();
    const bool isLeftOut = !_result->collectionResponses.contains(folder) && !_result->fileResponses.contains(folder);
    if (isLeftOut) {
        _RemoveBelow(folder);
    } else if (status == HttpStatus::MultiStatus) {
        const QString prefix = PrefixOf(folder);
        const Entries& all = _result->collectionResponses;
        for (auto below = all.lowerBound(prefix); below != all.cend() && below.key().startsWith(prefix); ++below) {
            _Enter(below.key());
        }
    } else if (IsGone(status)) {
        _LookForMissing(folder);
    } else {
        _Fail(*question.request, QStringLiteral("this folder cannot be listed, and so the tree is not whole"));
    }
}

void TreeListing::_LookForMissing(const QString& missing) {
    _waiting.push_back({ParentOf(missing), missing, nullptr});
}

void TreeListing::_TakeSecondLook(const Question& question) {
    const int status = question.request->GetStatusCode();
    if (IsGone(status) && question.folder != _root) {
        _LookForMissing(question.folder);
        return;
    }
    if (status != HttpStatus::MultiStatus) {
        _Fail(*question.request, QStringLiteral("this folder cannot be listed any more"));
    }
    const auto listed = question.request->GetResult();
    if (listed->collectionResponses.contains(question.missing)) {
        throw wire::TransactionError(
            "PROPFIND", _UrlOf(question.missing),
            QStringLiteral("the server says that this folder is not there, but lists it in the one above"),
            _connection.LastAnswer());
    }
    _result->collectionResponses.remove(question.missing);
    _RemoveBelow(question.missing);
    const auto file = listed->fileResponses.constFind(question.missing);
    if (file != listed->fileResponses.cend()) {
        _result->fileResponses.insert(file.key(), file.value());
    }
}

void TreeListing::_RemoveBelow(const QString& folder) {
    EraseFrom(_result->collectionResponses, PrefixOf(folder));
    EraseFrom(_result->fileResponses, PrefixOf(folder));
}

QUrl TreeListing::_UrlOf(const QString& folder) const {
    QUrl url = _tree->Url();
    if (folder != _root) {
        url.setPath(_result->collectionResponses.constFind(folder)->getHref(), QUrl::TolerantMode);
    }
    return HttpTransaction::AsCollection(url);
}

void TreeListing::_Fail(PropfindRequest& request, const QString& reason) const {
    const auto error = [&] {
        return wire::TransactionError(request.Method(), request.Url(), reason, _connection.LastAnswer());
    };
    if (request.GetStatusCode() >= HttpStatus::BadRequest) {
        throw sync::http::HttpException(error().Message(), request.GetStatusCode(), request.Url());
    }
    throw error();
}

}  // namespace requests
}  // namespace ovsync
