#include "client/agent/AgentLock.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <optional>

#include "host/core/SyncException.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::agent::AgentLock;

TEST(AgentLockTest, IsForOneAndIsSeenByOthersWithoutBeingTaken) {
    const QTemporaryDir folder;
    EXPECT_FALSE(AgentLock(folder.path()).IsTaken());
    std::optional<AgentLock> first(folder.path());
    EXPECT_TRUE(first->Take());
    EXPECT_TRUE(AgentLock(folder.path()).IsTaken());
    AgentLock second(folder.path());
    EXPECT_FALSE(second.Take());
    first.reset();
    EXPECT_FALSE(AgentLock(folder.path()).IsTaken());
    EXPECT_TRUE(second.Take());
}

TEST(AgentLockTest, NamesAFileThatCannotBeMade) {
    EXPECT_THROW(static_cast<void>(AgentLock(tests::Text("/nowhere")).Take()), sync::core::SyncException);
}

}  // namespace
