#pragma once

#include <QByteArray>
#include <QDomDocument>
#include <QString>

/// Documents that somebody else wrote. What is refused could grow without bound: elements deeper than 100, because a
/// document's destruction recurses once per level, and declarations of a document type, because of their entities.
/// Thread-safe.

namespace sync {
namespace dv {
namespace dvsync {

/// What was wrong with a document, and where. Line and column count from 1. A plain value.
struct XmlError {
    QString message;
    int line = 0;
    int column = 0;
};

/// Whether a query may read `body`: it is well-formed, nests no deeper than that and has no document type at all. Takes
/// every prefix for declared.
bool IsSafeForQuery(const QByteArray& body);

/// Reads `body` into `document` with namespaces on, as QDomDocument does: it takes much for well-formed that is not.
/// False, with `error` filled in, when it refuses `body` or when this does.
[[nodiscard]] bool ReadXmlDocument(const QByteArray& body, QDomDocument& document, XmlError& error);

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
