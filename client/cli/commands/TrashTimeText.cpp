#include "client/cli/commands/TrashTimeText.h"

#include <QRegularExpression>

#include "client/cli/input/UsageError.h"
#include "client/cli/output/DateText.h"
#include "client/wire/DateReader.h"

namespace ovsync {
namespace commands {

using local::TrashTime;
using output::DateText;

QByteArray TrashTimeText(const TrashTime& time) {
    const QByteArray text = DateText(time.time);
    return time.number == 1 ? text : text + '-' + QByteArray::number(time.number);
}

TrashTime ReadTrashTime(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral("\\A(.*Z)(?:-([2-9]|[1-9][0-9]{1,8}))?\\z"));
    const QRegularExpressionMatch match = pattern.match(text);
    const QByteArray date = match.captured(1).toUtf8();
    const QString number = match.captured(2);
    TrashTime time{wire::ReadDate(date.constData(), static_cast<size_t>(date.size())),
                   number.isEmpty() ? 1 : number.toInt()};
    if (!time.time.isValid()) {
        throw input::UsageError(
            QStringLiteral("--from \"%1\": this is no time as \"ovsync trash list\" shows it, such as "
                           "2026-11-20T10:15:30Z")
                .arg(text));
    }
    return time;
}

}  // namespace commands
}  // namespace ovsync
