#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <set>

#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

// What a resource is like to a client. Equal before and after, if nothing happened to it.
struct Seen {
    std::string content;
    std::string color;
    std::string version;
    // Where the same resource was before; "new" if nowhere.
    std::string origin;

    bool operator==(const Seen& other) const {
        return content == other.content && color == other.color && version == other.version && origin == other.origin;
    }
};

void PrintTo(const Seen& seen, std::ostream* out) {
    *out << "'" << seen.content << "' color '" << seen.color << "' version " << seen.version << " from " << seen.origin;
}

// By href.
using Tree = std::map<std::string, Seen>;
// The hrefs of resources by their item ids.
using Origins = std::map<std::string, std::string>;

Tree Look(HttpClient& client, const Origins& origins) {
    const auto answer = client.Send("PROPFIND", "/", {},
                                    "<propfind xmlns='DAV:'><allprop/><include><syncproperties/></include></propfind>");
    Tree tree;
    for (const auto& [href, response] : Multistatus(answer.body).responses) {
        const auto value = [&values = response.values](const std::string& name) {
            const auto found = values.find(name);
            return found == values.end() ? std::string() : found->second;
        };
        const auto origin = origins.find(value("itemid"));
        const std::string content = href.back() == '/' ? "" : client.Send("GET", href).body;
        tree[href] = {content, value("{urn:u}color"), value("version"),
                      origin == origins.end() ? "new" : origin->second};
    }
    return tree;
}

Origins LookForOrigins(HttpClient& client) {
    Origins origins;
    const auto answer = client.Send("PROPFIND", "/", {}, "<propfind xmlns='DAV:'><prop><itemid/></prop></propfind>");
    for (const auto& [href, response] : Multistatus(answer.body).responses) {
        origins[response.values.at("itemid")] = href;
    }
    return origins;
}

struct Operation {
    const char* name;
    const char* method;
    // What stands in braces is replaced by the item id of the folder with this href.
    const char* target;
    const char* destination;
    std::string body;
};

void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

std::string SetColor(const std::string& color) {
    return "<D:propertyupdate xmlns:D='DAV:' xmlns:u='urn:u'><D:set><D:prop><u:color>" + color +
           "</u:color></D:prop></D:set></D:propertyupdate>";
}

class CrashPointsTest : public testing::TestWithParam<Operation> {
protected:
    // Always the same resources with the same content, whatever there was before.
    static void Prepare(HttpClient& client) {
        for (const char* target : {"/f", "/g", "/d", "/e", "/new"}) {
            client.Send("DELETE", target);
        }
        for (const char* target : {"/f", "/g"}) {
            client.Send("PUT", target, {}, std::string("content of ") + target);
            client.Send("PROPPATCH", target, {}, SetColor(target));
        }
        for (const char* target : {"/d", "/d/inner", "/e"}) {
            client.Send("MKCOL", target);
        }
        for (const char* target : {"/d/f", "/d/inner/f", "/e/f"}) {
            client.Send("PUT", target, {}, std::string("content of ") + target);
            client.Send("PROPPATCH", target, {}, SetColor(target));
        }
    }

    static std::string Target(const Operation& operation, const Origins& origins) {
        std::string target = operation.target;
        if (const std::size_t begin = target.find('{'); begin != std::string::npos) {
            const std::size_t end = target.find('}');
            const std::string href = target.substr(begin + 1, end - begin - 1);
            const auto origin =
                std::find_if(origins.begin(), origins.end(), [&](const auto& known) { return known.second == href; });
            target.replace(begin, end + 1 - begin, origin == origins.end() ? "unknown" : origin->first);
        }
        return target;
    }

    static long Carry(const Operation& operation, HttpClient& client, const Origins& origins) {
        std::vector<std::string> headers;
        if (operation.destination != nullptr) {
            headers.push_back("Destination: " + client.Url(operation.destination));
        }
        return client.Send(operation.method, Target(operation, origins), headers, operation.body).status;
    }
};

