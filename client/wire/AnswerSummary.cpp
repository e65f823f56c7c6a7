#include "client/wire/AnswerSummary.h"

#include "client/wire/Printable.h"

namespace ovsync {
namespace wire {

QString AnswerSummary::Text() const {
    if (status == 0) {
        return QStringLiteral("no answer");
    }
    const QString type = contentType.isEmpty() ? QStringLiteral("no content type")
                                               : QLatin1String("content type ") + Printable(contentType);
    const QString body =
        firstBytes.isEmpty() ? QStringLiteral("no body") : QLatin1String("the body begins: ") + Printable(firstBytes);
    const QString redirect = location.isEmpty() ? QString() : QLatin1String(" to ") + Printable(location);
    return QLatin1String("status ") + QString::number(status) + redirect + QLatin1String(", ") + type +
           QLatin1String(", ") + body;
}

}  // namespace wire
}  // namespace ovsync
