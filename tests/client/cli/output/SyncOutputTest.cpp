#include "client/cli/output/SyncOutput.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QUrl>

#include "host/http/HttpException.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::output::ErrorText;
using ovsync::output::Output;
using ovsync::output::SyncOutput;
using ovsync::report::SyncEvent;
using ovsync::report::SyncOutcome;
using ovsync::report::WaitingDeletions;
using sync::http::HttpException;
using testing::HasSubstr;
using tests::Text;
using Format = SyncOutput::Format;

struct PassLines {
    std::string output;
    std::string errors;
};

PassLines LinesOf(const QVector<SyncEvent>& events, Format format = Format::Lines, bool isLimitGiven = false) {
    ErrorText::Context context;
    context.server = Text("host:81");
    context.path = Text("root");
    context.thing = Text("file or folder");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    {
        Output output;
        SyncOutput observer(output, format, false, ErrorText(context), false, WaitingDeletions(isLimitGiven));
        for (const SyncEvent& event : events) {
            observer.OnEvent(event);
        }
        observer.Summarise(SyncOutcome::LeftSome);
    }
    PassLines written;
    written.output = testing::internal::GetCapturedStdout();
    written.errors = testing::internal::GetCapturedStderr();
    return written;
}

const SyncEvent OneRefused{SyncEvent::Kind::Refused, Text("locked"), Text("no permission")};

SyncEvent OneWaiting(const char* path) {
    return {SyncEvent::Kind::Waiting, Text(path), Text("it was deleted on the service")};
}

TEST(SyncOutputTest, ManyDeletionsThatWaitAreOneLineAndHaveTheirCauseInTheSummary) {
    const PassLines written = LinesOf({OneWaiting("a"), OneRefused, OneWaiting("b"), OneWaiting("c")});
    EXPECT_EQ(written.errors,
              "refused locked: no permission\n"
              "waiting .: 3 deletions wait until everything else is transferred; they follow by themselves once what "
              "else is named is mended\n");
    EXPECT_THAT(written.output, HasSubstr("1 refused, 3 deletions waiting until all else is transferred in "));
}

TEST(SyncOutputTest, ADeletionThatWaitsAloneIsNamed) {
    const PassLines written = LinesOf({OneWaiting("a")}, Format::Quiet);
    EXPECT_EQ(written.errors, "waiting a: it was deleted on the service\n");
    EXPECT_EQ(written.output, "");
}

TEST(SyncOutputTest, DeletionsThatNeedALimitDoNotFollowWithoutIt) {
    EXPECT_EQ(LinesOf({OneWaiting("a")}, Format::Quiet, true).errors,
              "waiting a: it was deleted on the service; it follows in a pass with the same --max-delete\n");
    EXPECT_EQ(LinesOf({OneWaiting("a"), OneWaiting("b")}, Format::Quiet, true).errors,
              "waiting .: 2 deletions wait until everything else is transferred; they follow in a pass with the same "
              "--max-delete once what else is named is mended\n");
}

TEST(SyncOutputTest, JsonHasEachDeletionThatWaits) {
    const PassLines written = LinesOf({OneWaiting("a"), OneWaiting("b")}, Format::Json);
    EXPECT_EQ(written.errors, "");
    EXPECT_THAT(written.output,
                HasSubstr(R"({"event":"waiting","path":"a","detail":"it was deleted on the service"})"));
    EXPECT_THAT(written.output, HasSubstr(R"("waiting":2)"));
}

TEST(SyncOutputTest, AFailureOfAFileNamesTheFileAndNotTheFolderThatIsSynced) {
    const auto gone = std::make_exception_ptr(HttpException(Text("Failed to find it."), 404, QUrl()));
    const PassLines written = LinesOf({{SyncEvent::Kind::Refused, Text("d/f5"), QString(), 0, gone}});
    EXPECT_EQ(written.errors, "refused d/f5: there is no file or folder \"root/d/f5\" on host:81\n");
    EXPECT_THAT(LinesOf({{SyncEvent::Kind::Refused, Text("."), QString(), 0, gone}}).errors,
                HasSubstr("there is no file or folder \"root\" on"));
}

}  // namespace
