#pragma once

#include <QElapsedTimer>
#include <map>

#include "client/cli/output/ErrorText.h"
#include "client/cli/output/Output.h"
#include "client/sync/report/ISyncObserver.h"
#include "client/sync/report/SyncOutcome.h"
#include "client/sync/report/WaitingDeletions.h"

namespace ovsync {
namespace output {

/// Tells a person, or with JSON a program, what a pass does. What it did goes to standard output, a line each, and what
/// somebody still has to do to standard error. On a terminal a bar stands for what was merely transferred. As JSON
/// everything is an object on a line of standard output. Failures are worded by an ErrorText. Not thread-safe.
class SyncOutput : public report::ISyncObserver {
public:
    /// Quiet: only what somebody still has to do.
    enum class Format { Lines, Bar, Quiet, Json };

    /// `output` outlives this object. The lines of a dry run say what would be done, all of it. `isVerbose`: with the
    /// details of failures. `waiting` has none yet.
    SyncOutput(Output& output, Format format, bool isDryRun, const ErrorText& errors, bool isVerbose,
               const report::WaitingDeletions& waiting = report::WaitingDeletions());

    void OnEvent(const report::SyncEvent& event) override;
    void OnProgress(const report::SyncProgress& progress) override;

    /// The last line, after everything else; as text none after a failure before anything was done.
    void Summarise(report::SyncOutcome outcome);

private:
    void _WriteJson(const report::SyncEvent& event);
    void _WriteProblem(const QString& line);
    /// What was done, or would be, and what is left, each by its number.
    QByteArray _Counted(bool isProblem);
    void _ClearBar();

    Output& _output;
    const Format _format;
    const bool _isDryRun;
    const ErrorText _errors;
    const bool _isVerbose;
    QElapsedTimer _timer;
    bool _isBarShown = false;
    std::map<report::SyncEvent::Kind, int> _counts;
    report::WaitingDeletions _waiting;
    qint64 _bytes = 0;
};

}  // namespace output
}  // namespace ovsync
