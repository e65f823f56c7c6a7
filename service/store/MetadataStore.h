#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "service/protocol/Property.h"
#include "service/store/Database.h"
#include "service/store/Rename.h"
#include "service/store/Resource.h"
#include "service/store/Statement.h"

namespace service::store {

/// Everything the service knows about resources but their content, in one SQLite database. Each operation is atomic by
/// itself; a Transaction joins several. Throws as Statement does; used by one thread at a time.
class MetadataStore {
public:
    class Transaction : public Database::Transaction {
    public:
        explicit Transaction(MetadataStore& store) : Database::Transaction(store._database) {}
    };

    /// Opens `file`, or makes it with a root that was made at `now` (milliseconds) by `owner`.
    MetadataStore(const std::string& file, const std::string& owner, std::int64_t now);

    Resource Root();
    std::optional<Resource> Child(std::int64_t parent, const std::string& name);
    std::optional<Resource> ById(std::int64_t id);
    std::optional<Resource> ByItemId(std::string_view itemId);
    /// In the order of the bytes of their names.
    std::vector<Resource> Children(std::int64_t parent);
    /// The same, of each only what it takes to see whether it changed.
    std::vector<KnownChild> KnownChildren(std::int64_t parent);

    /// Some files without a checksum, those with the lowest ids above `afterId`, in the order of these.
    std::vector<Resource> WithoutChecksum(std::int64_t afterId);

    /// Gives the resource an id of its own (which sets `id` and `itemId`) and keeps it.
    void Insert(Resource& resource);
    /// Keeps all members of the resource with this id.
    void Update(const Resource& resource);
    /// Keeps only the times of the resource with this id.
    void UpdateTimes(const Resource& resource);
    /// Notes that a resource and all below it changed at `now` (milliseconds).
    void TreeChanged(std::int64_t id, std::int64_t now);
    /// Forgets a resource and all below it.
    void RemoveTree(std::int64_t id);
    /// Sets the checksum, unless the content is no longer the one described by `size` and `modified`.
    void SetChecksum(const Resource& resource);

    std::vector<protocol::DeadProperty> DeadProperties(std::int64_t id);
    void SetDeadProperty(std::int64_t id, const protocol::DeadProperty& property);
    void RemoveDeadProperty(std::int64_t id, const protocol::PropertyName& name);
    void CopyDeadProperties(std::int64_t from, std::int64_t to);

    /// The steps that WriteJournal() kept and ClearJournal() did not yet forget.
    std::vector<Rename> Journal();
    void WriteJournal(const std::vector<Rename>& steps);
    void ClearJournal();

    /// Lets the next changes take the space on the disk of those before, as far as it goes.
    void RecycleSpace();

    /// The time of the last change of all, in milliseconds.
    std::int64_t LastChange();

private:
    std::string _OpenTables(const std::string& owner, std::int64_t now);
    std::string _ItemId(std::int64_t id) const;
    Resource _Row(const Statement& statement) const;

    Database _database;
    // Makes the item ids of two stores different.
    std::string _storeId;
    Statement _child;
    Statement _byId;
    Statement _children;
    Statement _knownChildren;
    Statement _withoutChecksum;
    Statement _insert;
    Statement _update;
    Statement _updateTimes;
    Statement _treeChanged;
    Statement _removeTree;
    Statement _setChecksum;
    Statement _dead;
    Statement _setDead;
    Statement _removeDead;
    Statement _copyDead;
};

}  // namespace service::store
