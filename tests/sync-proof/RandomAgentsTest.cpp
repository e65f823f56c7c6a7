#include <gtest/gtest.h>

#include <signal.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <set>
#include <sstream>
#include <thread>

#include "tests/servers/DavServer.h"
#include "tests/service/TemporaryFolder.h"
#include "tests/sync-proof/Chance.h"
#include "tests/sync-proof/FolderImage.h"
#include "tests/sync-proof/LossCheck.h"
#include "tests/sync-proof/RandomChanges.h"
#include "tests/sync-proof/RandomRounds.h"
#include "tests/sync-proof/SyncingUser.h"
#include "tests/sync-proof/UploadsAtOnce.h"
#include "tests/sync-proof/WebDavWriter.h"

namespace syncproof {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using servers::FreePort;
using servers::IDavServer;
using servers::ServerKind;
using servers::StartDavServer;

/// How often an agent that nobody tells to look asks the service: as often as a service can have it, or never in a
/// test.
constexpr int ShortestInterval = 15;
constexpr int NoInterval = 100000;

/// For what comes about by itself, but never in a test in which somebody has to wait for a question to the service.
constexpr std::chrono::seconds Patience(120);

/// Whether `path` is one of `reported`, or lies in one, or one lies in it.
bool IsReported(const std::string& path, const std::set<std::string>& reported) {
    const auto isIn = [](const std::string& inner, const std::string& outer) {
        return inner == outer || inner == outer + "/" || inner.rfind(outer + "/", 0) == 0;
    };
    return std::any_of(reported.begin(), reported.end(),
                       [&](const std::string& other) { return isIn(path, other) || isIn(other + "/", path); });
}

/// Two or three people whose agents keep a folder each in step with one folder of a server, in which another client
/// writes, too.
class AgentsLife {
public:
    AgentsLife(ServerKind kind, unsigned seed, Tally& tally)
        : _kind(kind), _tally(tally), _chance(seed, tally), _losses(tally) {
        fs::create_directories(_there / "shared");
        _asksByItself = _chance.Happens("life in which agents are left alone", 4);
        const std::string frequency = std::to_string(_asksByItself ? ShortestInterval : NoInterval);
        const std::string folder = kind == ServerKind::StandIn ? ".ovsync-service/" : ".ovs/";
        _there.Write(folder + "sync-config.xml",
                     "<SyncConfig><SyncFrequency>" + frequency + "</SyncFrequency></SyncConfig>");
        _StartServer(0);
        const std::string url = "http://127.0.0.1:" + std::to_string(_port) + "/shared/";
        for (const char* name : {"ann", "ben", "cid"}) {
            if (_users.size() < 2 || _chance.Happens("life of three agents", 2)) {
                _users.push_back(std::make_unique<SyncingUser>(name, url, _chance.Seed()));
            }
        }
        _AllowDeletions(false);
    }

    ~AgentsLife() {
        for (const RandomChanges* changes : _AllChanges()) {
            _tally.written += changes->Written().size();
        }
    }
    AgentsLife(const AgentsLife&) = delete;
    AgentsLife& operator=(const AgentsLife&) = delete;

    /// Returns what was lost.
    std::string Round() {
        const size_t acts = 20 + _chance.Below(30);
        for (size_t i = 0; i < acts; ++i) {
            try {
                _Act();
            } catch (const fs::filesystem_error&) {
                // Somebody else was quicker.
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(_chance.Below(80)));
        }
        for (const auto& user : _users) {
            _EndAbsences(*user);
        }
        _EndAbsenceOfServer();
        return _Lost();
    }

