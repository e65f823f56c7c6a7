#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace ovsync {
namespace content {

/// The beginning of a file's content, as an earlier download left it. A plain value.
struct ContentPart {
    /// In bytes; 0 for nothing.
    qint64 size = 0;
    /// The strong entity tag of the version that it is of.
    QByteArray entityTag;
};

}  // namespace content
}  // namespace ovsync
