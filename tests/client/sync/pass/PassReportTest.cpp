#include "client/sync/pass/PassReport.h"

#include <gtest/gtest.h>

#include <QVector>
#include <atomic>
#include <cerrno>

#include "client/store/StoreError.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/report/Cancelled.h"
#include "host/http/HttpException.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::local::LocalError;
using ovsync::pass::PassReport;
using ovsync::pass::SyncOptions;
using ovsync::report::Cancelled;
using ovsync::report::SyncEvent;
using ovsync::report::SyncOutcome;
using ovsync::store::StoreError;
using sync::core::SyncException;
using sync::http::HttpException;
using tests::Text;

class PassReportTest : public testing::Test, private ovsync::report::ISyncObserver {
protected:
    PassReportTest() : report(_options, *this) { _options.isStopped = &isStopped; }

    template <typename Error>
    void Fail(const Error& error) {
        report.TellFailure(Text("a"), std::make_exception_ptr(error));
    }

    void BeStrict() { _options.isStrict = true; }

    std::atomic<bool> isStopped{false};
    QVector<SyncEvent> events;

private:
    void OnEvent(const SyncEvent& event) override { events.append(event); }
    void OnProgress(const ovsync::report::SyncProgress& /*progress*/) override {}

    SyncOptions _options;

protected:
    PassReport report;
};

HttpException Answer(int status) {
    return HttpException(Text("answer"), status, QUrl());
}

TEST_F(PassReportTest, TheThirdFailureInARowIsTooMuch) {
    const SyncException failure(Text("reset"));
    Fail(failure);
    Fail(Answer(503));
    report.TellSuccess();
    Fail(failure);
    Fail(failure);
    EXPECT_THROW(Fail(failure), SyncException);
    ASSERT_EQ(events.size(), 5);
    EXPECT_EQ(events.last().kind, SyncEvent::Kind::Failed);
    EXPECT_EQ(events.last().detail, Text("reset"));
    EXPECT_EQ(report.Outcome(), SyncOutcome::Failed);
}

TEST_F(PassReportTest, WhoeverAsksForPatienceOrAnswersForTheServiceDoesNotRefuse) {
    for (const int status : {429, 502, 504, 511, 302}) {
        Fail(Answer(status));
        report.TellSuccess();
        EXPECT_EQ(events.last().kind, SyncEvent::Kind::Failed) << status;
    }
}

TEST_F(PassReportTest, WhatTheServiceOrTheDiskRefusesForOneFileIsNoFailureOfAll) {
    for (int i = 0; i < 5; ++i) {
        Fail(Answer(403));
        Fail(LocalError(Text("a"), EACCES));
    }
    ASSERT_EQ(events.size(), 10);
    EXPECT_EQ(events[0].kind, SyncEvent::Kind::Refused);
    EXPECT_EQ(events[1].kind, SyncEvent::Kind::Refused);
    EXPECT_EQ(report.Outcome(), SyncOutcome::LeftSome);
}

TEST_F(PassReportTest, WhatConcernsAllFilesEndsThePass) {
    EXPECT_THROW(Fail(Answer(401)), HttpException);
    EXPECT_THROW(Fail(Answer(407)), HttpException);
    EXPECT_THROW(Fail(LocalError(Text("a"), ENOSPC)), LocalError);
    EXPECT_THROW(Fail(StoreError(Text("records"))), StoreError);
    EXPECT_TRUE(events.isEmpty());
}

TEST_F(PassReportTest, AFailureOfAPassThatIsStoppedIsNotToldOf) {
    report.ThrowIfStopped();
    isStopped = true;
    EXPECT_THROW(Fail(Answer(404)), HttpException);
    EXPECT_TRUE(events.isEmpty());
    EXPECT_THROW(report.ThrowIfStopped(), Cancelled);
}

TEST_F(PassReportTest, TheWorstThatWasToldOfIsTheOutcome) {
    EXPECT_EQ(report.Outcome(), SyncOutcome::InStep);
    report.Tell(SyncEvent::Kind::Fetched, Text("a"), QString(), 5);
    report.Tell(SyncEvent::Kind::Skipped, Text("link"));
    EXPECT_EQ(report.Outcome(), SyncOutcome::InStep);
    report.Tell({{SyncEvent::Kind::Conflict, Text("b"), QString()}, {SyncEvent::Kind::Noted, Text("c"), QString()}});
    EXPECT_EQ(report.Outcome(), SyncOutcome::LeftSome);
    report.Tell(SyncEvent::Kind::Failed, Text("d"));
    report.Tell(SyncEvent::Kind::Kept, Text("e"));
    EXPECT_EQ(report.Outcome(), SyncOutcome::Failed);
    EXPECT_EQ(events.size(), 6);
    EXPECT_EQ(events.first().bytes, 5);
}

TEST_F(PassReportTest, WhatIsNeverSyncedIsAProblemForWhoeverIsStrict) {
    BeStrict();
    report.Tell(SyncEvent::Kind::Skipped, Text("link"));
    EXPECT_EQ(report.Outcome(), SyncOutcome::LeftSome);
}

}  // namespace
