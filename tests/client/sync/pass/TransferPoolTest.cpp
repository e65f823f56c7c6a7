#include "client/sync/pass/TransferPool.h"

#include <gtest/gtest.h>

#include <future>

#include "tests/client/sync/pass/FakeService.h"

namespace {

using namespace std::chrono_literals;

/// Is over when its file may be.
class Step {
public:
    explicit Step(std::shared_future<void> end) : _end(std::move(end)) {}

    void Run(ovsync::content::IContentConnection& /*connection*/) noexcept { _end.wait(); }

private:
    const std::shared_future<void> _end;
};

class TransferPoolTest : public testing::Test {
protected:
    TransferPoolTest() {
        std::promise<void> over;
        over.set_value();
        _over = over.get_future().share();
    }

    std::unique_ptr<Step> Quick() const { return std::make_unique<Step>(_over); }

    std::unique_ptr<Step> Slow() { return std::make_unique<Step>(_slow.get_future().share()); }

    void EndSlow() { _slow.set_value(); }

    static constexpr int Batch = 3;
    static constexpr std::chrono::milliseconds Long = 1h;

private:
    std::promise<void> _slow;
    std::shared_future<void> _over;
    tests::FakeService _service;

protected:
    // Its threads end before what they wait for goes.
    ovsync::pass::TransferPool<Step> pool{2, Batch, _service.Folder(QString()).newConnection};
};

TEST_F(TransferPoolTest, WaitsForABatch) {
    for (int i = 0; i < Batch; ++i) {
        pool.Start(Quick());
    }
    pool.Start(Slow());

    EXPECT_EQ(pool.TakeFinished(Long).size(), size_t{Batch});
    EXPECT_EQ(pool.Unfinished(), 1);

    EndSlow();
}

TEST_F(TransferPoolTest, WaitsForTheLastWhenTheyAreFewerThanABatch) {
    pool.Start(Quick());
    pool.Start(Quick());

    EXPECT_EQ(pool.TakeFinished(Long).size(), size_t{2});
    EXPECT_EQ(pool.Unfinished(), 0);
}

TEST_F(TransferPoolTest, GivesWhatThereIsWhenPatienceIsOver) {
    pool.Start(Slow());
    pool.Start(Quick());

    size_t finished = 0;
    while (finished == 0) {
        finished = pool.TakeFinished(10ms).size();
    }

    EXPECT_EQ(finished, size_t{1});
    EXPECT_EQ(pool.Unfinished(), 1);

    EndSlow();
}

TEST_F(TransferPoolTest, AfterCancelOnlyWaitsForWhatHadBegun) {
    pool.Start(Slow());
    for (int i = 0; i < Batch; ++i) {
        pool.Start(Quick());
    }
    pool.Cancel();
    EndSlow();

    size_t left = static_cast<size_t>(pool.Unfinished());
    while (left > 0) {
        left -= pool.TakeFinished(Long).size();
    }

    EXPECT_EQ(pool.Unfinished(), 0);
}

}  // namespace
