#pragma once

#include <QHash>
#include <memory>

#include "host/interfaces/IRemoteFileManager.h"

namespace ovsync {
namespace library {

/// Answers what is asked of single files from a listing of their folder, while it keeps one; hands everything else on.
/// Not thread-safe.
///
/// \code
/// #include "client/library/ServiceConnection.h"
///
/// ovsync::library::ServiceConnection connection(QUrl(QStringLiteral("http://localhost:8080")));
/// const sync::config::FolderConfiguration plans = connection.Folder(QStringLiteral("plans"));
/// // After many files were sent to it: what the service has of each of them, by one request.
/// connection.Files().Keep(plans);
/// const auto north = connection.Files().GetFileByName(plans, QStringLiteral("north.dwg"));
/// const auto south = connection.Files().GetFileByName(plans, QStringLiteral("south.dwg"));
/// connection.Files().Forget();
/// \endcode
class ListedFiles : public sync::interf::IRemoteFileManager {
public:
    explicit ListedFiles(std::shared_ptr<sync::interf::IRemoteFileManager> manager);

    /// Lists `folder` and keeps what is listed, with what other folders have. Returns how many files there are. Throws
    /// what the manager throws.
    int Keep(sync::config::FolderConfiguration folder);
    void Forget();
    int GetNameSortedFilesByFolder(sync::config::FolderConfiguration& folder,
                                   std::shared_ptr<QVector<sync::config::FileConfiguration>>& files) override;
    bool ShouldDownloadFile(const sync::config::FileConfiguration& remote,
                            sync::config::FileConfiguration& local) override;
    const sync::config::FileConfiguration GetFileByName(  // NOLINT(readability-const-return-type)
        const sync::config::FolderConfiguration& folder, const QString& name) override;

private:
    const std::shared_ptr<sync::interf::IRemoteFileManager> _manager;
    QHash<QString, sync::config::FileConfiguration> _kept;
};

}  // namespace library
}  // namespace ovsync
