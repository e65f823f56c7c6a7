#include "client/agent/FolderSchedule.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using ovsync::agent::FolderSchedule;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using ScheduleEnd = FolderSchedule::End;
using Time = FolderSchedule::Time;

class FolderScheduleTest : public testing::Test {
protected:
    FolderScheduleTest() { _schedule.SetIntervals(seconds(60), seconds(0)); }

    void Pass(Time end, ScheduleEnd how = ScheduleEnd::Done) {
        _schedule.BeginPass();
        _schedule.EndPass(end, how);
    }

    /// How long it is waited after each of so many failures in a row.
    std::vector<Time> Delays(int failures) {
        std::vector<Time> delays;
        for (int i = 0; i < failures; ++i) {
            Pass(_now, ScheduleEnd::Failed);
            delays.push_back(*_schedule.Due() - _now);
            _now = *_schedule.Due();
        }
        return delays;
    }

    Time _now = seconds(1000);
    double _random = 0;
    FolderSchedule _schedule{_now, [this] { return _random; }};
};

TEST_F(FolderScheduleTest, TheFirstPassIsDueAtOnce) {
    EXPECT_EQ(_schedule.Due(), Time(seconds(1000)));
}

TEST_F(FolderScheduleTest, AfterAPassTheNextIsDueWhenTheFrequencySays) {
    Pass(seconds(1010));
    EXPECT_EQ(_schedule.Due(), Time(seconds(1070)));
    _schedule.SetIntervals(seconds(15), seconds(0));
    EXPECT_EQ(_schedule.Due(), Time(seconds(1070)));
    Pass(seconds(1071));
    EXPECT_EQ(_schedule.Due(), Time(seconds(1086)));
}

TEST_F(FolderScheduleTest, AChangeIsDueWhenItHasSettled) {
    Pass(seconds(1000));
    _schedule.NoteChange(seconds(1010));
    EXPECT_EQ(_schedule.Due(), Time(seconds(1012)));
    _schedule.NoteChange(milliseconds(1011500));
    EXPECT_EQ(_schedule.Due(), Time(milliseconds(1013500)));
}

TEST_F(FolderScheduleTest, ChangesWithoutAnEndPutAPassOffForHalfAMinute) {
    _schedule.SetIntervals(seconds(1000), seconds(0));
    Pass(seconds(1000));
    for (seconds time(1010); time <= seconds(1039); ++time) {
        _schedule.NoteChange(time);
    }
    EXPECT_EQ(_schedule.Due(), Time(seconds(1040)));
    // After the pass they settle anew.
    Pass(seconds(1041));
    _schedule.NoteChange(seconds(1042));
    EXPECT_EQ(_schedule.Due(), Time(seconds(1044)));
}

TEST_F(FolderScheduleTest, AChangeDoesNotPutOffThePassThatIsDueAnyway) {
    Pass(seconds(1000));
    _schedule.NoteChange(milliseconds(1059500));
    EXPECT_EQ(_schedule.Due(), Time(seconds(1060)));
}

TEST_F(FolderScheduleTest, AChangeWhileAPassGoesOnIsForTheNextOne) {
    _schedule.BeginPass();
    _schedule.NoteChange(seconds(1005));
    _schedule.EndPass(seconds(1006), ScheduleEnd::Done);
    EXPECT_EQ(_schedule.Due(), Time(seconds(1007)));
}

TEST_F(FolderScheduleTest, AChangeBeforeAPassIsNotForTheNextOne) {
    _schedule.NoteChange(seconds(999));
    Pass(seconds(1001));
    EXPECT_EQ(_schedule.Due(), Time(seconds(1061)));
}

TEST_F(FolderScheduleTest, AFailureWaitsAsTheServiceSaysAndLongerEachTime) {
    const std::vector<Time> expected{seconds(0),   seconds(5),   seconds(10),  seconds(20), seconds(40), seconds(80),
                                     seconds(160), seconds(320), seconds(640), minutes(15), minutes(15)};
    EXPECT_EQ(Delays(11), expected);
}