// Kills the service before each of the calls by which it changes the disk, one after the other; or before some, which
// are others each time.
TEST_P(CrashPointsTest, ChangeIsWhollyMadeOrNotAtAll) {
    const TemporaryFolder folder;
    auto service = std::make_unique<ServiceProcess>(std::vector<std::string>{folder.Path()});
    auto client = std::make_unique<HttpClient>(service->Port());
    const auto restart = [&] {
        client.reset();
        service.reset();
        service = std::make_unique<ServiceProcess>(std::vector<std::string>{folder.Path()});
        client = std::make_unique<HttpClient>(service->Port());
    };
    Prepare(*client);
    const Origins firstOrigins = LookForOrigins(*client);
    const Tree before = Look(*client, firstOrigins);
    ASSERT_LT(Carry(GetParam(), *client, firstOrigins), 300);
    const Tree after = Look(*client, firstOrigins);
    ASSERT_NE(before, after);

    int killedInOperation = 0;
    bool finished = false;
    for (int point = 1 + static_cast<int>(std::random_device()() % CRASH_POINT_STRIDE); !finished;
         point += CRASH_POINT_STRIDE) {
        Prepare(*client);
        const Origins origins = LookForOrigins(*client);
        client.reset();
        service.reset();
        bool acknowledged = false;
        try {
            ServiceProcess doomed({folder.Path()}, {{"LD_PRELOAD", DISK_TROUBLE_LIBRARY},
                                                    {"CRASH_POINT", std::to_string(point)},
                                                    {"ASAN_OPTIONS", "verify_asan_link_order=0"}});
            HttpClient other(doomed.Port());
            acknowledged = Carry(GetParam(), other, origins) != 0;
            finished = other.Send("OPTIONS", "/").status == 200;
            killedInOperation += acknowledged ? 0 : 1;
        } catch (const std::runtime_error&) {
            // Killed before it served: nothing was asked of it.
        }
        restart();
        const Tree found = Look(*client, origins);
        EXPECT_TRUE(found == after || (!acknowledged && found == before))
            << "at call " << point << (acknowledged ? ", acknowledged: " : ": ") << testing::PrintToString(found);
        EXPECT_TRUE(std::filesystem::is_empty(folder / ".ovsync-service/work")) << point;
    }
    EXPECT_GT(killedInOperation, 2 / CRASH_POINT_STRIDE);
}

INSTANTIATE_TEST_SUITE_P(EachOperation, CrashPointsTest,
                         testing::Values(Operation{"PutOfANewFile", "PUT", "/new", nullptr, "x"},
                                         Operation{"PutOverAFile", "PUT", "/f", nullptr, "other"},
                                         Operation{"DeleteOfAFile", "DELETE", "/f", nullptr, ""},
                                         Operation{"DeleteOfATree", "DELETE", "/d", nullptr, ""},
                                         Operation{"DeleteById", "DELETE", "/.ovs/folders/{/d/}/", nullptr, ""},
                                         Operation{"Mkcol", "MKCOL", "/new", nullptr, ""},
                                         Operation{"MkcolById", "MKCOL", "/.ovs/folders/{/d/}/new/", nullptr, ""},
                                         Operation{"MoveOfAFile", "MOVE", "/f", "/e/new", ""},
                                         Operation{"MoveOverAFile", "MOVE", "/f", "/g", ""},
                                         Operation{"MoveOverATree", "MOVE", "/d", "/e", ""},
                                         Operation{"CopyOfATree", "COPY", "/d", "/new", ""},
                                         Operation{"CopyOverAFile", "COPY", "/f", "/g", ""},
                                         Operation{"CopyOverATree", "COPY", "/d", "/e", ""},
                                         Operation{"Proppatch", "PROPPATCH", "/f", nullptr, SetColor("red")}),
                         [](const auto& operation) { return operation.param.name; });

}  // namespace
}  // namespace service::test
