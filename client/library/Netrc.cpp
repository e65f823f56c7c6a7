#include "client/library/Netrc.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

#include "client/library/NetrcEntry.h"

namespace ovsync {
namespace library {

using sync::core::SyncException;

namespace {

/// Empty when there is no such file.
QByteArray ReadNetrcFile(const QString& path) {
    QFile file(path);
    if (!file.exists()) {
        return QByteArray();
    }
    // Others may have no end.
    if (!QFileInfo(path).isFile()) {
        throw SyncException(QFileInfo(path).isDir() ? QStringLiteral("it is a folder")
                                                    : QStringLiteral("it is not a file"));
    }
    if (!file.open(QIODevice::ReadOnly)) {
        throw SyncException(file.errorString());
    }
    return file.readAll();
}

}  // namespace

QString NetrcPath() {
    const QString named = QFile::decodeName(qgetenv("NETRC"));
    return named.isEmpty() ? QDir::homePath() + QLatin1String("/.netrc") : named;
}

QAuthenticator NetrcCredentials(const QString& host, const QString& user) {
    QVector<NetrcEntry> entries;
    try {
        entries = ReadNetrc(ReadNetrcFile(NetrcPath()));
    } catch (const SyncException& reason) {
        throw NetrcError(QStringLiteral("%1 cannot be read: %2").arg(NetrcPath(), reason.Message()));
    }
    // A password stands for the login beside it, and for no other.
    const auto found = std::find_if(entries.begin(), entries.end(), [&](const NetrcEntry& entry) {
        const bool isOfHost = !entry.host || entry.Names(host);
        return isOfHost && entry.login && entry.password && !entry.password->text.isEmpty() &&
               (user.isEmpty() ? !entry.login->text.isEmpty() : entry.login->text == user.toUtf8());
    });
    QAuthenticator credentials;
    if (found != entries.end()) {
        credentials.setUser(QString::fromUtf8(found->login->text));
        credentials.setPassword(QString::fromUtf8(found->password->text));
    }
    return credentials;
}

}  // namespace library
}  // namespace ovsync