    /// Returns what is not as it has to be when nobody changes anything any more.
    std::string Settle() {
        _AllowDeletions(true);
        for (const auto& user : _users) {
            if (!user->HasAgent()) {
                user->StartAgent(0);
            }
        }
        const auto begin = Clock::now();
        std::string difference = _Await([this] { return _Unreported(); }, !_asksByItself);
        _tally.settling[_asksByItself ? "left alone" : "told to look"].push_back(
            std::chrono::duration<double>(Clock::now() - begin).count());
        if (difference.empty()) {
            difference = _Await([this] { return _Unended(); }, true);
        }
        if (difference.empty()) {
            difference = _ChangeAlone();
        }
        _AllowDeletions(false);
        return difference.empty() ? _Lost() : difference + _Story();
    }

private:
    /// Who is left alone allows them always.
    void _AllowDeletions(bool allows) {
        for (const auto& user : _users) {
            user->Allow(allows || _asksByItself);
            if (user->HasAgent() && !_asksByItself) {
                user->TellToLook();
            }
        }
    }

    void _Act() {
        SyncingUser& user = *_users[_chance.Below(_users.size())];
        const size_t kind = _chance.Below(100);
        if (kind < 45) {
            for (size_t i = user.IsFolderAway() ? 0 : 1 + _chance.Below(5); i > 0; --i) {
                user.Changes().Change();
            }
        } else if (kind < 57) {
            for (size_t i = _IsServing() ? 1 + _chance.Below(3) : 0; i > 0; --i) {
                _changesThere.Change();
            }
        } else if (kind < 62) {
            _MakeConflict();
        } else if (kind < 77) {
            if (user.HasAgent()) {
                user.TellToLook();
                _ChangeMeanwhile(user);
            }
        } else if (kind < 85) {
            _DisturbAgent(user);
        } else if (kind < 88) {
            _DisturbFolder(user);
        } else if (kind < 92) {
            _DisturbServer();
        } else if (kind < 97) {
            _EndAbsences(user);
        } else {
            _EndAbsenceOfServer();
        }
    }

    /// Changes what the pass that has just begun may be about to change.
    void _ChangeMeanwhile(SyncingUser& user) {
        if (user.IsFolderAway() || !_chance.Happens("changes while a pass runs", 2)) {
            return;
        }
        for (size_t i = _chance.Below(40); i > 0; --i) {
            _chance.Below(4) == 0 && _IsServing() ? _changesThere.Change() : user.Changes().Change();
            std::this_thread::sleep_for(std::chrono::microseconds(_chance.Below(8000)));
        }
    }

    /// Changes the same file on two sides.
    void _MakeConflict() {
        const auto changeAt = [this](SyncingUser& user, const std::string& path) {
            if (!user.IsFolderAway() && fs::is_regular_file(user.Folder() + "/" + path)) {
                ++_tally.mishaps["file changed in two folders"];
                user.Changes().Modify(path);
            }
        };
        std::vector<std::string> files;
        for (const auto& [path, content] : ReadFolder(_there / "shared")) {
            if (path.back() != '/') {
                files.push_back(path);
            }
        }
        if (!files.empty()) {
            const std::string& path = files[_chance.Below(files.size())];
            changeAt(*_users[0], path);
            changeAt(*_users[1], path);
        }
    }

    void _DisturbAgent(SyncingUser& user) {
        if (!user.HasAgent()) {
            user.StartAgent(_chance.Happens("clock here", 3) ? _chance.ClockShift() : 0);
        } else if (_isToBeStopped && _chance.Happens("agent stopped", 3)) {
            user.Stop();
        } else {
            if (!user.IsStopped() && _chance.Below(2) == 0) {
                user.TellToLook();
                std::this_thread::sleep_for(std::chrono::microseconds(_chance.Below(150000)));
            }
            ++_tally.mishaps["agent killed"];
            user.KillAgent();
        }
    }

    void _DisturbFolder(SyncingUser& user) {
        if (!user.IsFolderAway()) {
            ++_tally.mishaps["folder away"];
            if (user.HasAgent()) {
                user.TellToLook();
                std::this_thread::sleep_for(std::chrono::microseconds(_chance.Below(150000)));
            }
            user.TakeFolderAway();
        }
    }

