#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/service/CapturedText.h"
#include "tests/service/ChildProcess.h"
#include "tests/service/TemporaryFolder.h"
#include "tests/sync-proof/FolderImage.h"
#include "tests/sync-proof/Pass.h"
#include "tests/sync-proof/RandomChanges.h"

namespace syncproof {

/// A person with a home of their own, in which an agent keeps a folder in step with `url`, and who changes it at
/// random.
class SyncingUser {
public:
    SyncingUser(const std::string& name, const std::string& url, unsigned seed);

    const std::string& Folder() const { return _folder; }
    RandomChanges& Changes() { return _changes; }
    const RandomChanges& Changes() const { return _changes; }

    /// Writes the file that names the folder. An agent that runs reads it when it is told to look.
    void Allow(bool manyDeletions) const;

    /// Until the agent answers. The clock of its process is so many seconds ahead.
    void StartAgent(int clockShift);
    void KillAgent();
    bool HasAgent() const { return _agent != nullptr; }
    /// Has it read its file, and begin a pass.
    void TellToLook();
    void Stop();
    void Continue();
    bool IsStopped() const { return _isStopped; }

    /// As when a disk is not mounted: an empty folder is where the folder was.
    void TakeFolderAway();
    void BringFolderBack();
    bool IsFolderAway() const { return _isAway; }

    /// What the agent says of the folder; null when it says nothing.
    nlohmann::json Status() const;
    /// The open conflicts: each copy of the service's version, and the file that it is beside.
    std::map<std::string, std::string> Conflicts() const;
    /// What is in the folder.
    FolderImage Image() const { return ReadFolder(_folder); }

    /// What the agent logged, and what the person did.
    std::string Story() const;

private:
    Pass::Environment _Environment() const;

    const std::string _name;
    const std::string _url;
    const service::test::TemporaryFolder _home;
    const std::string _folder = _home / "synced";
    std::mt19937 _random;
    RandomChanges _changes;
    service::test::CapturedText _errors;
    std::unique_ptr<service::test::ChildProcess> _agent;
    bool _isStopped = false;
    bool _isAway = false;
    int _timesAway = 0;
};

}  // namespace syncproof
