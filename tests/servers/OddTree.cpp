#include "tests/servers/OddTree.h"

#include <string>
#include <vector>

namespace servers {
namespace {

const std::string Deep = "deep/with space/#hash & +plus/50% off/what?/[brackets] {braces}/semi;colon:at@/";

std::vector<std::string> Paths() {
    const std::string deepest = Deep + "\u00DCn\u00EF \u2013 \u65E5\u672C\u8A9E/";
    return {
        // What a shell or a URL gives a meaning.
        "plain.txt",
        "two  spaces.txt",
        " space at both ends ",
        "#hash.txt",
        "100%.txt",
        "what?.txt",
        "a=b&c=d.txt",
        "1+1=2.txt",
        "semi;colon.txt",
        "C:colon.txt",
        "user@host.txt",
        "'single'.txt",
        "\"double\".txt",
        "back\\slash.txt",
        "`tick` $HOME ^caret|pipe!.txt",
        "<angle> *star*, comma.txt",
        // What looks escaped already.
        "%41%2F%00.txt",
        "&amp; &#65; ]]>.txt",
        "=?UTF-8?Q?x?=.txt",
        // One name composed and decomposed, and what has no composed form.
        "caf\u00E9.txt",
        "cafe\u0301.txt",
        "\u4F60\u597D \u043C\u0438\u0440 \u0634\u0643\u0631\u0627.txt",
        "\U0001F600 emoji \U0001F469\u200D\U0001F680.txt",
        "right \u202Eto left.txt",
        "no\u00A0break.txt",
        "half \uFF0F full.txt",
        // What a line is not to be split at.
        "tab\tstop.txt",
        "line\nbreak.txt",
        // What hides, or stands for something else elsewhere.
        ".hidden",
        "..two dots",
        "...",
        "dot at the end.",
        "~",
        "backup~",
        "-rf",
        "CON",
        "UPPER.TXT",
        "upper.txt",
        "index.html",
        // lighttpd writes an upload beside it first, under a name that is a little longer.
        std::string(240, 'l') + ".txt",
        // In folders of all kinds.
        Deep + "a file; with #all of % it?.txt",
        deepest + "deepest",
        ".hidden folder/.hidden file",
        "~tilde/~",
        "'quoted' \"folder\"/it's \"it\".txt",
        "%2F %25/100%25.txt",
        // Empty, or with folders alone.
        "empty/",
        " folder with spaces /",
        "caf\u00E9/",
        "cafe\u0301/",
        "\U0001F600/",
        "=+&$,!()/",
        "dots.../..folder/",
        "plain/CON/",
        std::string(250, 'f') + "/",
    };
}

/// The folders above `path`, each with a '/' at its end.
std::vector<std::string> Above(const std::string& path) {
    std::vector<std::string> folders;
    for (auto slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        folders.push_back(path.substr(0, slash + 1));
    }
    return folders;
}

bool CanStore(ServerKind kind, const std::string& path) {
    switch (kind) {
        case ServerKind::Lighttpd:
        case ServerKind::Rclone:
            // lighttpd answers 400 to control characters, escaped or not (url-ctrls-reject). rclone lists other
            // characters in their place, and does not find a file by its own name.
            return path.find_first_of("\t\n") == std::string::npos;
        case ServerKind::Nginx:
            // Its listings leave out what begins with a dot.
            return ("/" + path).find("/.") == std::string::npos;
        default:
            return true;
    }
}

/// Bytes of all values, of many lengths: none, one, and more than a buffer.
std::string Content(const std::string& path, int number) {
    std::string content;
    for (int i = 0; i < number * number * 40; ++i) {
        content += static_cast<char>(i + number);
    }
    return number == 0 ? content : content + path;
}

}  // namespace

FolderImage OddTree(ServerKind kind) {
    FolderImage tree;
    int number = 0;
    for (const std::string& path : Paths()) {
        if (!CanStore(kind, path)) {
            continue;
        }
        for (const std::string& folder : Above(path)) {
            tree[folder] = "";
        }
        if (path.back() != '/') {
            tree[path] = Content(path, number++);
        }
    }
    return tree;
}

}  // namespace servers
