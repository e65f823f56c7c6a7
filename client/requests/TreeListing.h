#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <vector>

#include "client/requests/PropfindRequest.h"
#include "client/requests/ServerCapabilities.h"
#include "client/wire/HttpConnection.h"

namespace ovsync {
namespace requests {

/// Has a whole tree listed, by whatever a server can do, as if it had answered the one request for it. Not thread-safe.
///
/// Many servers refuse Depth: infinity, and some list the upper levels only and say nothing of it. What they leave out
/// is asked for folder by folder, several at a time. A tree is whole when the folders of its lowest level that show
/// nothing turned out to be empty; that is not asked where the server is the service, which lists everything, or was
/// seen to list more levels than this tree has.
///
/// A folder that is gone by the time it is asked for is left out, once the one above was asked again and does not list
/// it any more. Everything else that goes wrong with any folder ends the whole, with an error that names the folder.
class TreeListing : private wire::ITransactionQueue {
public:
    /// Whether to list what lies in the folder that has this key, which was just listed itself.
    using Choice = std::function<bool(const QString& key)>;

    /// Both have to outlive this object. What is found out about the server goes to `server`. Where folders are listed
    /// one by one, those alone that it `enters`, if that is not null.
    TreeListing(wire::HttpConnection& connection, ServerTraits& server, Choice enters = nullptr);

    /// Once. Fills `tree` with an answer, which may be a refusal. Throws TransactionError, and HttpException where a
    /// folder in the tree was refused.
    void Perform(PropfindRequest& tree);

private:
    /// Folders are known by the keys of their entries.
    struct Question {
        QString folder;
        /// What to look for among the entries of `folder`, when that is why it is asked; empty otherwise.
        QString missing;
        std::unique_ptr<PropfindRequest> request;
    };

    wire::HttpTransaction* Next() override;
    void OnPerformed(wire::HttpTransaction& transaction) override;

    /// Whether the server listed it, not necessarily with all levels.
    bool _ListAtOnce();
    bool _ListFirstLevel();
    /// Those that may hold what was left out.
    QStringList _LowestFolders();
    int _LevelOf(const QString& key) const;
    void _ListBelow(const QStringList& folders);
    void _Enter(const QString& folder);

    void _TakeFolder(const Question& question);
    void _TakeSecondLook(const Question& question);
    void _LookForMissing(const QString& missing);
    void _RemoveBelow(const QString& folder);
    QUrl _UrlOf(const QString& folder) const;
    [[noreturn]] void _Fail(PropfindRequest& request, const QString& reason) const;

    wire::HttpConnection& _connection;
    ServerTraits& _server;
    const Choice _enters;
    PropfindRequest* _tree = nullptr;
    std::shared_ptr<sync::http::DAVPropfindResult> _result;
    QString _root;
    std::vector<Question> _waiting;
    std::vector<Question> _underWay;
};

}  // namespace requests
}  // namespace ovsync
