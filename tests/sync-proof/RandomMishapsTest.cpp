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
using Words = std::vector<std::string>;

/// A folder here and one on a server, and in the one here another that is synced with another folder of that server.
class RandomLife {
public:
    RandomLife(ServerKind kind, unsigned seed, Tally& tally) : _kind(kind), _tally(tally), _chance(seed, tally) {
        fs::create_directories(_there / "outer");
        fs::create_directories(_there / "inner");
        _StartServer(0);
        if (kind == ServerKind::Rclone) {
            _changesHere.LeaveControlCharactersOut();
            _changesThere.LeaveControlCharactersOut();
            _changesOfInner.LeaveControlCharactersOut();
        }
        EXPECT_EQ(_Pull("inner", _Inner(), {})->ExitCode(), 0);
    }

    /// Returns what was lost.
    std::string Round() {
        _lastPasses.clear();
        const size_t changes = 5 + _chance.Below(25);
        for (size_t i = 0; i < changes; ++i) {
            _changesHere.Change();
            _changesThere.Change();
            if (i % 4 == 0) {
                _changesOfInner.Change();
            }
        }
        _MakeOrRestoreBackup();
        if (_chance.Happens("clock of the server", 20)) {
            _StartServer(_chance.ClockShift());
        }
        {
            const auto inner = _chance.Happens("inner pass meanwhile", 5) ? _Push("inner", _Inner(), {}) : nullptr;
            const auto mishaps = _BeginMishaps(true);
            _End(*_Pull("outer", _here.Path(), _chance.Below(3) == 0 ? Words{} : Words{"--delete"}));
            if (inner) {
                EXPECT_THAT(inner->ExitCode(), testing::AnyOf(0, 1)) << inner->Text();
            }
        }
        {
            const auto inner =
                _chance.Happens("inner pass meanwhile", 5) ? _Pull("inner", _Inner(), {"--delete"}) : nullptr;
            // Between the last look and the request of a push, a server without conditions overwrites what another
            // sends.
            const auto mishaps = _BeginMishaps(_kind != ServerKind::Rclone);
            _End(*_Push("outer", _here.Path(), {}));
            if (inner) {
                EXPECT_THAT(inner->ExitCode(), testing::AnyOf(0, 1)) << inner->Text();
            }
        }
        return _Lost();
    }

    /// People end all conflicts here; then two passes that both say that all is well have to leave both sides equal.
    /// Returns what is not as it has to be.
    std::string Settle() {
        std::string text;
        for (int i = 0; i < 8; ++i) {
            const auto pull = _Pull("outer", _here.Path(), {"--delete", "--exclude", "inner"});
            const int pulled = pull->ExitCode();
            const auto push = _Push("outer", _here.Path(), {"--exclude", "inner"});
            const int pushed = push->ExitCode();
            if (pulled == 0 && pushed == 0) {
                return Differences(_ImageHere(), ReadFolder(_there / "outer")) + _Lost();
            }
            text = pull->Text() + push->Text();
            _EndConflicts(*pull);
            _EndConflicts(*push);
        }
        return "It does not settle:\n" + text + _server->Log();
    }

    ~RandomLife() {
        for (const RandomChanges* changes : {&_changesHere, &_changesThere, &_changesOfInner}) {
            _tally.written += changes->Written().size();
        }
    }
    RandomLife(const RandomLife&) = delete;
    RandomLife& operator=(const RandomLife&) = delete;

private:
    std::string _Inner() const { return _here / "inner"; }

    void _StartServer(int clockShift) {
        _server.reset();
        _server = StartDavServer(_kind, _there.Path(), clockShift);
        _writerThere->Connect(_server->Port());
    }

