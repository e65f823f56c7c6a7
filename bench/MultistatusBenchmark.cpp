// What reading a listing costs, beside a SAX parser whose handlers do nothing, on the same bytes in the same pieces.

#include <benchmark/benchmark.h>
#include <libxml/parser.h>

#include <QDateTime>
#include <QUrl>
#include <algorithm>
#include <string>

#include "client/listing/MultistatusReader.h"

namespace {

using ovsync::listing::MultistatusReader;
using sync::http::DAVPropfindRequest;

const size_t PieceSize = 65536;

// As Apache's WebDAV module writes it.
std::string ListingOf(int64_t files) {
    std::string listing =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<D:multistatus xmlns:D=\"DAV:\" xmlns:ns0=\"DAV:\">\n";
    const auto add = [&listing](const std::string& href, const std::string& properties) {
        listing +=
            "<D:response xmlns:lp1=\"DAV:\" xmlns:lp2=\"http://apache.org/dav/props/\" xmlns:g0=\"DAV:\">\n<D:href>" +
            href + "</D:href>\n<D:propstat>\n<D:prop>\n" + properties +
            "<lp1:getlastmodified>Fri, 20 Nov 2026 10:15:30 GMT</lp1:getlastmodified>\n"
            "<lp1:creationdate>2026-11-20T10:15:30Z</lp1:creationdate>\n</D:prop>\n"
            "<D:status>HTTP/1.1 200 OK</D:status>\n</D:propstat>\n</D:response>\n";
    };
    add("/folder/", "<lp1:resourcetype><D:collection/></lp1:resourcetype>\n");
    for (int64_t i = 0; i < files; ++i) {
        // In no order, as a file system gives them.
        const int64_t number = i * 7919 % files;
        add("/folder/file-" + std::to_string(1000000 + number) + ".txt",
            "<lp1:resourcetype/>\n<lp1:getcontentlength>" + std::to_string(number) + "</lp1:getcontentlength>\n");
    }
    return listing + "</D:multistatus>\n";
}

template <typename Feed>
void InPieces(const std::string& bytes, Feed feed) {
    for (size_t begin = 0; begin < bytes.size(); begin += PieceSize) {
        feed(bytes.data() + begin, std::min(PieceSize, bytes.size() - begin));
    }
}

void Finish(benchmark::State& state, const std::string& listing) {
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(listing.size()));
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetComplexityN(state.range(0));
}

void ReadListing(benchmark::State& state) {
    const std::string listing = ListingOf(state.range(0));
    const QUrl asked(QStringLiteral("http://service.test/folder/"));
    for (auto _ : state) {
        MultistatusReader reader(asked, DAVPropfindRequest::Children);
        InPieces(listing, [&reader](const char* bytes, size_t size) { reader.Feed(bytes, size); });
        auto result = reader.Finish();
        benchmark::DoNotOptimize(result);
        // The listing is its reader's no more, but the asker's to release.
        state.PauseTiming();
        result.reset();
        state.ResumeTiming();
    }
    Finish(state, listing);
}

void ParseWithEmptyHandlers(benchmark::State& state) {
    const std::string listing = ListingOf(state.range(0));
    xmlSAXHandler handler = {};
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = [](void*, const xmlChar*, const xmlChar*, const xmlChar*, int, const xmlChar**, int, int,
                                const xmlChar**) {};
    handler.endElementNs = [](void*, const xmlChar*, const xmlChar*, const xmlChar*) {};
    handler.characters = [](void*, const xmlChar*, int) {};
    for (auto _ : state) {
        xmlParserCtxtPtr parser = xmlCreatePushParserCtxt(&handler, nullptr, nullptr, 0, nullptr);
        InPieces(listing,
                 [parser](const char* bytes, size_t size) { xmlParseChunk(parser, bytes, static_cast<int>(size), 0); });
        const int error = xmlParseChunk(parser, nullptr, 0, 1);
        xmlFreeParserCtxt(parser);
        if (error != XML_ERR_OK) {
            state.SkipWithError("the listing is not well-formed");
        }
    }
    Finish(state, listing);
}

BENCHMARK(ReadListing)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);
BENCHMARK(ParseWithEmptyHandlers)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

}  // namespace
