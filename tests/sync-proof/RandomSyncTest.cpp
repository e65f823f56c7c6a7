#include <gmock/gmock.h>

#include <signal.h>

#include <filesystem>
#include <iostream>
#include <random>
#include <thread>

#include "tests/servers/DavServer.h"
#include "tests/service/TemporaryFolder.h"
#include "tests/sync-proof/DiskWriter.h"
#include "tests/sync-proof/FolderImage.h"
#include "tests/sync-proof/Meanwhile.h"
#include "tests/sync-proof/Pass.h"
#include "tests/sync-proof/RandomChanges.h"
#include "tests/sync-proof/Setting.h"
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

/// So many rounds are made in the same folders.
constexpr int RoundsOfFolders = 40;
/// So often people end all conflicts, and all sides have to become equal.
constexpr int RoundsUntilEqual = 5;

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
    SyncedFolders(ServerKind kind, unsigned seed, Tally& tally) : _kind(kind), _random(seed), _tally(tally) {
        fs::create_directories(_there / "shared");
        _StartServer(0);
        if (kind == ServerKind::Rclone) {
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
        ++_tally.rounds;
        for (Place& place : _places) {
            place.said.clear();
            const size_t changes = 3 + _Below(15);
            for (size_t i = 0; i < changes; ++i) {
                place.changes.Change();
            }
        }
        for (size_t i = _Below(8); i > 0; --i) {
            _changesThere.Change();
        }
        if (_Happens("clock of the server", 20)) {
            _StartServer(_ClockShift());
        }
        // Between the last look and the request of a pass, a server without conditions overwrites what another sends.
        const bool knowsConditions = _kind != ServerKind::Rclone;
        std::vector<std::unique_ptr<Meanwhile>> mishaps;
        for (Place& place : _places) {
            if (_Happens("writer here", 3)) {
                mishaps.push_back(std::make_unique<Meanwhile>(std::chrono::milliseconds(1 + _Below(10)),
                                                              [&place] { place.changes.Change(); }));
            }
        }
        if (knowsConditions && _Happens("writer there", 3)) {
            mishaps.push_back(std::make_unique<Meanwhile>(std::chrono::milliseconds(1 + _Below(10)),
                                                          [this] { _changesThere.Change(); }));
        }
        auto first = _Sync(_places[0]);
        if (!knowsConditions || !_Happens("at the same time", 2)) {
            _End(_places[0], *first);
            first.reset();
        }
        const auto second = _Sync(_places[1]);
        if (_Happens("service away", 12)) {
            std::this_thread::sleep_for(std::chrono::microseconds(_Below(80000)));
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
        ++_tally.settled;
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
    size_t _Below(size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(_random); }

    /// Up to two days ahead or behind, in seconds.
    int _ClockShift() {
        const int limit = 2 * 86400;
        return std::uniform_int_distribution<int>(-limit, limit)(_random);
    }

    bool _Happens(const std::string& mishap, size_t oneOf) {
        const bool happens = _Below(oneOf) == 0;
        _tally.mishaps[mishap] += happens ? 1 : 0;
        return happens;
    }

    void _StartServer(int clockShift) {
        _server.reset();
        _server = StartDavServer(_kind, _there.Path(), clockShift);
        _writerThere->Connect(_server->Port());
    }

    std::unique_ptr<Pass> _Sync(Place& place) {
        auto environment = Pass::ReachingPort(_server->Port());
        if (_Happens("clock here", 15)) {
            environment.merge(WithClockShift(_ClockShift()));
        }
        return std::make_unique<Pass>(
            Words{"sync", place.folder.Path(), std::string(Pass::Url) + "shared/", "--max-delete", "100%"},
            environment);
    }

    void _End(Place& place, Pass& pass) {
        if (_Happens("kill", 6)) {
            std::this_thread::sleep_for(std::chrono::microseconds(_Below(120000)));
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

    /// What somebody wrote, nobody changed or deleted, and is nowhere.
    std::string _Lost() {
        std::set<std::string> left = ContentsOf(ReadFolder(_there.Path()));
        std::set<std::string> kept;
        std::set<std::string> retired;
        for (const Place& place : _places) {
            left.merge(ContentsOf(ReadFolder(place.folder.Path())));
            const std::string trash = place.folder / ".ovsync/trash";
            if (fs::exists(trash)) {
                kept.merge(ContentsOf(ReadFolder(trash)));
            }
        }
        for (const RandomChanges* changes : _AllChanges()) {
            retired.insert(changes->Retired().begin(), changes->Retired().end());
        }
        std::string lost;
        for (const RandomChanges* changes : _AllChanges()) {
            for (const auto& [content, path] : changes->Written()) {
                if (retired.count(content) != 0 || left.count(content) != 0) {
                    continue;
                }
                if (kept.count(content) != 0) {
                    _tally.inTrash += _inTrash.insert(content).second ? 1 : 0;
                } else {
                    lost += path + ": " + content.substr(0, 40) + "\n";
                }
            }
        }
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
    Random _random;
    Tally& _tally;
    const service::test::TemporaryFolder _there;
    std::unique_ptr<IDavServer> _server;
    /// What runs beside a pass draws from numbers of its own, or no seed would give the same again.
    Place _places[2] = {{"first", static_cast<unsigned>(_random())}, {"second", static_cast<unsigned>(_random())}};
    Random _randomThere{static_cast<unsigned>(_random())};
    WebDavWriter* _writerThere = new WebDavWriter("shared", _there / "shared");
    RandomChanges _changesThere{_there / "shared", "there", _randomThere, std::unique_ptr<IFolderWriter>(_writerThere)};
    std::set<std::string> _inTrash;
};

class RandomSyncTest : public testing::TestWithParam<ServerKind> {};

TEST_P(RandomSyncTest, LosesNothingAndLeavesAllSidesEqual) {
    const int rounds = Setting("OVSYNC_PROOF_ROUNDS", 5);
    auto seed = static_cast<unsigned>(Setting("OVSYNC_PROOF_SEED", static_cast<int>(std::random_device()() >> 1U)));
    Tally tally;
    std::unique_ptr<SyncedFolders> folders;
    for (int round = 0; round < rounds; ++round) {
        if (round % RoundsOfFolders == 0) {
            folders = std::make_unique<SyncedFolders>(GetParam(), ++seed, tally);
        }
        SCOPED_TRACE("OVSYNC_PROOF_SEED=" + std::to_string(seed - 1) + ", round " +
                     std::to_string(round % RoundsOfFolders));
        ASSERT_EQ(folders->Round(), "");
        if (round % RoundsUntilEqual == RoundsUntilEqual - 1) {
            ASSERT_EQ(folders->Settle(), "");
        }
    }
    folders.reset();
    std::cout << GetParam() << ": " << tally << "\n";
}

INSTANTIATE_TEST_SUITE_P(On, RandomSyncTest,
                         testing::Values(ServerKind::StandIn, ServerKind::Apache, ServerKind::Rclone),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace syncproof
