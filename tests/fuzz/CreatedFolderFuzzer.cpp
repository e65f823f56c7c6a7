#include <log4cplus/logger.h>

#include <QDomDocument>

#include "dvsync/DrovaneRemoteFolderManager.h"
#include "dvsync/XmlDocument.h"
#include "tests/fakes/InstalledConfiguration.h"
#include "tests/fuzz/Fuzzing.h"

using fuzz::Require;
using sync::config::FolderConfiguration;
using sync::dv::dvsync::DrovaneRemoteFolderManager;

namespace sync {
namespace dv {
namespace dvsync {

class DrovaneRemoteFolderManagerAccess {
public:
    static bool Update(DrovaneRemoteFolderManager& manager, const QByteArray& body, FolderConfiguration& folder) {
        return manager._UpdateFolderConfig(body, folder);
    }
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync

namespace {

std::unique_ptr<DrovaneRemoteFolderManager> MakeManager() {
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL);
    const tests::InstalledConfiguration installed;
    return std::make_unique<DrovaneRemoteFolderManager>(
        nullptr, 1, nullptr, nullptr,
        std::make_shared<tests::FakeConfigurationFactory>(installed.ServerConfigManager(),
                                                          installed.FileConfigManager()));
}

int DepthOf(const QDomNode& node) {
    int deepest = 0;
    for (QDomNode child = node.firstChild(); !child.isNull(); child = child.nextSibling()) {
        deepest = std::max(deepest, DepthOf(child));
    }
    return deepest + (node.isElement() ? 1 : 0);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::unique_ptr<DrovaneRemoteFolderManager> manager = MakeManager();
    const QByteArray body = fuzz::BodyOf(data, size);

    QDomDocument document;
    sync::dv::dvsync::XmlError error;
    const bool isDocument = sync::dv::dvsync::ReadXmlDocument(body, document, error);
    if (isDocument) {
        Require(document.doctype().name().isEmpty(), "a document declares no type");
        Require(DepthOf(document) <= 100, "a document is not deep");
        Require(!document.documentElement().isNull(), "a document has a root");
    } else {
        Require(!error.message.isEmpty(), "what is no document is said to be wrong");
        Require(error.line >= 0 && error.column >= 0, "what is wrong has a place");
    }

    FolderConfiguration folder;
    folder.setServerFolderId(QString::fromLatin1("id"));
    folder.ownerId = QString::fromLatin1("owner");
    folder.accessMask = 5;
    if (sync::dv::dvsync::DrovaneRemoteFolderManagerAccess::Update(*manager, body, folder)) {
        Require(isDocument, "only a document describes a folder");
        Require(folder.accessMask == 31, "a new folder is all its owner's");
        Require(!folder.getServerFolderId().isEmpty(), "an id is never lost");
    } else {
        Require(folder.getServerFolderId() == QLatin1String("id") && folder.ownerId == QLatin1String("owner") &&
                    folder.accessMask == 5,
                "what describes no folder changes none");
    }
    return 0;
}
