#include "client/wire/DateReader.h"

#include "tests/fuzz/Fuzzing.h"

using fuzz::Require;
using ovsync::wire::ReadDate;

namespace {

QDateTime Read(const QByteArray& text) {
    return ReadDate(text.constData(), static_cast<size_t>(text.size()));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray text = fuzz::BytesOf(data, size);
    const QDateTime time = Read(text);
    if (!time.isValid()) {
        return 0;
    }
    Require(time.timeSpec() == Qt::UTC, "a date is in UTC");
    Require(time.time().msec() == 0, "a date has whole seconds");
    for (int length = 0; length < text.size(); ++length) {
        Require(!Read(text.left(length)).isValid(), "no beginning of a date is a date");
    }
    Require(!Read(text + '0').isValid(), "nothing follows a date");
    const QByteArray httpDate = ovsync::wire::HttpDate(time);
    Require(httpDate.isEmpty() || Read(httpDate) == time, "a date that is written is read as the same");
    const int year = time.date().year();
    Require(year < 0 || year > 9999 || Read(time.toString(Qt::ISODate).toLatin1()) == time,
            "a date has one meaning in all formats");
    return 0;
}
