#include "client/wire/DateReader.h"

#include <QDate>
#include <QTime>
#include <cstring>

namespace ovsync {
namespace wire {

namespace {

const char* const Months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
const char* const Days[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
const char* const LongDays[] = {"Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday"};

/// What is left to read of a date. An operation that does not find what it is to read returns false or -1, and the date
/// is none.
class Cursor {
public:
    Cursor(const char* text, size_t size) : _at(text), _end(text + size) {}

    bool IsAtEnd() const { return _at == _end; }

    bool Skip(const char* expected) {
        const size_t size = std::strlen(expected);
        if (static_cast<size_t>(_end - _at) < size || std::memcmp(_at, expected, size) != 0) {
            return false;
        }
        _at += size;
        return true;
    }

    template <size_t Count>
    int OneOf(const char* const (&names)[Count]) {
        for (size_t i = 0; i < Count; ++i) {
            if (Skip(names[i])) {
                return static_cast<int>(i);
            }
        }
        return -1;
    }

    int Number(int minDigits, int maxDigits) {
        int value = 0;
        int digits = 0;
        while (digits < maxDigits && _NextIsDigit()) {
            value = value * 10 + (*_at++ - '0');
            ++digits;
        }
        return digits < minDigits ? -1 : value;
    }

    bool SkipDigits() {
        const char* const start = _at;
        while (_NextIsDigit()) {
            ++_at;
        }
        return _at != start;
    }

private:
    bool _NextIsDigit() const { return _at != _end && *_at >= '0' && *_at <= '9'; }

    const char* _at;
    const char* _end;
};

struct Fields {
    int year = -1;
    int month = -1;
    int day = -1;
    int hour = -1;
    int minute = -1;
    int second = -1;
    int offsetSeconds = 0;
};

bool ReadTime(Cursor& cursor, Fields& fields) {
    fields.hour = cursor.Number(2, 2);
    if (!cursor.Skip(":")) {
        return false;
    }
    fields.minute = cursor.Number(2, 2);
    if (!cursor.Skip(":")) {
        return false;
    }
    fields.second = cursor.Number(2, 2);
    return true;
}

/// "Sun, 06 Nov 1994 08:49:37 GMT"
bool ReadImfFixdate(Cursor cursor, Fields& fields) {
    if (cursor.OneOf(Days) < 0 || !cursor.Skip(", ")) {
        return false;
    }
    fields.day = cursor.Number(1, 2);
    if (!cursor.Skip(" ")) {
        return false;
    }
    fields.month = cursor.OneOf(Months) + 1;
    if (!cursor.Skip(" ")) {
        return false;
    }
    fields.year = cursor.Number(4, 4);
    return cursor.Skip(" ") && ReadTime(cursor, fields) && cursor.Skip(" GMT") && cursor.IsAtEnd();
}

/// "Sunday, 06-Nov-94 08:49:37 GMT"
bool ReadRfc850Date(Cursor cursor, Fields& fields) {
    if (cursor.OneOf(LongDays) < 0 || !cursor.Skip(", ")) {
        return false;
    }
    fields.day = cursor.Number(2, 2);
    if (!cursor.Skip("-")) {
        return false;
    }
    fields.month = cursor.OneOf(Months) + 1;
    if (!cursor.Skip("-")) {
        return false;
    }
    const int yearOfCentury = cursor.Number(2, 2);
    const int latestYear = QDateTime::currentDateTimeUtc().date().year() + 50;
    fields.year = latestYear - (latestYear - yearOfCentury) % 100;
    return yearOfCentury >= 0 && cursor.Skip(" ") && ReadTime(cursor, fields) && cursor.Skip(" GMT") &&
           cursor.IsAtEnd();
}

/// "Sun Nov  6 08:49:37 1994"
bool ReadAsctimeDate(Cursor cursor, Fields& fields) {
    if (cursor.OneOf(Days) < 0 || !cursor.Skip(" ")) {
        return false;
    }
    fields.month = cursor.OneOf(Months) + 1;
    if (!cursor.Skip(" ")) {
        return false;
    }
    fields.day = cursor.Skip(" ") ? cursor.Number(1, 1) : cursor.Number(2, 2);
    if (!cursor.Skip(" ") || !ReadTime(cursor, fields) || !cursor.Skip(" ")) {
        return false;
    }
    fields.year = cursor.Number(4, 4);
    return cursor.IsAtEnd();
}

/// "1994-11-06T08:49:37Z", with a fraction of a second, which is left out, or an offset "+01:00"
bool ReadRfc3339Date(Cursor cursor, Fields& fields) {
    fields.year = cursor.Number(4, 4);
    if (!cursor.Skip("-")) {
        return false;
    }
    fields.month = cursor.Number(2, 2);
    if (!cursor.Skip("-")) {
        return false;
    }
    fields.day = cursor.Number(2, 2);
    if (!(cursor.Skip("T") || cursor.Skip("t")) || !ReadTime(cursor, fields)) {
        return false;
    }
    if (cursor.Skip(".") && !cursor.SkipDigits()) {
        return false;
    }
    if (cursor.Skip("Z") || cursor.Skip("z")) {
        return cursor.IsAtEnd();
    }
    const bool isEast = cursor.Skip("+");
    if (!isEast && !cursor.Skip("-")) {
        return false;
    }
    const int hours = cursor.Number(2, 2);
    cursor.Skip(":");
    const int minutes = cursor.Number(2, 2);
    if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59) {
        return false;
    }
    fields.offsetSeconds = (isEast ? 1 : -1) * (hours * 3600 + minutes * 60);
    return cursor.IsAtEnd();
}

}  // namespace

QDateTime ReadDate(const char* text, size_t size) {
    const Cursor cursor(text, size);
    Fields fields;
    if (!ReadImfFixdate(cursor, fields) && !ReadRfc3339Date(cursor, fields) && !ReadRfc850Date(cursor, fields) &&
        !ReadAsctimeDate(cursor, fields)) {
        return QDateTime();
    }
    const QDate date(fields.year, fields.month, fields.day);
    if (fields.year < 0 || !date.isValid() || !QTime::isValid(fields.hour, fields.minute, fields.second)) {
        return QDateTime();
    }
    const qint64 epochJulianDay = 2440588;
    const qint64 secondsPerDay = 86400;
    const int secondOfDay = fields.hour * 3600 + fields.minute * 60 + fields.second;
    const qint64 seconds = (date.toJulianDay() - epochJulianDay) * secondsPerDay + secondOfDay - fields.offsetSeconds;
    return QDateTime::fromMSecsSinceEpoch(seconds * 1000, Qt::UTC);
}

QByteArray HttpDate(const QDateTime& time) {
    const QDateTime utc = time.toUTC();
    const QDate date = utc.date();
    if (!utc.isValid() || date.year() < 1000 || date.year() > 9999) {
        return QByteArray();
    }
    const auto twoDigits = [](int value) { return QByteArray::number(value).rightJustified(2, '0'); };
    return QByteArray(Days[date.dayOfWeek() - 1]) + ", " + twoDigits(date.day()) + ' ' + Months[date.month() - 1] +
           ' ' + QByteArray::number(date.year()) + ' ' + twoDigits(utc.time().hour()) + ':' +
           twoDigits(utc.time().minute()) + ':' + twoDigits(utc.time().second()) + " GMT";
}

}  // namespace wire
}  // namespace ovsync
