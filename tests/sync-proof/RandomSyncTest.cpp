#include <gmock/gmock.h>

#include <signal.h>

#include <filesystem>
#include <sstream>
#include <thread>

#include "tests/servers/DavServer.h"
#include "tests/service/TemporaryFolder.h"
#include "tests/sync-proof/Chance.h"
#include "tests/sync-proof/DiskWriter.h"
#include "tests/sync-proof/FolderImage.h"
#include "tests/sync-proof/LossCheck.h"
#include "tests/sync-proof/Meanwhile.h"
#include "tests/sync-proof/Pass.h"
#include "tests/sync-proof/RandomChanges.h"
#include "tests/sync-proof/RandomRounds.h"
#include "tests/sync-proof/Tally.h"
#include "tests/sync-proof/WebDavWriter.h"

namespace syncproof {
namespace {

namespace fs = std::filesystem;
using servers::IDavServer;
using servers::ServerKind;
using servers::StartDavServer;
using servers::WithClockShift;
using Random = RandomChanges::Random;
using Words = std::vector<std::string>;

/// A synced folder, and who writes in it.
struct Place {
    Place(const std::string& name, unsigned seed)
        : random(seed), changes(folder.Path(), name, random, Writer(folder)) {}

    static std::unique_ptr<IFolderWriter> Writer(const service::test::TemporaryFolder& folder) {
        return std::make_unique<DiskWriter>(folder.Path(), DiskWriter::Writing::Aside);
    }

    const service::test::TemporaryFolder folder;
    Random random;
    RandomChanges changes;
    /// What its passes of the round said.
    std::string said;
};

/// Two folders that are synced with one folder of a server, in which another client writes, too.
class SyncedFolders {
public:
    SyncedFolders(ServerKind kind, unsigned seed, Tally& tally)
        : _kind(kind), _tally(tally), _chance(seed, tally), _losses(tally) {
        fs::create_directories(_there / "shared");
        _StartServer(0);
        // What lies in a folder with a line break in its name, sabre/dav takes for the root.
        if (kind == ServerKind::Rclone || kind == ServerKind::SabreTags) {
            for (RandomChanges* changes : {&_places[0].changes, &_places[1].changes, &_changesThere}) {
                changes->LeaveControlCharactersOut();
            }
        }
    }

    ~SyncedFolders() {
        for (const RandomChanges* changes : _AllChanges()) {
            _tally.written += changes->Written().size();
        }
    }
    SyncedFolders(const SyncedFolders&) = delete;
    SyncedFolders& operator=(const SyncedFolders&) = delete;

    /// Returns what was lost.
    std::string Round() {
        for (Place& place : _places) {
            place.said.clear();
            const size_t changes = 3 + _chance.Below(15);
            for (size_t i = 0; i < changes; ++i) {
                place.changes.Change();
            }
        }
        for (size_t i = _chance.Below(8); i > 0; --i) {
            _changesThere.Change();
        }
        if (_chance.Happens("clock of the server", 20)) {
            _StartServer(_chance.ClockShift());
        }
        // Between the last look and the request of a pass, a server without conditions overwrites what another sends.
        const bool knowsConditions = _kind != ServerKind::Rclone;
        std::vector<std::unique_ptr<Meanwhile>> mishaps;
        for (Place& place : _places) {
            if (_chance.Happens("writer here", 3)) {
                mishaps.push_back(std::make_unique<Meanwhile>(std::chrono::milliseconds(1 + _chance.Below(10)),
                                                              [&place] { place.changes.Change(); }));
            }
        }
        if (knowsConditions && _chance.Happens("writer there", 3)) {
            mishaps.push_back(std::make_unique<Meanwhile>(std::chrono::milliseconds(1 + _chance.Below(10)),
                                                          [this] { _changesThere.Change(); }));
        }
        auto first = _Sync(_places[0]);
        if (!knowsConditions || !_chance.Happens("at the same time", 2)) {
            _End(_places[0], *first);
            first.reset();
        }
        const auto second = _Sync(_places[1]);
        if (_chance.Happens("service away", 12)) {
            std::this_thread::sleep_for(std::chrono::microseconds(_chance.Below(80000)));
            _server.reset();
        }
        _End(_places[1], *second);
        if (first) {
            _End(_places[0], *first);
        }
        mishaps.clear();
        if (!_server) {
            _StartServer(0);
        }
        return _Lost();
    }

