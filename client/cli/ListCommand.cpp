#include "client/cli/ListCommand.h"

#include "client/cli/FileFormat.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace cli {

using sync::config::FileConfiguration;

void ListFolder(Connection& connection, const Location& location, ListFormat format, Output& output) {
    sync::config::FolderConfiguration folder = connection.Folder(location.serverPath);
    std::shared_ptr<QVector<FileConfiguration>> files;
    if (connection.Files().GetNameSortedFilesByFolder(folder, files) == 404) {
        throw sync::http::HttpException(QStringLiteral("The service has no folder /%1").arg(location.serverPath), 404,
                                        QUrl());
    }
    if (format == ListFormat::Json) {
        const char* separator = "[\n";
        for (const FileConfiguration& file : *files) {
            output.Write(separator + JsonObject(file));
            separator = ",\n";
        }
        output.Write(files->isEmpty() ? "[]\n" : "\n]\n");
        return;
    }
    for (const FileConfiguration& file : *files) {
        output.Write(format == ListFormat::Long ? LongLine(file, output) : output.Shown(file.name) + '\n');
    }
}

}  // namespace cli
}  // namespace ovsync
