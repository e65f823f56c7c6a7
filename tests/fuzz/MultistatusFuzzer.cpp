#include "client/listing/MultistatusReader.h"

#include <QUrl>
#include <algorithm>
#include <optional>
#include <random>

#include "host/core/SyncException.h"
#include "tests/client/Fixtures.h"
#include "tests/fuzz/Fuzzing.h"

using fuzz::Require;
using ovsync::listing::MultistatusReader;
using sync::http::DAVPropfindRequest;
using sync::http::DAVPropfindResult;

namespace {

using Result = std::shared_ptr<DAVPropfindResult>;

const char* const Asked = "http://127.0.0.1:8080/Projects/A/";

/// Feeds `bytes` in pieces of up to `most` bytes. Nothing when they are refused.
Result Read(const QByteArray& bytes, DAVPropfindRequest::Depth depth, int most) {
    static const QUrl asked(QString::fromLatin1(Asked));
    // The same pieces for the same bytes.
    std::minstd_rand random(static_cast<unsigned>(bytes.size()) + 1U);
    try {
        MultistatusReader reader(asked, depth);
        for (int at = 0; at < bytes.size();) {
            const int size = std::min(1 + static_cast<int>(random() % static_cast<unsigned>(most)), bytes.size() - at);
            reader.Feed(bytes.constData() + at, static_cast<size_t>(size));
            at += size;
        }
        return reader.Finish();
    } catch (const sync::core::SyncException& e) {
        Require(!e.Message().isEmpty(), "a refusal says why");
        return nullptr;
    }
}

QStringList Describe(const Result& result) {
    return result ? tests::Describe(*result) : QStringList();
}

void RequireKeysInScope(const QMap<QString, sync::http::DAVPropfindResponse>& entries, bool isTree) {
    const QString prefix = QString::fromLatin1("Projects/A/");
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        // What was asked is an entry itself when it is a file.
        if (entry.key() == QLatin1String("Projects/A")) {
            continue;
        }
        Require(entry.key().startsWith(prefix), "an entry lies in what was asked");
        const QStringList segments = entry.key().mid(prefix.size()).split(QLatin1Char('/'));
        Require(isTree || segments.size() == 1, "a child lies directly in what was asked");
        for (const QString& segment : segments) {
            Require(!segment.isEmpty() && segment != QLatin1String(".") && segment != QLatin1String(".."),
                    "no segment leads elsewhere");
        }
        Require(!entry->getFilename().isEmpty() && !entry->getFilename().contains(QLatin1Char('/')),
                "an entry has a name of one segment");
    }
}

/// Whether '>' means itself in `bytes`.
bool HasPlainBrackets(const QByteArray& bytes) {
    const QByteArray declaration = bytes.left(bytes.indexOf('>')).toLower();
    return !bytes.contains('\0') && (!declaration.contains("encoding") || declaration.contains("utf-8"));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray body = fuzz::BodyOf(data, size);
    Result smaller;
    for (const auto depth : {DAVPropfindRequest::Resource, DAVPropfindRequest::Children, DAVPropfindRequest::Tree}) {
        const Result result = Read(body, depth, std::max(1, body.size()));
        Require(Describe(result) == Describe(Read(body, depth, 20)),
                "the pieces in which an answer comes do not matter");
        Require(result || !smaller, "what is listed at one depth is so at a greater one");
        if (!result) {
            continue;
        }
        RequireKeysInScope(result->collectionResponses, depth == DAVPropfindRequest::Tree);
        RequireKeysInScope(result->fileResponses, depth == DAVPropfindRequest::Tree);
        Require(!smaller || (smaller->fileResponses.keys() == result->fileResponses.keys() &&
                             smaller->collectionResponses.keys() == result->collectionResponses.keys()),
                "an entry is what it is at every depth");
        Require(!HasPlainBrackets(body) || !Read(body.left(body.lastIndexOf('>')), depth, 20),
                "a listing without its end is none");
        smaller = result;
    }
    return 0;
}
