#pragma once

#include <QByteArray>
#include <QString>

namespace ovsync {
namespace wire {

/// What is kept of an answer in order to tell a person about it. A plain value.
struct AnswerSummary {
    /// How much of a body is kept, in bytes.
    static constexpr int FirstBytesLimit = 200;

    /// 0 when no answer came.
    int status = 0;
    QByteArray contentType;
    /// Where to, when it is a redirect.
    QByteArray location;
    /// The first FirstBytesLimit bytes of the body, uncompressed.
    QByteArray firstBytes;

    /// One line of printable ASCII: the status, where a redirect leads to, the content type and the first bytes,
    /// everything else escaped as
    /// `\xNN`.
    QString Text() const;
};

}  // namespace wire
}  // namespace ovsync
