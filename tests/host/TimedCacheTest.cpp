#include "host/core/TimedCache.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

// A cache with a clock that stands still unless it is set.
template <typename T>
class CacheOf : public sync::core::TimedCache<T> {
public:
    using sync::core::TimedCache<T>::TimedCache;

    QDateTime now = QDateTime(QDate(2020, 1, 1), QTime(12, 0));

protected:
    QDateTime _Now() const override { return now; }
};

using CacheWithClock = CacheOf<int>;

class TimedCacheTest : public testing::Test {
protected:
    int runs = 0;
    CacheWithClock cache{[this] { return ++runs; }, 1000, 0};
};

TEST_F(TimedCacheTest, TheFirstCallComputesTheValue) {
    EXPECT_EQ(cache.Get(), 1);
}

TEST_F(TimedCacheTest, KeepsTheValueUntilMoreWholeSecondsHavePassedThanTheLimit) {
    cache.Get();
    EXPECT_EQ(cache.Get(), 1);
    cache.now = cache.now.addMSecs(1999);
    EXPECT_EQ(cache.Get(), 1);
    cache.now = cache.now.addMSecs(1);
    EXPECT_EQ(cache.Get(), 2);
}

TEST_F(TimedCacheTest, CountsTheTimeFromTheLastRefreshAndNotFromTheLastCall) {
    cache.Get();
    cache.now = cache.now.addMSecs(1500);
    EXPECT_EQ(cache.Get(), 1);
    cache.now = cache.now.addMSecs(1500);
    EXPECT_EQ(cache.Get(), 2);
}

TEST_F(TimedCacheTest, AClockThatWasSetBackMakesTheValueTooOld) {
    cache.Get();
    cache.now = cache.now.addMSecs(-1999);
    EXPECT_EQ(cache.Get(), 1);
    cache.now = cache.now.addMSecs(-1);
    EXPECT_EQ(cache.Get(), 2);
}

TEST(TimedCacheLimitTest, AValueIsAsOldAsTheCallThatComputedIt) {
    int runs = 0;
    CacheWithClock* itself = nullptr;
    CacheWithClock cache(
        [&] {
            itself->now = itself->now.addSecs(2);
            return ++runs;
        },
        1000);
    itself = &cache;
    EXPECT_EQ(cache.Get(), 1);
    EXPECT_EQ(cache.Get(), 2);
}

TEST(TimedCacheLimitTest, ALimitIsOneOfWholeSeconds) {
    int runs = 0;
    CacheWithClock cache([&runs] { return ++runs; }, 3999);
    cache.Get();
    cache.now = cache.now.addMSecs(3999);
    EXPECT_EQ(cache.Get(), 1);
    cache.now = cache.now.addMSecs(1);
    EXPECT_EQ(cache.Get(), 2);
}

TEST(TimedCacheLimitTest, TheFirstCallComputesTheValueHoweverLongTheLimit) {
    CacheWithClock cache([] { return 1; }, 2147483647, 5);
    cache.now = QDateTime::fromMSecsSinceEpoch(0);
    EXPECT_EQ(cache.Get(), 1);
}

TEST(TimedCacheClockTest, TheClockIsTheOneOfTheMachine) {
    class Cache : public sync::core::TimedCache<int> {
    public:
        using sync::core::TimedCache<int>::TimedCache;
        QDateTime TimeOfItsClock() const { return _Now(); }
    };
    const QDateTime before = QDateTime::currentDateTime();
    const QDateTime now = Cache([] { return 1; }, 1000).TimeOfItsClock();
    EXPECT_LE(before, now);
    EXPECT_LE(now, QDateTime::currentDateTime());
    EXPECT_EQ(now.timeSpec(), Qt::LocalTime);
}

TEST(TimedCacheLimitTest, ALimitBelowASecondKeepsTheValueForTheRestOfTheSecond) {
    int runs = 0;
    CacheWithClock cache([&runs] { return ++runs; }, 999);
    cache.Get();
    cache.now = cache.now.addMSecs(999);
    EXPECT_EQ(cache.Get(), 1);
    cache.now = cache.now.addMSecs(1);
    EXPECT_EQ(cache.Get(), 2);
}

