#include "service/store/MetadataStore.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <stdexcept>
#include <tuple>

namespace service::store {
namespace {

// What makes each format of the one before, and so the first one of nothing.
constexpr std::array<const char*, 3> Formats{R"(
CREATE TABLE store (id TEXT NOT NULL);
INSERT INTO store VALUES (lower(hex(randomblob(6))));
CREATE TABLE resource (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    parent INTEGER NOT NULL,
    name TEXT NOT NULL,
    collection INTEGER NOT NULL,
    owner TEXT NOT NULL,
    privileges TEXT NOT NULL,
    visibility TEXT NOT NULL,
    classtype TEXT NOT NULL,
    displayname TEXT NOT NULL,
    syncoption TEXT NOT NULL,
    linksextractedat TEXT NOT NULL,
    attribute TEXT NOT NULL,
    version INTEGER NOT NULL,
    size INTEGER NOT NULL,
    modified INTEGER NOT NULL,
    md5 TEXT NOT NULL,
    created INTEGER NOT NULL,
    changed INTEGER NOT NULL,
    UNIQUE (parent, name)
);
CREATE TABLE dead_property (
    resource INTEGER NOT NULL REFERENCES resource (id) ON DELETE CASCADE,
    namespace TEXT NOT NULL,
    name TEXT NOT NULL,
    xml TEXT NOT NULL,
    PRIMARY KEY (resource, namespace, name)
) WITHOUT ROWID;
CREATE TABLE journal (
    step INTEGER PRIMARY KEY,
    source TEXT NOT NULL,
    target TEXT NOT NULL,
    inode INTEGER NOT NULL
);
PRAGMA user_version = 1;
)",
                                             R"(
ALTER TABLE resource ADD COLUMN executable INTEGER NOT NULL DEFAULT 0;
PRAGMA user_version = 2;
)",
                                             R"(
CREATE INDEX last_change ON resource (changed);
PRAGMA user_version = 3;
)"};

// A column of the table `resource` and the member of Resource that it keeps.
template <typename Value>
struct Column {
    const char* name;
    Value Resource::*member;
};
template <typename Value>
Column(const char*, Value Resource::*) -> Column<Value>;

// All but the id. Every statement about whole rows is made of these.
constexpr std::tuple Columns{
    Column{"parent", &Resource::parent},
    Column{"name", &Resource::name},
    Column{"collection", &Resource::isCollection},
    Column{"owner", &Resource::owner},
    Column{"privileges", &Resource::privileges},
    Column{"visibility", &Resource::visibility},
    Column{"classtype", &Resource::classType},
    Column{"displayname", &Resource::displayName},
    Column{"syncoption", &Resource::syncOption},
    Column{"linksextractedat", &Resource::linksExtractedAt},
    Column{"attribute", &Resource::attribute},
    Column{"version", &Resource::version},
    Column{"size", &Resource::size},
    Column{"modified", &Resource::modified},
    Column{"executable", &Resource::isExecutable},
    Column{"md5", &Resource::md5},
    Column{"created", &Resource::created},
    Column{"changed", &Resource::changed},
};

// What `each` makes of the name of every column, with commas between.
std::string Joined(std::string (*each)(const std::string& name)) {
    std::string list;
    const auto append = [&](const std::string& name) { list += (list.empty() ? "" : ", ") + each(name); };
    std::apply([&](const auto&... column) { (append(column.name), ...); }, Columns);
    return list;
}

std::string Names() {
    return Joined([](const std::string& name) { return name; });
}

std::string SelectSql(const std::string& where) {
    return "SELECT id, " + Names() + " FROM resource " + where;
}

std::string InsertSql() {
    const std::string marks = Joined([](const std::string& /*name*/) { return std::string("?"); });
    return "INSERT INTO resource (" + Names() + ") VALUES (" + marks + ") RETURNING id";
}

std::string UpdateSql() {
    return "UPDATE resource SET " + Joined([](const std::string& name) { return name + " = ?"; }) + " WHERE id = ?";
}

constexpr const char* ChangeTreeSql =
    "WITH RECURSIVE tree (id) AS (SELECT ?1 UNION ALL SELECT r.id FROM resource r JOIN tree t ON r.parent = t.id) "
    "UPDATE resource SET changed = ?2 WHERE id IN tree";

constexpr const char* RemoveTreeSql =
    "WITH RECURSIVE tree (id) AS (SELECT ? UNION ALL SELECT r.id FROM resource r JOIN tree t ON r.parent = t.id) "
    "DELETE FROM resource WHERE id IN tree";