    std::unique_ptr<Pass> _Run(const Words& arguments, const Words& options) {
        Words words = arguments;
        words.insert(words.end(), options.begin(), options.end());
        auto environment = Pass::ReachingPort(_server->Port());
        if (_chance.Happens("clock here", 15)) {
            environment.merge(WithClockShift(_chance.ClockShift()));
        }
        return std::make_unique<Pass>(words, environment);
    }
    std::unique_ptr<Pass> _Pull(const std::string& folder, const std::string& here, const Words& options) {
        return _Run({"pull", Pass::Url + folder + "/", here, "--max-delete", "100%"}, options);
    }
    std::unique_ptr<Pass> _Push(const std::string& folder, const std::string& here, const Words& options) {
        return _Run({"push", here, Pass::Url + folder + "/"}, options);
    }

    void _End(Pass& pass) {
        if (_chance.Happens("kill", 6)) {
            std::this_thread::sleep_for(std::chrono::microseconds(_chance.Below(80000)));
            pass.Signal(SIGKILL);
        }
        const int exit = pass.ExitCode();
        _lastPasses += pass.Text();
        _tally.exits[exit]++;
        EXPECT_THAT(exit, testing::AnyOf(0, 1, 3, -SIGKILL)) << pass.Text();
    }

    std::vector<std::unique_ptr<Meanwhile>> _BeginMishaps(bool canBeThere) {
        std::vector<std::unique_ptr<Meanwhile>> mishaps;
        const std::chrono::milliseconds pause(1 + _chance.Below(10));
        if (_chance.Happens("writer here", 2)) {
            mishaps.push_back(std::make_unique<Meanwhile>(pause, [this] { _changesHere.Change(); }));
        }
        if (canBeThere && _chance.Happens("writer there", 2)) {
            mishaps.push_back(std::make_unique<Meanwhile>(pause, [this] { _changesThere.Change(); }));
        }
        if (_chance.Happens("cleaner", 5)) {
            mishaps.push_back(std::make_unique<Meanwhile>(std::chrono::milliseconds(1), [this] { _Clean(); }));
        }
        return mishaps;
    }

    /// Removes the first temporary file that is found.
    void _Clean() {
        for (const auto& entry : fs::recursive_directory_iterator(_here.Path())) {
            if (entry.path().string().find(".{SyncTemp}") != std::string::npos) {
                const std::string cleaned = _here.Path() + ".cleaned";
                fs::rename(entry.path(), cleaned);
                _cleaned.insert(service::test::ReadFile(cleaned).value_or(""));
                fs::remove(cleaned);
                return;
            }
        }
    }

    void _MakeOrRestoreBackup() {
        const std::string copy = _backup / "copy";
        if (_chance.Happens("backup", 8)) {
            fs::remove_all(copy);
            _server.reset();
            fs::copy(_there.Path(), copy, fs::copy_options::recursive);
            _StartServer(0);
        } else if (fs::exists(copy) && _chance.Happens("backup restored", 8)) {
            _server.reset();
            for (const auto& [path, content] : ReadFolder(_there.Path())) {
                _restoredOver.insert(content);
            }
            for (const auto& entry : fs::directory_iterator(_there.Path())) {
                fs::remove_all(entry.path());
            }
            fs::copy(copy, _there.Path(), fs::copy_options::recursive);
            _StartServer(0);
        }
    }

    /// Deletes here whatever a pass complains of, and all copies.
    void _EndConflicts(const Pass& pass) {
        for (const auto& [path, events] : pass.Events()) {
            for (const char* event : {"conflict", "kept", "refused", "failed", "newerThere"}) {
                if (events.count(event) != 0 && path != "inner" && !path.empty()) {
                    _changesHere.Remove(path);
                }
            }
        }
        for (const auto& [path, content] : _ImageHere()) {
            if (path.find(" (from the service, ") != std::string::npos ||
                path.find(" (changed here, ") != std::string::npos) {
                _changesHere.Remove(path);
            }
        }
    }

    FolderImage _ImageHere() const {
        FolderImage image = ReadFolder(_here.Path());
        for (auto file = image.begin(); file != image.end();) {
            file = file->first.rfind("inner/", 0) == 0 ? image.erase(file) : std::next(file);
        }
        return image;
    }