TEST_F(FolderScheduleTest, AFailureWaitsAtLeastAsLongAsTheServiceSays) {
    _schedule.SetIntervals(seconds(60), seconds(100));
    const std::vector<Time> expected{seconds(100), seconds(200), seconds(400), seconds(800), minutes(15)};
    EXPECT_EQ(Delays(5), expected);
}

TEST_F(FolderScheduleTest, NoServiceHasItWaitLongerThanAQuarterOfAnHour) {
    _schedule.SetIntervals(seconds(60), std::chrono::hours(5));
    EXPECT_EQ(Delays(2), std::vector<Time>({minutes(15), minutes(15)}));
}

TEST_F(FolderScheduleTest, WaitsAreSpreadByUpToAHalfAndNoFurtherThanTheLongest) {
    _random = 0.5;
    EXPECT_EQ(Delays(9), std::vector<Time>({seconds(0), milliseconds(6250), milliseconds(12500), seconds(25),
                                            seconds(50), seconds(100), seconds(200), seconds(400), seconds(800)}));
    _random = 0.999;
    EXPECT_EQ(Delays(1).front(), Time(minutes(15)));
}

TEST_F(FolderScheduleTest, AChangeDoesNotShortenTheWaitAfterAFailure) {
    Delays(3);
    Pass(_now, ScheduleEnd::Failed);
    const Time due = *_schedule.Due();
    _schedule.NoteChange(_now);
    EXPECT_EQ(_schedule.Due(), due);
}

TEST_F(FolderScheduleTest, WhoMayReadAndWriteHereIsAReasonToTryAgainAfterFailures) {
    Delays(8);
    Pass(_now, ScheduleEnd::Failed);
    _schedule.NoteAccess(_now);
    EXPECT_EQ(_schedule.Due(), _now + seconds(2));
    EXPECT_EQ(Delays(2), std::vector<Time>({seconds(0), seconds(5)}));
    Pass(_now, ScheduleEnd::Rejected);
    _schedule.NoteAccess(_now);
    EXPECT_EQ(_schedule.Due(), std::nullopt);
}

TEST_F(FolderScheduleTest, APassThatIsDoneEndsTheFailures) {
    Delays(5);
    Pass(_now);
    EXPECT_EQ(_schedule.Due(), _now + seconds(60));
    EXPECT_EQ(Delays(2), std::vector<Time>({seconds(0), seconds(5)}));
}

TEST_F(FolderScheduleTest, AfterARejectionNoPassIsDueWhateverChanges) {
    Pass(seconds(1001), ScheduleEnd::Rejected);
    EXPECT_EQ(_schedule.Due(), std::nullopt);
    _schedule.NoteChange(seconds(1002));
    EXPECT_EQ(_schedule.Due(), std::nullopt);
}

TEST_F(FolderScheduleTest, TryingAgainForgetsRejectionAndFailures) {
    Pass(seconds(1001), ScheduleEnd::Rejected);
    _schedule.TryAgain(seconds(1002));
    EXPECT_EQ(_schedule.Due(), Time(seconds(1002)));
    _now = seconds(1002);
    Delays(5);
    _schedule.TryAgain(_now);
    EXPECT_EQ(_schedule.Due(), _now);
    EXPECT_EQ(Delays(2), std::vector<Time>({seconds(0), seconds(5)}));
}

TEST_F(FolderScheduleTest, AChangeBeforeARejectionIsNotForgottenAfterIt) {
    _schedule.BeginPass();
    _schedule.NoteChange(seconds(1001));
    _schedule.EndPass(seconds(1002), ScheduleEnd::Rejected);
    _schedule.TryAgain(seconds(2000));
    EXPECT_EQ(_schedule.Due(), Time(seconds(1003)));
}

}  // namespace
