#include "tests/sync-proof/SyncingUser.h"

#include <signal.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "tests/servers/DavServer.h"
#include "tests/sync-proof/DiskWriter.h"

namespace syncproof {

namespace fs = std::filesystem;
using nlohmann::json;

SyncingUser::SyncingUser(const std::string& name, const std::string& url, unsigned seed)
    : _name(name),
      _url(url),
      _random(seed),
      _changes(_folder, name, _random, std::make_unique<DiskWriter>(_folder, DiskWriter::Writing::Aside)) {
    for (const char* folder : {"config/ovsync", "state", "run", "synced"}) {
        fs::create_directories(_home / folder);
    }
    Allow(false);
}

Pass::Environment SyncingUser::_Environment() const {
    return {{"HOME", _home.Path()},
            {"XDG_CONFIG_HOME", _home / "config"},
            {"XDG_STATE_HOME", _home / "state"},
            {"XDG_RUNTIME_DIR", _home / "run"},
            {"DBUS_SESSION_BUS_ADDRESS", ""},
            {"NETRC", ""},
            {"no_proxy", "127.0.0.1"}};
}

void SyncingUser::Allow(bool manyDeletions) const {
    // An agent that reads it in this moment sees the one or the other.
    _home.Write("config/ovsync/new", "[[folder]]\npath = \"" + _folder + "\"\nurl = \"" + _url + "\"\n" +
                                         (manyDeletions ? "max-delete = \"100%\"\n" : ""));
    fs::rename(_home / "config/ovsync/new", _home / "config/ovsync/folders.toml");
}

void SyncingUser::StartAgent(int clockShift) {
    _changes.Note("starts the agent", std::to_string(clockShift));
    auto environment = _Environment();
    environment.merge(servers::WithClockShift(clockShift));
    _agent = std::make_unique<service::test::ChildProcess>(OVSYNC_PROGRAM, std::vector<std::string>{"agent", "run"},
                                                           environment, _errors.Descriptor(), _errors.Descriptor());
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (Status().is_null()) {
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("The agent does not answer: " + Story());
        }
    }
}

void SyncingUser::TellToLook() {
    _changes.Note("tells the agent to look", "");
    _agent->Signal(SIGHUP);
}

void SyncingUser::KillAgent() {
    _changes.Note("kills the agent", "");
    _agent.reset();
    _isStopped = false;
}

void SyncingUser::Stop() {
    _changes.Note("stops the agent", "");
    _agent->Signal(SIGSTOP);
    _isStopped = true;
}

void SyncingUser::Continue() {
    _changes.Note("continues the agent", "");
    _agent->Signal(SIGCONT);
    _isStopped = false;
}

void SyncingUser::TakeFolderAway() {
    _changes.Note("takes the folder away", "");
    fs::rename(_folder, _home / "away");
    fs::create_directory(_folder);
    _isAway = true;
}

void SyncingUser::BringFolderBack() {
    _changes.Note("brings the folder back", "");
    // A pass may still be at work in what was in its place.
    fs::rename(_folder, _home / ("instead " + std::to_string(++_timesAway)));
    fs::rename(_home / "away", _folder);
    _isAway = false;
}

json SyncingUser::Status() const {
    Pass pass({"status"}, _Environment());
    pass.ExitCode();
    const json status = json::parse(pass.Text(), nullptr, false);
    // An agent that is stopped says nothing of its folders.
    const json folders = status.is_object() ? status.value("folders", json::array()) : json::array();
    return folders.empty() ? json() : folders[0];
}

std::map<std::string, std::string> SyncingUser::Conflicts() const {
    Pass pass({"conflicts", _folder}, _Environment());
    pass.ExitCode();
    std::map<std::string, std::string> conflicts;
    const json list = json::parse(pass.Text(), nullptr, false);
    for (const json& conflict : list) {
        if (conflict.is_object()) {
            conflicts.emplace(conflict["serviceVersion"], conflict["path"]);
        }
    }
    return conflicts;
}

std::string SyncingUser::Story() const {
    const std::string state =
        _agent ? service::test::ReadFile("/proc/" + std::to_string(_agent->Id()) + "/status").value_or("gone") : "none";
    return _name + ":\n" + _errors.Text() + _changes.Journal() + "agent: " + state + "\n";
}

}  // namespace syncproof
