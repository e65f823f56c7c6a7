#include "client/listing/Href.h"

#include <QList>
#include <QUrl>

#include "host/core/SyncException.h"
#include "tests/fuzz/Fuzzing.h"

using fuzz::Require;
using ovsync::listing::Href;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const QUrl asked(QString::fromLatin1("http://127.0.0.1:8080/Projects/A/"));
    Href href(asked);
    try {
        href.Read(reinterpret_cast<const char*>(data), size);
    } catch (const sync::core::SyncException&) {
        return 0;
    }

    const std::string path = href.Path();
    const std::string key = href.Key();
    const QByteArray pathBytes = QByteArray::fromStdString(path);
    Require(pathBytes.startsWith('/') && !pathBytes.contains("//"), "a path starts with '/' and has no empty segment");
    Require(QUrl::fromEncoded(pathBytes, QUrl::StrictMode).isValid(), "a path is encoded");
    for (const QByteArray& segment : pathBytes.split('/')) {
        const QByteArray decoded = QByteArray::fromPercentEncoding(segment);
        Require(decoded != "." && decoded != "..", "a path has no '.' or '..'");
        Require(!decoded.contains('\0'), "a path has no NUL");
    }

    const QByteArray keyBytes = QByteArray::fromStdString(key);
    Require(key.empty() == (path == "/"), "the root alone has an empty key");
    Require(!keyBytes.startsWith('/') && !keyBytes.endsWith('/') && !keyBytes.contains("//"),
            "a key has no empty segment");
    Require(keyBytes.count('/') + (key.empty() ? 0 : 1) == pathBytes.count('/') - (path.back() == '/' ? 1 : 0),
            "a key has the segments of its path");
    for (const QByteArray& segment : keyBytes.split('/')) {
        Require(segment != "." && segment != "..", "a key has no '.' or '..'");
    }

    const std::string name = href.DecodedName();
    Require(name.empty() == key.empty(), "the root alone has no name");
    Require(name.find('/') == std::string::npos && name != "." && name != "..", "a name is one segment");
    Require(QString::fromStdString(name).toStdString() == name, "a name is UTF-8");
    Require(QString::fromStdString(key).toStdString() == key, "a key is UTF-8");

    for (const std::string& same : {path, path + '/', "https://127.0.0.1" + path, '/' + path}) {
        href.Read(same.data(), same.size());
        Require(href.Key() == key, "a path has the key of its href");
    }
    href.Read(path.data(), path.size());
    Require(href.Path() == path, "a path stands for itself");
    return 0;
}