    void _DisturbServer() {
        if (!_IsServing()) {
            _EndAbsenceOfServer();
        } else if (_isToBeStopped && _chance.Happens("service stopped", 3)) {
            _server->Signal(SIGSTOP);
            _isServerStopped = true;
        } else if (_chance.Happens("service killed", 2)) {
            _server->Signal(SIGKILL);
            _StopServer();
        } else {
            ++_tally.mishaps["service ended"];
            _StopServer();
        }
    }

    void _EndAbsences(SyncingUser& user) {
        if (user.IsStopped()) {
            user.Continue();
        }
        if (user.IsFolderAway()) {
            user.BringFolderBack();
        }
    }

    void _EndAbsenceOfServer() {
        if (!_server) {
            _StartServer(_chance.Happens("clock of the server", 5) ? _chance.ClockShift() : 0);
        } else if (_isServerStopped) {
            _server->Signal(SIGCONT);
            _isServerStopped = false;
        }
    }

    bool _IsServing() const { return _server && !_isServerStopped; }

    void _StartServer(int clockShift) {
        _server = StartDavServer(_kind, _there.Path(), clockShift, _port);
        _writerThere->Connect(_port);
    }

    void _StopServer() {
        _log += _server->Log();
        _server.reset();
    }

    /// Looks again and again until `difference` returns nothing, and returns what it returned last. Has the agents
    /// look, too, if they are not to be left alone.
    std::string _Await(const std::function<std::string()>& difference, bool tellsToLook) {
        const auto deadline = Clock::now() + Patience;
        std::string last;
        for (int look = 0;; ++look) {
            try {
                last = difference();
            } catch (const fs::filesystem_error& e) {
                // Something is still changing it.
                last = e.what();
            }
            if (last.empty() || Clock::now() > deadline) {
                return last;
            }
            if (tellsToLook && look % 4 == 0) {
                for (const auto& user : _users) {
                    user->TellToLook();
                }
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    }

    /// How the folders differ from that of the service, but for what their agents report. In place of a file in
    /// conflict counts the copy of the service's version beside it, which has to be that of the service.
    std::string _Unreported() const {
        std::string text;
        const FolderImage there = ReadFolder(_there / "shared");
        for (const auto& user : _users) {
            FolderImage here = user->Image();
            for (const auto& [copy, path] : user->Conflicts()) {
                const auto versionThere = there.find(path);
                if (versionThere != there.end() && here[copy] == versionThere->second) {
                    here[path] = here[copy];
                }
                if (there.count(copy) == 0) {
                    here.erase(copy);
                }
            }
            const nlohmann::json status = user->Status();
            if (status.is_null() || status["state"] != "waiting" || !status["error"].is_null()) {
                text += user->Folder() + ": " + status.dump() + "\n";
                continue;
            }
            std::set<std::string> differing = MissingFrom(here, there);
            differing.merge(MissingFrom(there, here));
            const std::set<std::string> reported = _Reported(status);
            for (const std::string& path : differing) {
                if (!IsReported(path, reported)) {
                    text += user->Folder() + ": " + path + "\n" + Differences(here, there) + status.dump() + "\n";
                }
            }
        }
        return text;
    }

    static std::set<std::string> _Reported(const nlohmann::json& status) {
        std::set<std::string> reported;
        for (const nlohmann::json& problem : status["problemList"]) {
            reported.insert(problem["path"]);
        }
        return reported;
    }

    /// How the folders differ from that of the service, and which conflicts there are. Ends these as people do who do
    /// not care for what they lose: deletes what is reported, and all copies.
    std::string _Unended() {
        std::string text;
        const FolderImage there = ReadFolder(_there / "shared");
        for (const auto& user : _users) {
            text += Differences(user->Image(), there);
            const nlohmann::json status = user->Status();
            if (status.is_null() || status["state"] != "waiting" || status["problems"] != 0) {
                text += user->Folder() + ": " + status.dump() + "\n";
            }
            std::set<std::string> inTheWay = status.is_null() ? std::set<std::string>() : _Reported(status);
            for (const auto& [path, content] : user->Image()) {
                if (path.find(" (from the service, ") != std::string::npos ||
                    path.find(" (changed here, ") != std::string::npos) {
                    inTheWay.insert(path);
                }
            }
            for (const std::string& path : inTheWay) {
                if (path != "." && fs::exists(user->Folder() + "/" + path)) {
                    text += user->Folder() + ": " + path + "\n";
                    user->Changes().Remove(path);
                }
            }
        }
        return text;
    }

    /// All sides are equal, nobody tells the agents to look, and one person changes something: the service has it soon.
    /// Returns what it does not have.
    std::string _ChangeAlone() {
        const auto& user = _users[_chance.Below(_users.size())];
        for (size_t i = 1 + _chance.Below(4); i > 0; --i) {
            user->Changes().Change();
        }
        return _Await([&] { return Differences(user->Image(), ReadFolder(_there / "shared")); }, false);
    }

    std::vector<const RandomChanges*> _AllChanges() const {
        std::vector<const RandomChanges*> all{&_changesThere};
        for (const auto& user : _users) {
            all.push_back(&user->Changes());
        }
        return all;
    }

    /// What is nowhere, however often one looks: what a pass just moves is missed by who looks once.
    std::string _Lost() {
        std::vector<std::string> folders{_there.Path()};
        for (const auto& user : _users) {
            folders.push_back(user->Folder());
        }
        std::string lost;
        for (int look = 0; look < 20; ++look) {
            try {
                lost = _losses.Lost(_AllChanges(), folders);
            } catch (const fs::filesystem_error& e) {
                lost = e.what();
            }
            if (lost.empty()) {
                return "";
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
        }
        const std::set<std::string> atOnce =
            _kind == ServerKind::Apache ? UploadsAtOnce(_log + _server->Log()) : std::set<std::string>();
        lost = _losses.Lost(_AllChanges(), folders, [&atOnce](const std::string& path) {
            return atOnce.count("/shared/" + InLogOfApache(path)) != 0;
        });
        return lost.empty() ? "" : "Lost:\n" + lost + _Story();
    }

    std::string _Story() const {
        std::string story;
        for (const auto& user : _users) {
            story += user->Story();
        }
        return story + _changesThere.Journal() + _log + (_server ? _server->Log() : "");
    }

    const ServerKind _kind;
    Tally& _tally;
    Chance _chance;
    LossCheck _losses;
    const service::test::TemporaryFolder _there;
    const int _port = FreePort();
    std::unique_ptr<IDavServer> _server;
    /// Apache looks whether a condition holds when a request begins and acts on it when it has come, so that whoever
    /// stops in between overwrites what another client sends meanwhile.
    const bool _isToBeStopped = _kind == ServerKind::StandIn;
    bool _isServerStopped = false;
    bool _asksByItself = false;
    /// Of the servers that have ended.
    std::string _log;
    std::vector<std::unique_ptr<SyncingUser>> _users;
    RandomChanges::Random _randomThere{_chance.Seed()};
    WebDavWriter* _writerThere = new WebDavWriter("shared", _there / "shared");
    RandomChanges _changesThere{_there / "shared", "there", _randomThere, std::unique_ptr<IFolderWriter>(_writerThere)};
};

class RandomAgentsTest : public testing::TestWithParam<ServerKind> {};

TEST_P(RandomAgentsTest, LoseNothingAndLeaveAllSidesEqual) {
    std::ostringstream name;
    name << GetParam();
    MakeRounds<AgentsLife>({2, 20, 2}, name.str(), [](unsigned seed, Tally& tally) {
        return std::make_unique<AgentsLife>(GetParam(), seed, tally);
    });
}

INSTANTIATE_TEST_SUITE_P(On, RandomAgentsTest, testing::Values(ServerKind::StandIn, ServerKind::Apache),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace syncproof
