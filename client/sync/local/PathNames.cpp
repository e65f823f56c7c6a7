#include "client/sync/local/PathNames.h"

#include <QRegularExpression>
#include <QUuid>

#include "client/store/RecordDatabase.h"
#include "dvsync/TransferTexts.h"

namespace ovsync {
namespace local {

using sync::dv::dvsync::SyncBackupSuffix;
using sync::dv::dvsync::SyncTempSuffix;

namespace {

const int NameLimit = 255;

const QLatin1Char Slash('/');

}  // namespace

QString ReasonAgainst(const QString& name) {
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..")) {
        return QStringLiteral("this is no name");
    }
    if (name.contains(Slash) || name.contains(QChar(0))) {
        return QStringLiteral("the name has a '/' or a NUL in it");
    }
    if (name.contains(QChar(QChar::ReplacementCharacter)) || !name.isValidUtf16()) {
        return QStringLiteral("the name is not UTF-8");
    }
    if (name.startsWith(QChar(QChar::ByteOrderMark))) {
        return QStringLiteral("the name begins with a byte order mark, which nobody sees");
    }
    if (name.toUtf8().size() > NameLimit) {
        return QStringLiteral("the name has more than %1 bytes").arg(NameLimit);
    }
    // Without regard to letter case, because some file systems have none.
    if (name.compare(store::RecordDatabase::HiddenFolder(), Qt::CaseInsensitive) == 0 ||
        name.endsWith(SyncTempSuffix, Qt::CaseInsensitive) || name.endsWith(SyncBackupSuffix, Qt::CaseInsensitive)) {
        return QStringLiteral("the name is reserved");
    }
    return QString();
}

QString ReasonAgainstPath(const QString& path) {
    QString reason;
    for (const QString& name : path.split(Slash)) {
        reason = reason.isEmpty() ? ReasonAgainst(name) : reason;
    }
    return reason;
}

QString ReasonAgainstRoot(const QString& path) {
    const QString hidden = Slash + store::RecordDatabase::HiddenFolder();
    const int at = (path + Slash).indexOf(hidden + Slash);
    return at < 0 ? QString()
                  : QStringLiteral(
                        "it lies in \"%1\", where ovsync keeps what it knows of a synced folder and what it "
                        "deleted in it")
                        .arg(path.left(at) + hidden);
}

QString TemporaryBeside(const QString& path) {
    const QString folder = FolderOf(path);
    return folder + (folder.isEmpty() ? QString() : QString(Slash)) + QLatin1Char('.') +
           QString::fromLatin1(QUuid::createUuid().toRfc4122().toHex()) + SyncTempSuffix;
}

bool IsTemporaryName(const QString& name) {
    static const QRegularExpression pattern(QStringLiteral("\\A\\.[0-9a-f]{32}") +
                                            QRegularExpression::escape(SyncTempSuffix) + QStringLiteral("\\z"));
    return name.endsWith(SyncTempSuffix) && pattern.match(name).hasMatch();
}

QString PathWithNote(const QString& path, const QString& note, int number) {
    const QString folder = FolderOf(path);
    const QString name = NameOf(path);
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    // A dot in front hides the name and begins no ending; what is long is none either.
    const bool hasEnding = dot > 0 && name.size() - dot <= 16;
    QString stem = hasEnding ? name.left(dot) : name;
    const QString ending = hasEnding ? name.mid(dot) : QString();
    const QString mark =
        QStringLiteral(" (%1%2)").arg(note, number > 1 ? QStringLiteral(" %1").arg(number) : QString());
    while ((stem + mark + ending).toUtf8().size() > NameLimit) {
        stem.chop(stem.at(stem.size() - 1).isLowSurrogate() ? 2 : 1);
    }
    return folder + (folder.isEmpty() ? QString() : QString(Slash)) + stem + mark + ending;
}

QString ConflictText(const QString& copy) {
    return QStringLiteral(
               "it changed here and on the service, whose version is in \"%1\". Delete that one to keep yours with the "
               "next sync or push, or your own to take it with the next sync or pull")
        .arg(copy);
}

QString FolderOf(const QString& path) {
    return path.left(qMax(0, path.lastIndexOf(Slash)));
}

QString NameOf(const QString& path) {
    return path.mid(path.lastIndexOf(Slash) + 1);
}

QString FoldedPath(const QString& path, bool tellsCaseApart, bool tellsFormsApart) {
    QString folded = tellsFormsApart ? path : path.normalized(QString::NormalizationForm_D);
    if (!tellsCaseApart) {
        folded = folded.toCaseFolded();
    }
    return tellsFormsApart ? folded : folded.normalized(QString::NormalizationForm_C);
}

}  // namespace local
}  // namespace ovsync
