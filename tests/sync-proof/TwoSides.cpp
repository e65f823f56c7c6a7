#include "tests/sync-proof/TwoSides.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

namespace syncproof {
namespace {

Pass::Environment WithDiskTrouble(Pass::Environment environment) {
    environment["LD_PRELOAD"] = DISK_TROUBLE_LIBRARY;
    environment["ASAN_OPTIONS"] = "verify_asan_link_order=0";
    return environment;
}

}  // namespace

void TwoSides::StartService(const Words& options, const Pass::Environment& environment) {
    StopService();
    Words arguments{there.Path(), "--verbose"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    _service = std::make_unique<service::test::ServiceProcess>(arguments, environment);
}

int TwoSides::Requests() const {
    const std::string log = _service->Log();
    return static_cast<int>(std::count(log.begin(), log.end(), '\n'));
}

bool TwoSides::MetFault() const {
    return _service->Log().find("(with a fault)") != std::string::npos;
}

std::unique_ptr<Pass> TwoSides::Pull(const Words& options, const Pass::Environment& environment) const {
    return _Run({"pull", Pass::Url, here.Path()}, options, environment);
}

std::unique_ptr<Pass> TwoSides::Push(const Words& options, const Pass::Environment& environment) const {
    return _Run({"push", here.Path(), Pass::Url}, options, environment);
}

std::unique_ptr<Pass> TwoSides::Sync(const Words& options, const Pass::Environment& environment) const {
    return _Run({"sync", here.Path(), Pass::Url, "--max-delete", "100%"}, options, environment);
}

std::unique_ptr<Pass> TwoSides::_Run(Words arguments, const Words& options, Pass::Environment environment) const {
    arguments.insert(arguments.end(), options.begin(), options.end());
    if (std::count(options.begin(), options.end(), "--delete") != 0) {
        // There are few files, and a test may delete most of them.
        arguments.insert(arguments.end(), {"--max-delete", "100%"});
    }
    environment.merge(Pass::ReachingPort(_service ? _service->Port() : 1));
    return std::make_unique<Pass>(arguments, environment);
}

std::string TwoSides::Leftovers() const {
    namespace fs = std::filesystem;
    std::string found;
    for (const auto& entry : fs::directory_iterator(here / ".ovsync")) {
        const std::string name = entry.path().filename().string();
        if (name != "records.db" && name != "records.db-wal" && name != "trash") {
            found += name + "\n";
        }
    }
    // The service may still be busy noticing that a client is gone.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    const std::string work = there / ".ovsync-service/work";
    while (!fs::is_empty(work) && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return fs::is_empty(work) ? found : found + "an upload\n";
}

Pass::Environment TwoSides::KilledAt(int point) {
    return WithDiskTrouble({{"CRASH_POINT", std::to_string(point)}});
}

Pass::Environment TwoSides::MovingAt(int point, const std::string& from, const std::string& to, int killPoint) {
    return WithDiskTrouble({{"MOVE_POINT", std::to_string(point)},
                            {"MOVE_FROM", from},
                            {"MOVE_TO", to},
                            {"CRASH_POINT", std::to_string(killPoint)}});
}

Pass::Environment TwoSides::CountingInto(const std::string& file) {
    return WithDiskTrouble({{"CALL_COUNT", file}});
}

Pass::Environment TwoSides::FailingAt(int point, int error, bool lasts) {
    return WithDiskTrouble({{"FAILURE_POINT", std::to_string(point)},
                            {"FAILURE_ERROR", std::to_string(error)},
                            {"FAILURE_LASTS", lasts ? "1" : "0"}});
}

}  // namespace syncproof
