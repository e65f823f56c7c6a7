#include "dvsync/HrefPath.h"

#include <QUrl>
#include <optional>

#include "tests/fuzz/Fuzzing.h"

using fuzz::Require;
using sync::dv::dvsync::PathOfHref;
using sync::dv::dvsync::PercentDecoded;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString text = QString::fromUtf8(fuzz::BytesOf(data, size));
    const QString encoded = QString::fromLatin1(QUrl::toPercentEncoding(text));
    // Qt takes a byte-order mark in front for no part of the text.
    Require(text.startsWith(QChar(QChar::ByteOrderMark)) || PercentDecoded(encoded) == text,
            "what was encoded is decoded to the same");
    Require(PathOfHref(QLatin1Char('/') + encoded) == QLatin1Char('/') + text, "a path is decoded");
    Require(PathOfHref(QLatin1String("http://host:8080/") + encoded) == QLatin1Char('/') + text,
            "a path is decoded in a whole URL too");
    if (text.startsWith(QLatin1Char('/')) && !text.startsWith(QLatin1String("//"))) {
        const std::optional<QString> path = PathOfHref(text);
        Require(path == PathOfHref(QLatin1String("http://host") + text), "the short cut changes nothing");
        const std::optional<QString> longer = PathOfHref(QLatin1Char('/') + text);
        Require(longer.has_value() == path.has_value() && (!path || *longer == QLatin1Char('/') + *path),
                "two slashes at the front are part of the path");
    }
    return 0;
}
