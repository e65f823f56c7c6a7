#include <QDomDocument>
#include <algorithm>

#include "dvsync/XmlDocument.h"
#include "tests/fuzz/FolderManager.h"
#include "tests/fuzz/Fuzzing.h"

using fuzz::Require;

namespace {

int DepthOf(const QDomNode& node) {
    int deepest = 0;
    for (QDomNode child = node.firstChild(); !child.isNull(); child = child.nextSibling()) {
        deepest = std::max(deepest, DepthOf(child));
    }
    return deepest + (node.isElement() ? 1 : 0);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const auto manager = fuzz::MakeFolderManager();
    const QByteArray body = fuzz::BodyOf(data, size);

    QDomDocument document;
    sync::dv::dvsync::XmlError error;
    const bool isDocument = sync::dv::dvsync::ReadXmlDocument(body, document, error);
    if (isDocument) {
        Require(document.doctype().entities().isEmpty() && document.doctype().notations().isEmpty(),
                "a document declares no entities");
        Require(DepthOf(document) <= 100, "a document is not deep");
        Require(!document.documentElement().isNull(), "a document has a root");
    } else {
        Require(!error.message.isEmpty(), "what is no document is said to be wrong");
        Require(error.line >= 0 && error.column >= 0, "what is wrong has a place");
    }

    sync::config::FolderConfiguration folder;
    folder.setServerFolderId(QString::fromLatin1("id"));
    folder.ownerId = QString::fromLatin1("owner");
    folder.accessMask = 5;
    if (fuzz::FolderManagerAccess::Update(*manager, body, folder)) {
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
