#include "tests/client/requests/BadAnswers.h"

#include <algorithm>
#include <ostream>

namespace tests {

namespace {

using Ending = tests::ScriptedServer::Ending;

const int Kilobyte = 1024;

const char* NameOf(Ending ending) {
    switch (ending) {
        case Ending::KeepOpen:
            return "";
        case Ending::Close:
            return "_close";
        case Ending::Reset:
            return "_reset";
        case Ending::Stall:
            return "_stall";
    }
    return "";
}

}  // namespace

const std::vector<BadAnswer>& BadAnswers() {
    static const std::vector<BadAnswer> answers = {
        {"login-page-with-200", "the status is unexpected", false},
        {"listing-with-200", "the status is unexpected", false},
        {"no-content-204", "the status is unexpected", false},
        {"moved-301", "the status is unexpected", false},
        {"found-302", "the status is unexpected", false, Ending::KeepOpen, 0},
        {"redirected-307", "the status is unexpected", false},
        {"not-modified-304", "the status is unexpected", false},
        {"error-page-with-207", "the content type is another", false},
        {"no-content-type", "the content type is another", false},
        {"shorter-than-announced", "cut off or damaged", false, Ending::Close},
        {"shorter-than-announced", "cut off or damaged", false, Ending::Reset},
        {"two-sizes", "more than one size of its body", false},
        {"last-chunk-missing", "cut off or damaged", false, Ending::Close},
        {"head-cut-off", "ended inside its head", false, Ending::Close},
        {"no-http", "HTTP/0.9", false, Ending::Close},
        // On a connection that was used before they would be asked for again.
        {"nothing", "Empty reply", false, Ending::Close, 0},
        {"nothing", "cut off or damaged", false, Ending::Reset, 0},
        {"empty-body", "the XML is not complete, it ends at line 1"},
        {"ends-inside-an-element", "the XML is not complete, it ends at line 4"},
        {"ends-between-entries", "the XML is not complete, it ends at line 4"},
        {"ends-before-the-last-bracket", "the XML is not complete, it ends at line 5"},
        {"not-xml", "the XML is broken at line 1"},
        {"not-utf-8", "not proper UTF-8"},
        {"tags-crossed", "tag mismatch"},
        {"prefix-unknown", "Namespace prefix Q"},
        {"encoding-unknown", "Unsupported encoding"},
        {"other-root", "no listing: it begins with {DAV:}error"},
        {"root-without-namespace", "no listing: it begins with multistatus"},
        {"more-after-the-root", "Extra content"},
        {"entity-declared", "document type declaration"},
        {"entity-bomb", "document type declaration"},
        {"external-document-type", "document type declaration"},
        {"entity-unknown", "Entity 'name' not defined"},
        {"no-href", "an entry has no path"},
        {"two-hrefs", "has 2 paths"},
        {"element-in-href", "an element inside a path"},
        {"href-beside-the-folder", "/Projects/AB/b.txt lies outside"},
        {"href-above-the-folder", "/Projects/ lies outside"},
        {"href-too-deep", "/Projects/A/Sub/b.txt lies outside"},
        {"ends-between-entries", "/Projects/A/b.txt lies outside", true, Ending::KeepOpen, 0},
        {"href-of-another-host", "names the host \"elsewhere.invalid\""},
        {"href-with-dots", "'..' in it"},
        {"href-with-escaped-dots", "'..' in it"},
        {"href-with-a-nul", "has a NUL"},
        {"entry-twice", "/Projects/A/b.txt came before"},
        {"entry-twice-escaped-differently", "/Projects/A/%62%2Etxt came before"},
        {"entry-twice-as-file-and-folder", "/Projects/A/b.txt/ came before"},
        {"entry-twice-as-folder-and-file", "/Projects/A/b.txt came before"},
        {"folder-itself-twice", "/Projects/A/ came before"},
        {"folder-itself-missing", "no entry for what was asked"},
        {"no-entries", "no entry for what was asked"},
        {"neither-propstat-nor-status", "/Projects/A/b.txt has neither"},
        {"entry-forbidden", "/Projects/A/b.txt could not be read: it has the status 403"},
        {"entry-not-found", "/Projects/A/b.txt could not be read: it has the status 404"},
        {"propstat-failed", "/Projects/A/b.txt could not be read: its properties have the status 500"},
        {"propstat-forbidden", "/Projects/A/b.txt could not be read: its properties have the status 403"},
        {"propstat-without-status", "/Projects/A/b.txt has properties without a status"},
        {"propstat-with-two-statuses", "/Projects/A/b.txt has more than one status"},
        {"status-unreadable", "/Projects/A/b.txt has a status that cannot be read: \"200 OK\""},
        {"status-of-four-digits", "has a status that cannot be read"},
        {"length-not-a-number", "/Projects/A/b.txt has the getcontentlength \"12 kB\""},
        {"length-negative", "/Projects/A/b.txt has the getcontentlength \"-1\""},
        {"length-empty", "/Projects/A/b.txt has the getcontentlength \"\""},
        {"id-too-large", "/Projects/A/b.txt has the resourceid \"2147483648\""},
        {"version-not-a-number", "/Projects/A/b.txt has the version \"1.0\""},
        {"href-too-long", "an entry has a path or a value above 16384 bytes", true, Ending::KeepOpen, 1, 17 * Kilobyte},
        {"value-too-large", "/Projects/A/b.txt has a path or a value above 65536", true, Ending::KeepOpen, 1,
         65 * Kilobyte},
        {"entry-too-large", "/Projects/A/b.txt has values above 1048576", true, Ending::KeepOpen, 1, 60 * Kilobyte},
        {"tag-too-large", "an attribute or a comment above 65536 bytes", true, Ending::KeepOpen, 1, 65 * Kilobyte},
        {"comment-too-large", "an attribute or a comment above 65536 bytes", true, Ending::KeepOpen, 1, 65 * Kilobyte},
        {"nested-too-deep", "nested deeper than 64"},
    };
    return answers;
}

QString FixtureNameOf(const BadAnswer& answer) {
    return QLatin1String("bad/") + QLatin1String(answer.file);
}

std::string NameOf(const BadAnswer& answer) {
    std::string name = answer.file;
    std::replace(name.begin(), name.end(), '-', '_');
    return name + NameOf(answer.ending) + "_depth_" + std::to_string(answer.depth);
}

void PrintTo(const BadAnswer& answer, std::ostream* stream) {
    *stream << NameOf(answer);
}

}  // namespace tests
