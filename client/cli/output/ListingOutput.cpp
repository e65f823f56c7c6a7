#include "client/cli/output/ListingOutput.h"

#include "client/cli/output/FileFormat.h"
#include "client/cli/output/FolderFormat.h"

namespace ovsync {
namespace output {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;

namespace {

QByteArray NameLine(const FileConfiguration& file, const Output& output) {
    return output.Shown(file.name) + '\n';
}

QByteArray NameLine(const FolderConfiguration& folder, const Output& output) {
    return output.Shown(folder.name) + "/\n";
}

class EntryWriter {
public:
    EntryWriter(ListFormat format, Output& output) : _format(format), _output(output) {}

    template <typename Record>
    void Write(const Record& record) {
        switch (_format) {
            case ListFormat::Json:
                _output.Write(_separator + JsonObject(record));
                _separator = ",\n";
                break;
            case ListFormat::Long:
                _output.Write(LongLine(record, _output));
                break;
            default:
                _output.Write(NameLine(record, _output));
        }
    }

private:
    const ListFormat _format;
    Output& _output;
    QByteArray _separator = "[\n";
};

}  // namespace

void WriteEntries(const QVector<FolderConfiguration>& folders, const QVector<FileConfiguration>& files,
                  ListFormat format, Output& output) {
    EntryWriter writer(format, output);
    auto folder = folders.constBegin();
    for (const FileConfiguration& file : files) {
        for (; folder != folders.constEnd() && folder->name < file.name; ++folder) {
            writer.Write(*folder);
        }
        writer.Write(file);
    }
    for (; folder != folders.constEnd(); ++folder) {
        writer.Write(*folder);
    }
    if (format == ListFormat::Json) {
        output.Write(folders.isEmpty() && files.isEmpty() ? "[]" : "\n]");
    }
}

}  // namespace output
}  // namespace ovsync
