#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include "host/http/DAVPropfindResult.h"

namespace tests {

/// The bytes of the file `name` under fixtures/. Throws std::runtime_error when there is none.
QByteArray FixtureBytes(const QString& name);

/// An answer as it goes over the wire, from a file that has its head in lines that end in LF. A Content-Length is added
/// where the file says nothing of the body's size.
struct RawAnswer {
    QByteArray head;
    QByteArray body;

    QByteArray Bytes() const { return head + body; }
};

/// The file `name` under fixtures/, without ".http". Every "@FILL@" in the body becomes `fillSize` letters.
RawAnswer FixtureAnswer(const QString& name, int fillSize = 0);

/// A 207 with the XML file `name`.
QByteArray ListingAnswer(const QString& name);

/// Every field of `result`, in lines, so that two results can be compared.
QStringList Describe(const sync::http::DAVPropfindResult& result);

}  // namespace tests