// Calls `run` with the values of all columns.
template <typename Run>
void WithValues(const Resource& resource, Run run) {
    std::apply([&](const auto&... column) { run(resource.*(column.member)...); }, Columns);
}

}  // namespace

MetadataStore::MetadataStore(const std::string& file, const std::string& owner, std::int64_t now)
    : _database(file),
      _storeId(_OpenTables(owner, now)),
      _child(_database.Handle(), SelectSql("WHERE parent = ? AND name = ?")),
      _byId(_database.Handle(), SelectSql("WHERE id = ?")),
      _children(_database.Handle(), SelectSql("WHERE parent = ? ORDER BY name")),
      _knownChildren(_database.Handle(),
                     "SELECT id, name, collection, size, modified, executable, changed FROM resource WHERE parent = ? "
                     "ORDER BY name"),
      _withoutChecksum(_database.Handle(),
                       SelectSql("WHERE md5 = '' AND NOT collection AND id > ? ORDER BY id LIMIT 16")),
      _insert(_database.Handle(), InsertSql()),
      _update(_database.Handle(), UpdateSql()),
      _updateTimes(_database.Handle(), "UPDATE resource SET modified = ?, changed = ? WHERE id = ?"),
      _treeChanged(_database.Handle(), ChangeTreeSql),
      _removeTree(_database.Handle(), RemoveTreeSql),
      _setChecksum(_database.Handle(), "UPDATE resource SET md5 = ? WHERE id = ? AND size = ? AND modified = ?"),
      _dead(_database.Handle(),
            "SELECT namespace, name, xml FROM dead_property WHERE resource = ? ORDER BY namespace, name"),
      _setDead(_database.Handle(), "INSERT OR REPLACE INTO dead_property VALUES (?, ?, ?, ?)"),
      _removeDead(_database.Handle(), "DELETE FROM dead_property WHERE resource = ? AND namespace = ? AND name = ?"),
      _copyDead(_database.Handle(),
                "INSERT INTO dead_property SELECT ?2, namespace, name, xml FROM dead_property WHERE resource = ?1") {}

std::string MetadataStore::_OpenTables(const std::string& owner, std::int64_t now) {
    std::int64_t version = 0;
    Statement userVersion(_database.Handle(), "PRAGMA user_version");
    userVersion.Each([&] { version = userVersion.Integer(0); });
    if (version < 0 || version > static_cast<std::int64_t>(Formats.size())) {
        throw std::runtime_error("The metadata is in format " + std::to_string(version) +
                                 "; this program knows those up to " + std::to_string(Formats.size()) + " only");
    }
    if (version < static_cast<std::int64_t>(Formats.size())) {
        Database::Transaction transaction(_database);
        std::for_each(Formats.begin() + version, Formats.end(), [&](const char* sql) { _database.Execute(sql); });
        if (version == 0) {
            Statement insert(_database.Handle(), InsertSql());
            Resource root;
            root.isCollection = true;
            root.owner = owner;
            root.created = now;
            root.changed = now;
            root.modified = now * 1000000;
            WithValues(root, [&](const auto&... columns) { insert.Run(columns...); });
        }
        transaction.Commit();
    }
    std::string storeId;
    Statement select(_database.Handle(), "SELECT id FROM store");
    select.Each([&] { storeId = select.Text(0); });
    return storeId;
}

Resource MetadataStore::Root() {
    auto root = Child(0, "");
    if (!root) {
        throw std::runtime_error("The metadata has no root");
    }
    return *root;
}

std::optional<Resource> MetadataStore::Child(std::int64_t parent, const std::string& name) {
    std::optional<Resource> found;
    _child.Each([&] { found = _Row(_child); }, parent, name);
    return found;
}

std::optional<Resource> MetadataStore::ById(std::int64_t id) {
    std::optional<Resource> found;
    _byId.Each([&] { found = _Row(_byId); }, id);
    return found;
}

std::optional<Resource> MetadataStore::ByItemId(std::string_view itemId) {
    const std::string_view digits = itemId.substr(itemId.rfind('-') + 1);
    std::int64_t id = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), id);
    auto found = ById(id);
    return found && found->itemId == itemId ? found : std::nullopt;
}

std::vector<Resource> MetadataStore::Children(std::int64_t parent) {
    std::vector<Resource> children;
    _children.Each([&] { children.push_back(_Row(_children)); }, parent);
    return children;
}

