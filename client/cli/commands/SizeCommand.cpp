#include "client/cli/commands/SizeCommand.h"

#include <CLI/CLI.hpp>
#include <QStringList>
#include <map>
#include <nlohmann/json.hpp>

#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/input/NumberRange.h"
#include "client/cli/output/ProgressLine.h"
#include "client/wire/HttpStatus.h"
#include "client/wire/ListingSupplement.h"
#include "host/interfaces/ISyncFilter.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using library::ServiceConnection;
using output::Output;
using output::SizeText;
using wire::HttpStatus;
using wire::ListingSupplement;

namespace {

const int MostLevels = 1000;

struct Total {
    qint64 files = 0;
    qint64 bytes = 0;
};

/// The library sums 32 bits of each size, with their sign. What it counts it first shows to this filter, which adds up
/// the true sizes. It decides on whole paths, and so leaves the folders among them in until the file has come.
class TreeMeasure : public sync::interf::ISyncFilter {
public:
    TreeMeasure(const ServiceConnection& connection, const Location& location, const Arguments& given)
        : _connection(connection),
          _prefix(location.serverPath.isEmpty() ? QString() : location.serverPath + QLatin1Char('/')),
          _excluded(given.Excluded()),
          _depth(given.depth) {}

    bool IsFolderExcluded(const QString& component, int /*kind*/) override {
        if (!component.isEmpty()) {
            _folders.append(component);
        }
        return false;
    }

    bool IsFileExcluded(const QString& name, qint64 size, int /*kind*/) override {
        const QStringList folders = std::exchange(_folders, {});
        const QString path = (folders + QStringList(name)).join(QLatin1Char('/'));
        if (_excluded.HasFileAt(path)) {
            return true;
        }
        // A file that was asked for itself has no path below.
        const qint64 listed = _connection.SizeOf(path.isEmpty() ? _prefix.chopped(1) : _prefix + path, size);
        const qint64 bytes = listed < 0 ? static_cast<qint64>(ListingSupplement::LeastSize) : listed;
        _Add(_all, bytes);
        for (int level = 1; level <= std::min(_depth, static_cast<int>(folders.size())); ++level) {
            _Add(_byFolder[folders.mid(0, level).join(QLatin1Char('/'))], bytes);
        }
        return false;
    }

    /// A folder that may have nothing in it. `serverPath` may end in a '/'.
    void AddFolder(const QString& serverPath) {
        QString path = serverPath.mid(_prefix.size());
        path.chop(path.endsWith(QLatin1Char('/')) ? 1 : 0);
        if (serverPath.startsWith(_prefix) && !path.isEmpty() && path.count(QLatin1Char('/')) < _depth &&
            !_excluded.HasFolderAt(path)) {
            _byFolder[path];
        }
    }

    const Total& All() const { return _all; }
    const std::map<QString, Total>& ByFolder() const { return _byFolder; }

private:
    static void _Add(Total& total, qint64 bytes) {
        ++total.files;
        total.bytes += bytes;
    }

    const ServiceConnection& _connection;
    const QString _prefix;
    const local::Exclusion _excluded;
    const int _depth;
    QStringList _folders;
    Total _all;
    std::map<QString, Total> _byFolder;
};

QByteArray Counted(qint64 number, const char* unit) {
    return QByteArray::number(number) + ' ' + unit + (number == 1 ? "" : "s");
}

QByteArray Text(const TreeMeasure& measure, bool inBytes, const Output& output) {
    QByteArray text;
    for (const auto& [path, total] : measure.ByFolder()) {
        const QByteArray size = inBytes ? QByteArray::number(total.bytes) : SizeText(total.bytes);
        text += size.rightJustified(12) + "  " + output.Shown(path) + "/\n";
    }
    const qint64 bytes = measure.All().bytes;
    return text + Counted(measure.All().files, "file") + ", " + (inBytes ? Counted(bytes, "byte") : SizeText(bytes)) +
           '\n';
}

QByteArray Json(const TreeMeasure& measure, bool withFolders) {
    nlohmann::ordered_json json{{"files", measure.All().files}, {"bytes", measure.All().bytes}};
    if (withFolders) {
        json["folders"] = nlohmann::ordered_json::array();
        for (const auto& [path, total] : measure.ByFolder()) {
            json["folders"].push_back({{"path", path.toStdString()}, {"files", total.files}, {"bytes", total.bytes}});
        }
    }
    return QByteArray::fromStdString(json.dump()) + '\n';
}

void MeasureTree(ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
    const auto measure = std::make_shared<TreeMeasure>(connection, location, given);
    const sync::config::FolderConfiguration folder = connection.Folder(location.serverPath);
    int count = 0;
    qint64 size = 0;
    QList<QString> subFolders;
    if (connection.Folders().GetFolderSize(folder.serverPath, folder.serverId, true, count, size, subFolders, measure,
                                           measure) == HttpStatus::NotFound) {
        ThrowNoSuchFolder(location);
    }
    for (const QString& path : subFolders) {
        measure->AddFolder(path);
    }
    output.Write(given.isJson ? Json(*measure, given.depth > 0) : Text(*measure, given.inBytes, output));
}

}  // namespace

void AddSizeCommand(CommandRegistry& registry) {
    CLI::App* const command =
        registry.AddAction("du", "Counts the files below a folder and their bytes.",
                           [](ServiceConnection& connection, const Location& location, const Arguments& given,
                              Output& output) { MeasureTree(connection, location, given, output); });
    CommandRegistry::AddText(command, "URL", "The folder, for example http://host/folder/", registry.Given().url);
    command->add_flag("-b,--bytes", registry.Given().inBytes, "Print sizes in bytes");
    command
        ->add_option("-d,--depth", registry.Given().depth,
                     "Print a line for each folder, too, down to N levels below (0 unless given)")
        ->type_name("N")
        ->check(input::WholeNumber(0, MostLevels));
    registry.AddExclude(command);
}

}  // namespace commands
}  // namespace ovsync
