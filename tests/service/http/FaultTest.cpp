#include "service/http/Fault.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "service/http/FaultPlan.h"

namespace service::http {
namespace {

std::string WhyNoFault(const std::string& text) {
    try {
        Fault::Parse(text);
        return "";
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

TEST(Fault, IsReadWithArgumentAndLimits) {
    const Fault fault = Fault::Parse("cut=17,method=PROPFIND,request=3");
    EXPECT_EQ(fault.kind, Fault::Kind::Cut);
    EXPECT_EQ(fault.number, 17);
    EXPECT_EQ(fault.method, "PROPFIND");
    EXPECT_EQ(fault.request, 3);
}

TEST(Fault, IsReadInEveryKind) {
    EXPECT_EQ(Fault::Parse("hang").kind, Fault::Kind::Hang);
    EXPECT_EQ(Fault::Parse("reset").kind, Fault::Kind::Reset);
    EXPECT_EQ(Fault::Parse("reset=5").kind, Fault::Kind::ResetInBody);
    EXPECT_EQ(Fault::Parse("redirect=302").number, 302);
    EXPECT_EQ(Fault::Parse("error-page").kind, Fault::Kind::ErrorPage);
    EXPECT_EQ(Fault::Parse("status=503").number, 503);
    EXPECT_EQ(Fault::Parse("content-type=text/html; charset=x").type, "text/html; charset=x");
    EXPECT_EQ(Fault::Parse("error-in-body=0").kind, Fault::Kind::ErrorInBody);
    EXPECT_EQ(Fault::Parse("drip").kind, Fault::Kind::Drip);
    EXPECT_EQ(Fault::Parse("content-length=+10").number, 10);
    EXPECT_EQ(Fault::Parse("content-length=-10").number, -10);
}

TEST(Fault, ThatIsNoneIsRefusedWithItsName) {
    EXPECT_THAT(WhyNoFault("explode"), testing::HasSubstr("'explode' is no kind of fault"));
    EXPECT_THAT(WhyNoFault(""), testing::HasSubstr("'' is no kind of fault"));
    EXPECT_THAT(WhyNoFault("cut"), testing::HasSubstr("'cut' needs an argument"));
    EXPECT_THAT(WhyNoFault("hang=1"), testing::HasSubstr("'hang' takes no argument"));
    EXPECT_THAT(WhyNoFault("cut=x"), testing::HasSubstr("'x' is no number"));
    EXPECT_THAT(WhyNoFault("cut=-1"), testing::HasSubstr("'-1' is no number from 0"));
    EXPECT_THAT(WhyNoFault("cut=1x"), testing::HasSubstr("'1x'"));
    EXPECT_THAT(WhyNoFault("redirect=303"), testing::HasSubstr("301, 302, 307 or 308"));
    EXPECT_THAT(WhyNoFault("status=99"), testing::HasSubstr("'99'"));
    EXPECT_THAT(WhyNoFault("content-type="), testing::HasSubstr("media type"));
    EXPECT_THAT(WhyNoFault("hang,method=PROPFNID"), testing::HasSubstr("'PROPFNID' is no method"));
    EXPECT_THAT(WhyNoFault("hang,method="), testing::HasSubstr("is no method"));
    EXPECT_THAT(WhyNoFault("hang,request=0"), testing::HasSubstr("'0' is no number from 1"));
    EXPECT_THAT(WhyNoFault("hang,often"), testing::HasSubstr("'often'"));
    EXPECT_THAT(WhyNoFault("hang,"), testing::HasSubstr("''"));
}

TEST(FaultPlan, CountsTheRequestsOfEachFaultBySeparateMethod) {
    FaultPlan plan({Fault::Parse("reset,method=PUT,request=2"), Fault::Parse("hang,request=4")});
    EXPECT_FALSE(plan.Next("PUT"));
    EXPECT_FALSE(plan.Next("GET"));
    const auto second = plan.Next("PUT");
    ASSERT_TRUE(second);
    EXPECT_EQ(second->kind, Fault::Kind::Reset);
    const auto fourth = plan.Next("GET");
    ASSERT_TRUE(fourth);
    EXPECT_EQ(fourth->kind, Fault::Kind::Hang);
    EXPECT_FALSE(plan.Next("PUT"));
}

TEST(FaultPlan, LetsTheFirstOfTwoFaultsWinAndCountsBoth) {
    FaultPlan plan({Fault::Parse("reset,request=1"), Fault::Parse("hang")});
    EXPECT_EQ(plan.Next("GET")->kind, Fault::Kind::Reset);
    EXPECT_EQ(plan.Next("GET")->kind, Fault::Kind::Hang);
}

}  // namespace
}  // namespace service::http