std::vector<KnownChild> MetadataStore::KnownChildren(std::int64_t parent) {
    std::vector<KnownChild> children;
    const auto read = [&] {
        KnownChild& child = children.emplace_back();
        _knownChildren.Read(0, child.id);
        _knownChildren.Read(1, child.name);
        _knownChildren.Read(2, child.isCollection);
        _knownChildren.Read(3, child.size);
        _knownChildren.Read(4, child.modified);
        _knownChildren.Read(5, child.isExecutable);
        _knownChildren.Read(6, child.changed);
    };
    _knownChildren.Each(read, parent);
    return children;
}

std::vector<Resource> MetadataStore::WithoutChecksum(std::int64_t afterId) {
    std::vector<Resource> files;
    _withoutChecksum.Each([&] { files.push_back(_Row(_withoutChecksum)); }, afterId);
    return files;
}

void MetadataStore::Insert(Resource& resource) {
    WithValues(resource,
               [&](const auto&... columns) { _insert.Each([&] { resource.id = _insert.Integer(0); }, columns...); });
    if (resource.id > std::numeric_limits<std::int32_t>::max()) {
        throw std::runtime_error("All resource ids up to 2147483647 have been given out");
    }
    resource.itemId = _ItemId(resource.id);
}

void MetadataStore::Update(const Resource& resource) {
    WithValues(resource, [&](const auto&... columns) { _update.Run(columns..., resource.id); });
}

void MetadataStore::UpdateTimes(const Resource& resource) {
    _updateTimes.Run(resource.modified, resource.changed, resource.id);
}

void MetadataStore::TreeChanged(std::int64_t id, std::int64_t now) {
    _treeChanged.Run(id, now);
}

void MetadataStore::RemoveTree(std::int64_t id) {
    _removeTree.Run(id);
}

void MetadataStore::SetChecksum(const Resource& resource) {
    _setChecksum.Run(resource.md5, resource.id, resource.size, resource.modified);
}

std::vector<protocol::DeadProperty> MetadataStore::DeadProperties(std::int64_t id) {
    std::vector<protocol::DeadProperty> properties;
    _dead.Each([&] { properties.push_back({{_dead.Text(0), _dead.Text(1)}, _dead.Text(2)}); }, id);
    return properties;
}

void MetadataStore::SetDeadProperty(std::int64_t id, const protocol::DeadProperty& property) {
    _setDead.Run(id, property.name.nameSpace, property.name.name, property.xml);
}

void MetadataStore::RemoveDeadProperty(std::int64_t id, const protocol::PropertyName& name) {
    _removeDead.Run(id, name.nameSpace, name.name);
}

void MetadataStore::CopyDeadProperties(std::int64_t from, std::int64_t to) {
    _copyDead.Run(from, to);
}

std::vector<Rename> MetadataStore::Journal() {
    std::vector<Rename> steps;
    Statement select(_database.Handle(), "SELECT source, target, inode FROM journal ORDER BY step");
    select.Each([&] {
        Rename step;
        step.source = select.Text(0);
        step.target = select.Text(1);
        step.inode = static_cast<std::uint64_t>(select.Integer(2));
        steps.push_back(step);
    });
    return steps;
}

void MetadataStore::WriteJournal(const std::vector<Rename>& steps) {
    Transaction transaction(*this);
    Statement insert(_database.Handle(), "INSERT INTO journal (source, target, inode) VALUES (?, ?, ?)");
    for (const Rename& step : steps) {
        insert.Run(step.source, step.target, static_cast<std::int64_t>(step.inode));
    }
    transaction.Commit();
}

void MetadataStore::ClearJournal() {
    _database.Execute("DELETE FROM journal");
}

std::int64_t MetadataStore::LastChange() {
    std::int64_t last = 0;
    Statement select(_database.Handle(), "SELECT max(changed) FROM resource");
    select.Each([&] { last = select.Integer(0); });
    return last;
}

void MetadataStore::RecycleSpace() {
    _database.Execute("PRAGMA wal_checkpoint(RESTART)");
}

std::string MetadataStore::_ItemId(std::int64_t id) const {
    return _storeId + "-" + std::to_string(id);
}

Resource MetadataStore::_Row(const Statement& statement) const {
    Resource resource;
    int index = 0;
    statement.Read(index, resource.id);
    resource.itemId = _ItemId(resource.id);
    std::apply([&](const auto&... column) { (statement.Read(++index, resource.*(column.member)), ...); }, Columns);
    return resource;
}

}  // namespace service::store
