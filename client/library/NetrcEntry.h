#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>
#include <optional>

namespace ovsync {
namespace library {

/// A word of a netrc, and where it stands, quotes included.
struct NetrcWord {
    QByteArray text;
    int begin = 0;
    int end = 0;
};

/// What a netrc says of a host, or of all others. A plain value.
struct NetrcEntry {
    int begin = 0;
    /// None for all others.
    std::optional<NetrcWord> host;
    std::optional<NetrcWord> login;
    std::optional<NetrcWord> password;

    /// Whether it names this very host.
    bool Names(const QString& searched) const;
};

/// In the order of `text`. Throws SyncException, which names the line, when a quote in it is not closed. Thread-safe.
QVector<NetrcEntry> ReadNetrc(const QByteArray& text);

}  // namespace library
}  // namespace ovsync