    /// What somebody wrote, nobody changed or deleted, and is nowhere.
    std::string _Lost() {
        const std::set<std::string> left = _Left();
        std::map<std::string, std::string> missing;
        _AddMissing(_changesHere, left, missing);
        _AddMissing(_changesThere, left, missing);
        _AddMissing(_changesOfInner, left, missing);
        if (missing.empty()) {
            return "";
        }
        std::set<std::string> kept;
        for (const std::string& trash : {_here / ".ovsync/trash", _Inner() + "/.ovsync/trash"}) {
            if (fs::exists(trash)) {
                kept.merge(ContentsOf(ReadFolder(trash)));
            }
        }
        std::string lost;
        for (const auto& [content, path] : missing) {
            const bool isKept = kept.count(content) != 0;
            if (isKept) {
                _tally.inTrash += _inTrash.insert(content).second ? 1 : 0;
            } else {
                lost += path + ": " + content.substr(0, 40) + "\n";
            }
        }
        return lost.empty()
                   ? ""
                   : "Lost:\n" + lost + _lastPasses + _changesHere.Journal() + _changesThere.Journal() + _server->Log();
    }

    std::set<std::string> _Left() const {
        std::set<std::string> left = ContentsOf(ReadFolder(_here.Path()));
        left.merge(ContentsOf(ReadFolder(_there.Path())));
        return left;
    }

    void _AddMissing(const RandomChanges& changes, const std::set<std::string>& left,
                     std::map<std::string, std::string>& missing) const {
        for (const auto& [content, path] : changes.Written()) {
            const bool isOfThere = content.rfind("there ", 0) == 0;
            // What this side wrote and the other one replaced has to be in the trash here.
            const bool isRetired = _changesHere.Retired().count(content) != 0 ||
                                   _changesOfInner.Retired().count(content) != 0 ||
                                   (isOfThere && _changesThere.Retired().count(content) != 0) ||
                                   (isOfThere ? _restoredOver : _cleaned).count(content) != 0;
            if (!isRetired && left.count(content) == 0) {
                missing.emplace(content, path);
            }
        }
    }

    const ServerKind _kind;
    Tally& _tally;
    Chance _chance;
    const service::test::TemporaryFolder _here;
    const service::test::TemporaryFolder _there;
    const service::test::TemporaryFolder _backup;
    std::unique_ptr<IDavServer> _server;
    /// What ran beside a pass draws from numbers of its own, or no seed would give the same again.
    RandomChanges::Random _randomHere{_chance.Seed()};
    RandomChanges::Random _randomThere{_chance.Seed()};
    WebDavWriter* _writerThere = new WebDavWriter("outer", _there / "outer");
    RandomChanges _changesHere{_here.Path(), "here", _randomHere,
                               std::make_unique<DiskWriter>(_here.Path(), DiskWriter::Writing::Aside)};
    RandomChanges _changesThere{_there / "outer", "there", _randomThere, std::unique_ptr<IFolderWriter>(_writerThere)};
    RandomChanges _changesOfInner{_Inner(), "inner", _chance.Source(),
                                  std::make_unique<DiskWriter>(_Inner(), DiskWriter::Writing::InPlace)};
    /// What a cleaner removed here, and what the server had before it was restored.
    std::set<std::string> _cleaned;
    std::set<std::string> _restoredOver;
    std::set<std::string> _inTrash;
    /// What the passes of the round said.
    std::string _lastPasses;
};

class RandomMishapsTest : public testing::TestWithParam<ServerKind> {};

TEST_P(RandomMishapsTest, LoseNothingAndLeaveBothSidesEqual) {
    std::ostringstream name;
    name << GetParam();
    MakeRounds<RandomLife>({}, name.str(), [](unsigned seed, Tally& tally) {
        return std::make_unique<RandomLife>(GetParam(), seed, tally);
    });
}

INSTANTIATE_TEST_SUITE_P(On, RandomMishapsTest,
                         testing::Values(ServerKind::StandIn, ServerKind::Apache, ServerKind::Rclone),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace syncproof
