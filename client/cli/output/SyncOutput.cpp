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
    /// After the number, in the summary; '*' stands where a plural has its 's'.
    const char* counted;
};

constexpr KindText Texts[] = {
    {Kind::Fetched, "fetched", "fetched", "fetched"},
    {Kind::Updated, "updated", "updated", "updated"},
    {Kind::Deleted, "deleted", "deleted", "deleted here"},
    {Kind::FolderMade, "folderMade", "made", "folder* made"},
    {Kind::Sent, "sent", "sent", "sent"},
    {Kind::FolderSent, "folderSent", "made there", "folder* made on the service"},
    {Kind::DeletedThere, "deletedThere", "deleted there", "deleted on the service"},
    {Kind::DeletedHere, "deletedHere", "only there", "deleted here and still on the service"},
    {Kind::NewerThere, "newerThere", "newer there", "newer on the service"},
    {Kind::Skipped, "skipped", "skipped", "skipped"},
    {Kind::Noted, "noted", "note on", "note*"},
    {Kind::Conflict, "conflict", "conflict", "in conflict"},
    {Kind::Kept, "kept", "kept", "kept"},
    {Kind::Refused, "refused", "refused", "refused"},
    {Kind::Failed, "failed", "failed", "failed"},
};
static_assert(wire::HasRowOfEach(Texts, &KindText::kind, Kind::Failed), "A kind is the index of its texts.");

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

SyncOutput::SyncOutput(Output& output, Format format, bool isDryRun)
    : _output(output), _format(format), _isTrial(isDryRun) {
    _timer.start();
}

void SyncOutput::OnEvent(const SyncEvent& event) {
    const KindText& text = TextOf(event.kind);
    ++_counts[event.kind];
    _bytes += event.bytes;
    if (_format == Format::Json) {
        nlohmann::ordered_json object = {{"event", text.name}, {"path", event.path.toStdString()}};
        if (event.kind == Kind::Fetched || event.kind == Kind::Updated || event.kind == Kind::Sent) {
            object["bytes"] = event.bytes;
        }
        if (!event.detail.isEmpty()) {
            object["detail"] = event.detail.toStdString();
        }
        _output.Write(LineOf(object));
        return;
    }
    const QString line = QLatin1String(text.done) + QLatin1Char(' ') + event.path +
                         (event.detail.isEmpty() ? QString() : QLatin1String(": ") + event.detail);
    if (event.IsProblem()) {
        _ClearBar();
        _output.Flush();
        std::cerr << ShownInErrors(line).toStdString() + '\n';
    } else if (_format == Format::Lines || _isTrial) {
        _output.Write(_output.Shown(line) + '\n');
    }
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
        nlohmann::ordered_json object = {{"event", "summary"}, {"outcome", NameOf(outcome)}, {"dryRun", _isTrial}};
        for (const KindText& text : Texts) {
            object[text.name] = _counts[text.kind];
        }
        object["bytes"] = _bytes;
        object["seconds"] = static_cast<double>(_timer.elapsed()) / 1000;
        _output.Write(LineOf(object));
        _output.Flush();
        return;
    }
    QByteArray line;
    for (const KindText& text : Texts) {
        if (const int count = _counts[text.kind]) {
            line += (line.isEmpty() ? "" : ", ") + QByteArray::number(count) + ' ' +
                    QByteArray(text.counted).replace('*', count == 1 ? "" : "s");
        }
    }
    if (line.isEmpty()) {
        if (outcome == SyncOutcome::Failed) {
            return;
        }
        line = "Nothing to do";
    }
    if (_bytes > 0) {
        line += " (" + SizeText(_bytes) + ')';
    }
    if (_isTrial) {
        line = "Would be done: " + line;
    } else if (outcome == SyncOutcome::Cancelled) {
        line = "Stopped: " + line;
    } else {
        line += " in " + QByteArray::number(static_cast<double>(_timer.elapsed()) / 1000, 'f', 1) + " s";
    }
    _output.Write(line + '\n');
    _output.Flush();
}

void SyncOutput::_ClearBar() {
    if (_isBarShown) {
        std::cerr << LineStart << std::flush;
        _isBarShown = false;
    }
}

}  // namespace output
}  // namespace ovsync
