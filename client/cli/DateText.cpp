#include "client/cli/DateText.h"

#include <cstdio>

namespace ovsync {
namespace cli {

// By hand, because QDateTime::toString made a sixth of the cost of a long listing.
QByteArray DateText(const QDateTime& date) {
    if (!date.isValid()) {
        return QByteArray();
    }
    const QDateTime utc = date.toUTC();
    const QTime time = utc.time();
    int year = 0;
    int month = 0;
    int day = 0;
    utc.date().getDate(&year, &month, &day);
    char text[48];
    const int size = std::snprintf(text, sizeof(text), "%04d-%02d-%02dT%02d:%02d:%02dZ", year, month, day, time.hour(),
                                   time.minute(), time.second());
    return QByteArray(text, size);
}

}  // namespace cli
}  // namespace ovsync
