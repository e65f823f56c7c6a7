#include "host/core/Finally.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using sync::core::Finally;

TEST(FinallyTest, TheActionRunsOnceWhenTheScopeIsLeft) {
    int runs = 0;
    {
        const Finally finally([&] { ++runs; });
        EXPECT_EQ(runs, 0);
    }
    EXPECT_EQ(runs, 1);
}

TEST(FinallyTest, TheActionRunsWhenAnExceptionPasses) {
    int runs = 0;
    const auto fail = [&] {
        const Finally finally([&] { ++runs; });
        throw std::runtime_error("passes");
    };
    EXPECT_THROW(fail(), std::runtime_error);
    EXPECT_EQ(runs, 1);
}

TEST(FinallyTest, AnEmptyActionIsABadFunctionCall) {
    EXPECT_THROW(const Finally finally{std::function<void()>()}, std::bad_function_call);
}

}  // namespace
