#pragma once

#include <QMap>
#include <QString>
#include <QUrl>
#include <optional>

#include "client/changes/StateRequest.h"
#include "client/changes/ToldChanges.h"
#include "client/requests/AccountConnection.h"

namespace ovsync {
namespace changes {

/// Finds what changed by the entity tags of collections, on servers on which such a tag changes whenever anything below
/// its collection does: goes only into collections that have another tag than before. A tag counts when it was told
/// before what lies in its collection was listed, so that what changes in between is found the next time.
class CollectionTags {
public:
    /// `connection` outlives this object. `collection` ends in '/'.
    CollectionTags(requests::AccountConnection& connection, const QUrl& collection)
        : _connection(connection), _collection(collection) {}

    /// Whether `state` is of this way to ask: no token of a server looks like it.
    static bool IsState(const QString& state);

    /// What `now` says of the state; empty when that is nothing to go by. From then on, and up to Listed, listings are
    /// asked for the tags of collections.
    QString StateOf(const StateRequest& now);
    /// `state` with the tags of what was listed since.
    QString Listed(const QString& state);

    /// What changed since `state`. Throws TransactionError when there is no answer at all.
    ToldChanges ChangesSince(const QString& state);

private:
    /// A collection's tag, and those of the collections below it by their keys.
    struct Tags {
        QString own;
        QMap<QString, QString> below;
    };

    static QString _TextOf(const Tags& tags);
    static Tags _TagsIn(const QString& state);
    /// `told` has a state in the end unless the answer is of no use.
    void _Ask(const QString& state, ToldChanges& told);
    /// Lists what has another tag than the `known` one, and returns the tags of all. None when there is no listing.
    std::optional<QMap<QString, QString>> _Descend(const QMap<QString, QString>& known, ToldChanges& told);
    wire::ListingSupplement& _Supplement() const { return *_connection.Limits().supplement; }

    requests::AccountConnection& _connection;
    const QUrl _collection;
};

}  // namespace changes
}  // namespace ovsync
