#pragma once

#include <QByteArray>
#include <QDomDocument>
#include <QString>

namespace sync {
namespace dv {
namespace dvsync {

/// What was wrong with a document, and where. Line and column count from 1. A plain value.
struct XmlError {
    QString message;
    int line = 0;
    int column = 0;
};

/// False, with `error` filled in, for a body that is not well-formed, declares a document type (whose entities could
/// grow without bound), or nests elements deeper than 100 (a document's destruction recurses once per level). Takes
/// every prefix for declared. Thread-safe.
bool IsSafeXml(const QByteArray& body, XmlError& error);

/// Reads `body` into `document` with namespaces on. False, with `error` filled in, when it is not safe or uses a prefix
/// that it does not declare. Thread-safe.
bool ReadXmlDocument(const QByteArray& body, QDomDocument& document, XmlError& error);

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