TEST(TimedCacheFailureTest, AnEmptyFunctionIsABadFunctionCall) {
    CacheWithClock cache(std::function<int()>(), 1000);
    EXPECT_THROW(cache.Get(), std::bad_function_call);
}

TEST(TimedCacheFailureTest, AFunctionThatThrewIsRunAgainByTheNextCall) {
    bool fails = true;
    CacheWithClock cache(
        [&fails] {
            if (fails) {
                throw std::runtime_error("not now");
            }
            return 7;
        },
        1000);
    EXPECT_THROW(cache.Get(), std::runtime_error);
    fails = false;
    EXPECT_EQ(cache.Get(), 7);
}

TEST(TimedCacheFailureTest, AValueThatIsTooOldIsNotGivenOutWhenItCannotBeComputed) {
    bool fails = false;
    CacheWithClock cache(
        [&fails] {
            if (fails) {
                throw std::runtime_error("not now");
            }
            return 7;
        },
        1000);
    EXPECT_EQ(cache.Get(), 7);
    fails = true;
    cache.now = cache.now.addSecs(2);
    EXPECT_THROW(cache.Get(), std::runtime_error);
    EXPECT_THROW(cache.Get(), std::runtime_error);
}

// Runs `operation` with every value, each in a thread of its own.
void InThreads(std::vector<int>& values, const std::function<void(int&)>& operation) {
    std::vector<std::thread> threads;
    threads.reserve(values.size());
    for (int& value : values) {
        threads.emplace_back([&operation, &value] { operation(value); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(TimedCacheThreadsTest, NeverRunsTheFunctionTwiceAtOnceAndReturnsOnlyWhatItGave) {
    const int threadCount = 8;
    std::atomic<int> inside{0};
    std::atomic<bool> twiceAtOnce{false};
    int runs = 0;
    // With a limit below zero every value is too old.
    CacheWithClock cache(
        [&] {
            if (++inside > 1) {
                twiceAtOnce = true;
            }
            // Takes time, so that another thread would come in.
            std::this_thread::yield();
            ++runs;
            --inside;
            return runs;
        },
        -1000);

    std::vector<int> last(threadCount);
    InThreads(last, [&cache](int& value) {
        for (int i = 0; i < 1000; ++i) {
            value = cache.Get();
        }
    });

    EXPECT_FALSE(twiceAtOnce);
    EXPECT_EQ(runs, 1000 * threadCount);
    for (const int value : last) {
        EXPECT_GE(value, 1000);
        EXPECT_LE(value, runs);
    }
}

/// Two halves that are always the same, with time between copying the one and the other.
struct Halves {
    Halves() = default;
    explicit Halves(int value) : first(value), second(value) {}
    Halves(const Halves& other) { *this = other; }
    Halves& operator=(const Halves& other) {
        first = other.first.load();
        std::this_thread::yield();
        second = other.second.load();
        return *this;
    }

    std::atomic<int> first{0};
    std::atomic<int> second{0};
};

TEST(TimedCacheThreadsTest, NeverReturnsAValueThatIsBeingReplaced) {
    std::atomic<int> runs{0};
    // With a limit below zero every value is too old.
    CacheOf<Halves> cache([&runs] { return Halves(++runs); }, -1000);
    std::vector<int> torn(8);
    InThreads(torn, [&cache](int& count) {
        for (int i = 0; i < 1000; ++i) {
            const Halves value = cache.Get();
            count += value.first == value.second ? 0 : 1;
        }
    });
    EXPECT_EQ(torn, std::vector<int>(8, 0));
}

TEST(TimedCacheThreadsTest, ThreadsThatFindItTooOldAtTheSameMomentAllGetTheNewValue) {
    std::atomic<int> runs{0};
    CacheWithClock cache(
        [&runs] {
            ++runs;
            return 7;
        },
        1000);
    std::vector<int> values(8);
    InThreads(values, [&cache](int& value) { value = cache.Get(); });
    EXPECT_EQ(values, std::vector<int>(8, 7));
    EXPECT_GE(runs, 1);
    EXPECT_LE(runs, 8);
}

}  // namespace
