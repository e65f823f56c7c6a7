#pragma once

#include "host/core/PosixSync.h"

#include <QProcess>
#include <QRegExp>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QtGlobal>

/// Everything in host/ and dvsync/ that is written one way for Qt 4.8 and another for Qt 5.15. Thread-safe.

namespace sync {
namespace core {
namespace compat {

/// The path of `url` with every escape decoded; empty when the URL is not valid.
inline QString DecodedPath(const QUrl& url) {
    if (!url.isValid()) {
        return QString();
    }
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    // Not QUrl::FullyDecoded, which takes an escaped noncharacter, such as U+FFFF, for bytes that are not UTF-8.
    return QUrl::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
#else
    return url.path();
#endif
}

/// The parts of `text` between the separators, without those that are empty.
inline QStringList SplitSkippingEmptyParts(const QString& text, QChar separator) {
#if QT_VERSION >= QT_VERSION_CHECK(5, 14, 0)
    return text.split(separator, Qt::SkipEmptyParts, Qt::CaseSensitive);
#else
    return text.split(separator, QString::SkipEmptyParts, Qt::CaseSensitive);
#endif
}

/// The same, between whatever `separator` matches.
inline QStringList SplitSkippingEmptyParts(const QString& text, const QRegExp& separator) {
#if QT_VERSION >= QT_VERSION_CHECK(5, 14, 0)
    return text.split(separator, Qt::SkipEmptyParts);
#else
    return text.split(separator, QString::SkipEmptyParts);
#endif
}

/// Starts the program that `commandLine` names, with the arguments in it, as a process that outlives this one, and
/// returns whether it started. Quotes hold together what has blanks in it.
[[nodiscard]] inline bool StartDetached(const QString& commandLine) {
#if QT_VERSION >= QT_VERSION_CHECK(5, 15, 0)
    QStringList arguments = QProcess::splitCommand(commandLine);
    return !arguments.isEmpty() && QProcess::startDetached(arguments.takeFirst(), arguments);
#else
    return QProcess::startDetached(commandLine);
#endif
}

}  // namespace compat
}  // namespace core
}  // namespace sync
