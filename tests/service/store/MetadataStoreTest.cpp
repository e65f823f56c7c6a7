#include "service/store/MetadataStore.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "tests/service/TemporaryFolder.h"

namespace service::store {
namespace {

class MetadataStoreTest : public testing::Test {
protected:
    MetadataStoreTest() : store(std::make_unique<MetadataStore>(folder / "m.db", "anna", 1000)) {}

    void Reopen() {
        store.reset();
        store = std::make_unique<MetadataStore>(folder / "m.db", "berta", 2000);
    }

    Resource Insert(const std::string& name, std::int64_t parent, bool isCollection = false) {
        Resource resource;
        resource.name = name;
        resource.parent = parent;
        resource.isCollection = isCollection;
        resource.changed = 5;
        store->Insert(resource);
        return resource;
    }

    test::TemporaryFolder folder;
    std::unique_ptr<MetadataStore> store;
};

TEST_F(MetadataStoreTest, NewStoreHasARootOfItsOwner) {
    const Resource root = store->Root();
    EXPECT_EQ(root.id, 1);
    EXPECT_EQ(root.parent, 0);
    EXPECT_TRUE(root.isCollection);
    EXPECT_EQ(root.owner, "anna");
    EXPECT_EQ(root.created, 1000);
}

TEST_F(MetadataStoreTest, KeepsEveryMemberOverARestart) {
    Resource r = Insert("f", 1);
    r.owner = "o";
    r.privileges = "r";
    r.visibility = "hide";
    r.classType = "c";
    r.displayName = "d";
    r.syncOption = "s,t";
    r.linksExtractedAt = "l";
    r.attribute = "'";
    r.version = 7;
    r.size = 5000000000;
    r.modified = 1795169730123456789;
    r.md5 = "m";
    r.isExecutable = true;
    r.created = 11;
    r.changed = 12;
    store->Update(r);
    Reopen();
    const Resource k = store->Child(1, "f").value();
    EXPECT_EQ(std::tie(k.id, k.parent, k.name, k.isCollection, k.itemId, k.owner, k.privileges, k.visibility,
                       k.classType, k.displayName, k.syncOption, k.linksExtractedAt, k.attribute, k.version, k.size,
                       k.modified, k.isExecutable, k.md5, k.created, k.changed),
              std::tie(r.id, r.parent, r.name, r.isCollection, r.itemId, r.owner, r.privileges, r.visibility,
                       r.classType, r.displayName, r.syncOption, r.linksExtractedAt, r.attribute, r.version, r.size,
                       r.modified, r.isExecutable, r.md5, r.created, r.changed));
}

TEST_F(MetadataStoreTest, NeverGivesAnIdTwice) {
    const std::int64_t first = Insert("a", 1).id;
    store->RemoveTree(first);
    Reopen();
    EXPECT_GT(Insert("a", 1).id, first);
}

TEST_F(MetadataStoreTest, FindsAResourceByItsIdsOnly) {
    const Resource f = Insert("f", 1);
    EXPECT_EQ(store->ById(f.id)->name, "f");
    EXPECT_FALSE(store->ById(f.id + 1));
    EXPECT_EQ(store->ByItemId(f.itemId)->id, f.id);
    const std::string ofStore = f.itemId.substr(0, f.itemId.rfind('-') + 1);
    const std::string number = std::to_string(f.id);
    const std::vector<std::string> unknownIds{std::string(),
                                              number,
                                              "-" + number,
                                              ofStore,
                                              ofStore + "0" + number,
                                              ofStore + number + "x",
                                              "0" + f.itemId,
                                              ofStore + std::string(30, '9'),
                                              f.itemId + std::string(1, '\0')};
    for (const std::string& other : unknownIds) {
        EXPECT_FALSE(store->ByItemId(other)) << other;
    }
}

TEST_F(MetadataStoreTest, ListsChildrenInTheOrderOfBytes) {
    for (const char* name : {"b", "a", "B", "\xC3\xA4", "a.txt"}) {
        Insert(name, 1);
    }
    std::vector<std::string> names;
    for (const Resource& child : store->Children(1)) {
        names.push_back(child.name);
    }
    EXPECT_THAT(names, testing::ElementsAre("B", "a", "a.txt", "b", "\xC3\xA4"));
}

TEST_F(MetadataStoreTest, ForgetsATreeWithItsPropertiesAndNothingElse) {
    const Resource outer = Insert("folder", 1, true);
    const Resource inner = Insert("inner", outer.id, true);
    const Resource file = Insert("file", inner.id);
    const Resource beside = Insert("beside", 1);
    store->SetDeadProperty(file.id, {{"urn:x", "p"}, "<p/>"});
    store->RemoveTree(outer.id);
    EXPECT_FALSE(store->Child(1, "folder"));
    EXPECT_FALSE(store->Child(outer.id, "inner"));
    EXPECT_FALSE(store->Child(inner.id, "file"));
    EXPECT_TRUE(store->DeadProperties(file.id).empty());
    EXPECT_TRUE(store->Child(1, "beside"));
}

TEST_F(MetadataStoreTest, NotesAChangeOfAWholeTree) {
    const Resource outer = Insert("folder", 1, true);
    Insert("file", outer.id);
    Insert("beside", 1);
    store->TreeChanged(outer.id, 9);
    EXPECT_EQ(store->Child(1, "folder")->changed, 9);
    EXPECT_EQ(store->Child(outer.id, "file")->changed, 9);
    EXPECT_EQ(store->Child(1, "beside")->changed, 5);
}

TEST_F(MetadataStoreTest, KeepsTheJournalUntilItIsCleared) {
    store->WriteJournal({{"a", "b", true, 1}, {"c", "d", false, 0xFFFFFFFFFFFFFFFFULL}});
    Reopen();
    const auto journal = store->Journal();
    ASSERT_EQ(journal.size(), 2U);
    EXPECT_EQ(journal[0].source, "a");
    EXPECT_EQ(journal[1].target, "d");
    EXPECT_EQ(journal[1].inode, 0xFFFFFFFFFFFFFFFFULL);
    store->ClearJournal();
    EXPECT_TRUE(store->Journal().empty());
}

TEST_F(MetadataStoreTest, TransactionThatIsNotCommittedLeavesNothing) {
    {
        const MetadataStore::Transaction transaction(*store);
        Insert("f", 1);
    }
    EXPECT_FALSE(store->Child(1, "f"));
}

TEST_F(MetadataStoreTest, ChecksumOfOtherContentIsNotKept) {
    Resource file = Insert("f", 1);
    Resource stale = file;
    stale.md5 = "stale";
    stale.size = 1;
    store->SetChecksum(stale);
    EXPECT_EQ(store->Child(1, "f")->md5, "");
    file.md5 = "fresh";
    store->SetChecksum(file);
    EXPECT_EQ(store->Child(1, "f")->md5, "fresh");
}

TEST(MetadataStoreFile, OfAnEarlierFormatIsBroughtUpToDate) {
    const test::TemporaryFolder folder;
    { Database(folder / "m.db").Execute(test::Fixture("metadata-format-1.sql").c_str()); }
    for (int start = 0; start < 2; ++start) {
        MetadataStore store(folder / "m.db", "berta", 9000);
        EXPECT_EQ(store.Root().owner, "anna");
        const Resource file = store.Child(1, "f").value();
        EXPECT_EQ(file.id, 7);
        EXPECT_EQ(file.version, 3);
        EXPECT_EQ(file.visibility, "hide");
        EXPECT_EQ(file.md5, "5d41402abc4b2a76b9719d911017c592");
        EXPECT_EQ(file.changed, 3000);
        EXPECT_FALSE(file.isExecutable);
        EXPECT_EQ(store.DeadProperties(7).size(), 1U);
        EXPECT_EQ(store.LastChange(), 3000);
    }
}

TEST(MetadataStoreFile, ThatIsDamagedOrOfAnotherFormatIsNamed) {
    const test::TemporaryFolder folder;
    folder.Write("bad.db", std::string(8192, 'x'));
    const auto whyNot = [&](const std::string& name) -> std::string {
        try {
            const MetadataStore store(folder / name, "anna", 0);
            return "";
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    };
    EXPECT_THAT(whyNot("bad.db"), testing::HasSubstr("bad.db"));
    { Database(folder / "new.db").Execute("PRAGMA user_version = 99"); }
    EXPECT_THAT(whyNot("new.db"), testing::HasSubstr("format 99"));
}

}  // namespace
}  // namespace service::store
