#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/service/ServiceProcess.h"
#include "tests/service/TemporaryFolder.h"
#include "tests/sync-proof/FolderImage.h"
#include "tests/sync-proof/Pass.h"

namespace syncproof {

/// A folder here and one that a real service serves, and passes of the real client between them. The service has the
/// same address after each start.
class TwoSides {
public:
    using Words = std::vector<std::string>;

    /// Ends the one that runs, if any. Throws std::runtime_error when the new one does not serve.
    void StartService(const Words& options = {}, const Pass::Environment& environment = {});
    void StopService() { _service.reset(); }
    service::test::ServiceProcess& Service() { return *_service; }
    /// How many requests the service that runs was sent.
    int Requests() const;
    /// Whether one of them met a fault.
    bool MetFault() const;

    /// `options` go behind the folder and the URL.
    std::unique_ptr<Pass> Pull(const Words& options = {}, const Pass::Environment& environment = {}) const;
    std::unique_ptr<Pass> Push(const Words& options = {}, const Pass::Environment& environment = {}) const;
    std::unique_ptr<Pass> Sync(const Words& options = {}, const Pass::Environment& environment = {}) const;

    FolderImage ImageHere() const { return ReadFolder(here.Path()); }
    FolderImage ImageThere() const { return ReadFolder(there.Path()); }

    /// What a client leaves behind besides the files, its records and its trash, and a service besides the files and
    /// its metadata; empty when that is nothing.
    std::string Leftovers() const;

    /// For a pass or a service that is troubled by its disk at a point; see DiskTrouble.cpp.
    static Pass::Environment KilledAt(int point);
    static Pass::Environment FailingAt(int point, int error, bool lasts);
    /// Somebody moves the file `from` to `to` at the point; and the pass is killed at `killPoint`, unless that is 0.
    static Pass::Environment MovingAt(int point, const std::string& from, const std::string& to, int killPoint);
    /// Writes into `file` how many points there are.
    static Pass::Environment CountingInto(const std::string& file);

    const service::test::TemporaryFolder here;
    const service::test::TemporaryFolder there;

private:
    std::unique_ptr<Pass> _Run(Words arguments, const Words& options, Pass::Environment environment) const;

    std::unique_ptr<service::test::ServiceProcess> _service;
};

}  // namespace syncproof
