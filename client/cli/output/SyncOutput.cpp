#include "client/cli/output/SyncOutput.h"

#include <iostream>
#include <nlohmann/json.hpp>

#include "client/cli/output/Complaint.h"
#include "client/cli/output/ProgressLine.h"
#include "client/wire/EnumTable.h"

namespace ovsync {
namespace output {

using report::SyncEvent;
using report::SyncOutcome;
using report::SyncProgress;
using Kind = SyncEvent::Kind;

namespace {

struct KindText {
    Kind kind;
    /// In JSON.
    const char* name;
    /// Before the path.
    const char* done;
    /// The same in a dry run.
    const char* wouldBeDone;
    /// In the summary; '#' stands for the number, '*' for the 's' of a plural.
    const char* counted;
    /// The same in a dry run, after "Would".
    const char* wouldBeCounted;
};

constexpr KindText Texts[] = {
    {Kind::Fetched, "fetched", "fetched", "would fetch", "# fetched", "fetch #"},
    {Kind::Updated, "updated", "updated", "would update", "# updated", "update #"},
    {Kind::Deleted, "deleted", "deleted", "would delete", "# deleted here", "delete # here"},
    {Kind::FolderMade, "folderMade", "made", "would make", "# folder* made", "make # folder*"},
    {Kind::Sent, "sent", "sent", "would send", "# sent", "send #"},
    {Kind::FolderSent, "folderSent", "made there", "would make there", "# folder* made on the service",
     "make # folder* on the service"},
    {Kind::Moved, "moved", "moved", "would move", "# moved here", "move # here"},
    {Kind::MovedThere, "movedThere", "moved there", "would move there", "# moved on the service",
     "move # on the service"},
    {Kind::DeletedThere, "deletedThere", "deleted there", "would delete there", "# deleted on the service",
     "delete # on the service"},
    {Kind::DeletedHere, "deletedHere", "only there", "only there", "# deleted here and still on the service",
     "leave # on the service"},
    {Kind::NewerThere, "newerThere", "newer there", "newer there", "# newer on the service",
     "leave # newer on the service"},
    {Kind::Skipped, "skipped", "skipped", "would skip", "# skipped", "skip #"},
    {Kind::Noted, "noted", "note on", "note on", "# note*", "make # note*"},
    {Kind::Conflict, "conflict", "conflict", "conflict", "# in conflict", "# in conflict"},
    {Kind::Kept, "kept", "kept", "would keep", "# kept", "# kept"},
    {Kind::Refused, "refused", "refused", "refused", "# refused", "# refused"},
    {Kind::Failed, "failed", "failed", "failed", "# failed", "# failed"},
    {Kind::Waiting, "waiting", "waiting", "waiting", "# deletion* waiting until all else is transferred",
     "# deletion* waiting until all else is transferred"},
};
static_assert(wire::HasRowOfEach(Texts, &KindText::kind, Kind::Waiting), "A kind is the index of its texts.");

const KindText& TextOf(Kind kind) {
    return Texts[static_cast<size_t>(kind)];
}

const char* NameOf(SyncOutcome outcome) {
    switch (outcome) {
        case SyncOutcome::InStep:
            return "inStep";
        case SyncOutcome::LeftSome:
            return "leftSome";
        case SyncOutcome::Failed:
            return "failed";
        case SyncOutcome::Cancelled:
            return "stopped";
    }
    return "";
}

QByteArray LineOf(const nlohmann::ordered_json& object) {
    return QByteArray::fromStdString(object.dump()) + '\n';
}

}  // namespace

SyncOutput::SyncOutput(Output& output, Format format, bool isDryRun, const ErrorText& errors, bool isVerbose,
                       const report::WaitingDeletions& waiting)
    : _output(output), _format(format), _isDryRun(isDryRun), _errors(errors), _isVerbose(isVerbose), _waiting(waiting) {
    _timer.start();
}

void SyncOutput::OnEvent(const SyncEvent& event) {
    const KindText& text = TextOf(event.kind);
    ++_counts[event.kind];
    _bytes += event.bytes;
    if (_format == Format::Json) {
        _WriteJson(event);
        return;
    }
    if (event.kind == Kind::Waiting) {
        _waiting.Add(event);
        return;
    }
    const ErrorMessage error = event.error ? _errors.Below(event.path).Of(event.error) : ErrorMessage{"", event.detail};
    const QString line = QLatin1String(_isDryRun ? text.wouldBeDone : text.done) + QLatin1Char(' ') + event.path +
                         (error.text.isEmpty() ? QString() : QLatin1String(": ") + error.text);
    if (event.IsProblem()) {
        _WriteProblem(line);
        if (_isVerbose && !error.detail.isEmpty()) {
            Complain(error.detail);
        }
    } else if (_format == Format::Lines || (_isDryRun && _format == Format::Bar)) {
        _output.Write(_output.Shown(line) + '\n');
    }
}

void SyncOutput::_WriteProblem(const QString& line) {
    _ClearBar();
    _output.Flush();
    std::cerr << ShownInErrors(line).toStdString() + '\n';
}

void SyncOutput::_WriteJson(const SyncEvent& event) {
    nlohmann::ordered_json object = {{"event", TextOf(event.kind).name}, {"path", event.path.toStdString()}};
    if (event.kind == Kind::Fetched || event.kind == Kind::Updated || event.kind == Kind::Sent) {
        object["bytes"] = event.bytes;
    }
    if (event.error) {
        const ErrorMessage error = _errors.Below(event.path).Of(event.error);
        object["error"] = error.text.toStdString();
        object["kind"] = error.kind;
        if (error.status != 0) {
            object["status"] = error.status;
        }
    }
    if (!event.detail.isEmpty()) {
        object["detail"] = event.detail.toStdString();
    }
    _output.Write(LineOf(object));
}

void SyncOutput::OnProgress(const SyncProgress& progress) {
    if (_format == Format::Bar) {
        std::cerr << LineStart << ProgressLine(progress, std::chrono::milliseconds(_timer.elapsed())).constData()
                  << std::flush;
        _isBarShown = true;
    } else if (_format == Format::Json) {
        _output.Write(LineOf({{"event", "progress"},
                              {"files", progress.doneFiles},
                              {"allFiles", progress.allFiles},
                              {"bytes", progress.doneBytes},
                              {"allBytes", progress.allBytes}}));
    }
    _output.Flush();
}

void SyncOutput::Summarise(SyncOutcome outcome) {
    _ClearBar();
    if (_format == Format::Json) {
        nlohmann::ordered_json object = {{"event", "summary"}, {"outcome", NameOf(outcome)}, {"dryRun", _isDryRun}};
        for (const KindText& text : Texts) {
            object[text.name] = _counts[text.kind];
        }
        object["bytes"] = _bytes;
        object["seconds"] = static_cast<double>(_timer.elapsed()) / 1000;
        _output.Write(LineOf(object));
        _output.Flush();
        return;
    }
    if (const std::optional<SyncEvent> waiting = _waiting.Told()) {
        _WriteProblem(QLatin1String(TextOf(Kind::Waiting).done) + QLatin1Char(' ') + waiting->path +
                      QLatin1String(": ") + waiting->detail);
    }
    if (_format == Format::Quiet) {
        return;
    }
    const QByteArray done = _Counted(false);
    const QByteArray left = _Counted(true);
    QByteArray line = _isDryRun && !done.isEmpty() ? "Would " + done : done;
    line += (line.isEmpty() || left.isEmpty() ? "" : _isDryRun ? "; " : ", ") + left;
    const bool isCancelled = outcome == SyncOutcome::Cancelled;
    if (line.isEmpty() && outcome == SyncOutcome::Failed) {
        return;
    }
    if (isCancelled) {
        line = line.isEmpty() ? "Stopped" : "Stopped: " + line;
    } else if (line.isEmpty()) {
        line = "Nothing to do";
    }
    if (_bytes > 0) {
        line += " (" + SizeText(_bytes) + ')';
    }
    if (!_isDryRun && !isCancelled) {
        line += " in " + QByteArray::number(static_cast<double>(_timer.elapsed()) / 1000, 'f', 1) + " s";
    }
    _output.Write(line + '\n');
    _output.Flush();
}

QByteArray SyncOutput::_Counted(bool isProblem) {
    QByteArray line;
    for (const KindText& text : Texts) {
        const int count = _counts[text.kind];
        if (count > 0 && (text.kind >= Kind::Conflict) == isProblem) {
            line += (line.isEmpty() ? "" : ", ") + QByteArray(_isDryRun ? text.wouldBeCounted : text.counted)
                                                       .replace('*', count == 1 ? "" : "s")
                                                       .replace('#', QByteArray::number(count));
        }
    }
    return line;
}

void SyncOutput::_ClearBar() {
    if (_isBarShown) {
        std::cerr << LineStart << std::flush;
        _isBarShown = false;
    }
}

}  // namespace output
}  // namespace ovsync
