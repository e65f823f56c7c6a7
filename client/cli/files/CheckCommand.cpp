#include "client/cli/files/CheckCommand.h"

#include <CLI/CLI.hpp>
#include <map>
#include <nlohmann/json.hpp>

#include "client/cli/input/AbsolutePath.h"
#include "client/cli/input/ServiceFolderAt.h"
#include "client/cli/output/ErrorText.h"
#include "client/sync/check/CheckPass.h"
#include "client/sync/local/LocalTree.h"
#include "client/wire/EnumTable.h"

namespace ovsync {
namespace files {

using check::CheckFinding;
using check::CheckPass;
using commands::CommandRegistry;
using input::Arguments;
using input::Location;
using library::ServiceConnection;
using output::ErrorText;
using output::ExitCode;
using output::Output;

using Kind = CheckFinding::Kind;

namespace {

struct FindingText {
    Kind kind;
    /// In JSON.
    const char* name;
    /// Before the path, and after the number in the summary.
    const char* text;
};

constexpr FindingText FindingTexts[] = {
    {Kind::Skipped, "skipped", "skipped"},        {Kind::OnlyHere, "onlyHere", "only here"},
    {Kind::OnlyThere, "onlyThere", "only there"}, {Kind::Different, "different", "different"},
    {Kind::Unknown, "unknown", "unknown"},
};
static_assert(wire::HasRowOfEach(FindingTexts, &FindingText::kind, Kind::Unknown), "A kind is the index of its texts.");

class CheckOutput {
public:
    CheckOutput(Output& output, const Arguments& given, const ErrorText& errors)
        : _output(output), _given(given), _errors(errors) {}

    void Tell(const CheckFinding& finding) {
        const FindingText& text = FindingTexts[static_cast<size_t>(finding.kind)];
        ++_counts[finding.kind];
        _isSame = _isSame && finding.kind == Kind::Skipped;
        if (_given.isJson) {
            nlohmann::ordered_json object = {{"event", text.name}, {"path", finding.path.toStdString()}};
            if (finding.error) {
                object["error"] = _errors.Of(finding.error).text.toStdString();
            }
            if (!finding.detail.isEmpty()) {
                object["detail"] = finding.detail.toStdString();
            }
            _Write(object);
            return;
        }
        const bool isWorded = finding.error && !_given.isVerbose;
        const QString reason = isWorded ? _errors.Of(finding.error).text : finding.detail;
        const QString detail = reason.isEmpty() ? QString() : QStringLiteral(": ") + reason;
        _output.Write(QByteArray(text.text) + ' ' + _output.Shown(finding.path + detail) + '\n');
    }

    void Summarise(const CheckPass& pass) {
        if (_given.isJson) {
            nlohmann::ordered_json object = {
                {"event", "summary"}, {"same", pass.Same()}, {"sameBySizeAlone", pass.SameBySizeAlone()}};
            for (const FindingText& text : FindingTexts) {
                object[text.name] = _counts[text.kind];
            }
            _Write(object);
            return;
        }
        if (_given.isQuiet) {
            return;
        }
        QByteArray line = QByteArray::number(pass.Same()) + (pass.Same() == 1 ? " file" : " files") + " the same";
        if (pass.SameBySizeAlone() > 0) {
            line += " (" + QByteArray::number(pass.SameBySizeAlone()) + " by size alone; --download compares content)";
        }
        for (const FindingText& text : FindingTexts) {
            if (const int count = _counts[text.kind]) {
                line += ", " + QByteArray::number(count) + ' ' + text.text;
            }
        }
        _output.Write(line + '\n');
    }

    bool IsSame() const { return _isSame; }

private:
    void _Write(const nlohmann::ordered_json& object) {
        _output.Write(QByteArray::fromStdString(object.dump()) + '\n');
    }

    Output& _output;
    const Arguments& _given;
    const ErrorText _errors;
    std::map<Kind, int> _counts;
    bool _isSame = true;
};

ExitCode Check(ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
    const QString root = input::AbsolutePath(QString::fromStdString(given.directory));
    local::LocalTree tree(root);
    const local::Exclusion exclusion = given.Excluded();
    const pass::ServiceFolder service = input::ServiceFolderAt(connection, location, root);
    CheckOutput told(output, given, ErrorText({location.Server(), location.serverPath, QStringLiteral("file")}));
    const CheckPass::Teller tell = [&told](const CheckFinding& finding) { told.Tell(finding); };
    CheckPass pass(service, tree, exclusion, given.downloads, tell);
    pass.Run();
    told.Summarise(pass);
    return told.IsSame() ? ExitCode::Done : ExitCode::Refused;
}

}  // namespace

void AddCheckCommand(CommandRegistry& registry) {
    CLI::App* const command = registry.AddCommand(
        "check", "Compares a local folder with a folder of the service, and changes nothing.", Check);
    CommandRegistry::AddText(command, "DIR", "The local folder, which must be there", registry.Given().directory);
    CommandRegistry::AddText(command, "URL", "The folder, for example http://host/folder/", registry.Given().url);
    registry.AddExclude(command);
    command->add_flag("--download", registry.Given().downloads,
                      "Compare the content itself where the service knows no checksum, and not the size alone");
    registry.AddBandwidth(command);
}

}  // namespace files
}  // namespace ovsync