    /// People end all conflicts; then passes that say that all is well have to leave all sides equal. Returns what is
    /// not as it has to be.
    std::string Settle() {
        std::string text;
        for (int i = 0; i < 10; ++i) {
            bool isQuiet = true;
            text.clear();
            for (Place& place : {std::ref(_places[0]), std::ref(_places[1]), std::ref(_places[0])}) {
                const auto pass = _Sync(place);
                isQuiet = pass->ExitCode() == 0 && isQuiet;
                text += pass->Text();
                isQuiet = !_EndConflicts(place, *pass) && isQuiet;
            }
            if (isQuiet) {
                const FolderImage there = ReadFolder(_there / "shared");
                return Differences(ReadFolder(_places[0].folder.Path()), there) +
                       Differences(ReadFolder(_places[1].folder.Path()), there) + _Lost();
            }
        }
        return "It does not settle:\n" + text + _server->Log();
    }

private:
    void _StartServer(int clockShift) {
        _server.reset();
        _server = StartDavServer(_kind, _there.Path(), clockShift);
        _writerThere->Connect(_server->Port());
    }

    std::unique_ptr<Pass> _Sync(Place& place) {
        auto environment = Pass::ReachingPort(_server->Port());
        if (_chance.Happens("clock here", 15)) {
            environment.merge(WithClockShift(_chance.ClockShift()));
        }
        return std::make_unique<Pass>(
            Words{"sync", place.folder.Path(), std::string(Pass::Url) + "shared/", "--max-delete", "100%"},
            environment);
    }

    void _End(Place& place, Pass& pass) {
        if (_chance.Happens("kill", 6)) {
            std::this_thread::sleep_for(std::chrono::microseconds(_chance.Below(120000)));
            pass.Signal(SIGKILL);
        }
        const int exit = pass.ExitCode();
        place.said += pass.Text();
        _tally.exits[exit]++;
        EXPECT_THAT(exit, testing::AnyOf(0, 1, 3, -SIGKILL)) << pass.Text();
    }

    /// Deletes here whatever a pass complains of, and all copies. Returns whether there was any.
    static bool _EndConflicts(Place& place, const Pass& pass) {
        bool isAny = false;
        const auto remove = [&place, &isAny](const std::string& path) {
            isAny = true;
            place.changes.Remove(path);
        };
        for (const auto& [path, events] : pass.Events()) {
            for (const char* event : {"conflict", "kept", "refused", "failed"}) {
                if (events.count(event) != 0 && !path.empty() && fs::exists(place.folder / path)) {
                    remove(path);
                }
            }
        }
        for (const auto& [path, content] : ReadFolder(place.folder.Path())) {
            if (path.find(" (from the service, ") != std::string::npos ||
                path.find(" (changed here, ") != std::string::npos) {
                remove(path);
            }
        }
        return isAny;
    }

    std::vector<const RandomChanges*> _AllChanges() const {
        return {&_places[0].changes, &_places[1].changes, &_changesThere};
    }

    std::string _Lost() {
        const std::string lost =
            _losses.Lost(_AllChanges(), {_there.Path(), _places[0].folder.Path(), _places[1].folder.Path()});
        return lost.empty() ? "" : "Lost:\n" + lost + _Story();
    }

    std::string _Story() const {
        std::string story;
        for (const Place& place : _places) {
            story += place.said + place.changes.Journal();
        }
        return story + _changesThere.Journal() + _server->Log();
    }

    const ServerKind _kind;
    Tally& _tally;
    Chance _chance;
    LossCheck _losses;
    const service::test::TemporaryFolder _there;
    std::unique_ptr<IDavServer> _server;
    /// What runs beside a pass draws from numbers of its own, or no seed would give the same again.
    Place _places[2] = {{"first", _chance.Seed()}, {"second", _chance.Seed()}};
    Random _randomThere{_chance.Seed()};
    WebDavWriter* _writerThere = new WebDavWriter("shared", _there / "shared");
    RandomChanges _changesThere{_there / "shared", "there", _randomThere, std::unique_ptr<IFolderWriter>(_writerThere)};
};

class RandomSyncTest : public testing::TestWithParam<ServerKind> {};

TEST_P(RandomSyncTest, LosesNothingAndLeavesAllSidesEqual) {
    std::ostringstream name;
    name << GetParam();
    Rounds rounds;
    if (GetParam() == ServerKind::SabreTags) {
        // What it has of its own is what tells of changes.
        rounds.count = rounds.untilSettled = 3;
    }
    MakeRounds<SyncedFolders>(rounds, name.str(), [](unsigned seed, Tally& tally) {
        return std::make_unique<SyncedFolders>(GetParam(), seed, tally);
    });
}

INSTANTIATE_TEST_SUITE_P(On, RandomSyncTest,
                         testing::Values(ServerKind::StandIn, ServerKind::Apache, ServerKind::Rclone,
                                         ServerKind::SabreTags),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace syncproof
