#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/service/CapturedText.h"
#include "tests/service/ChildProcess.h"

namespace syncproof {

/// One `ovsync pull` or `ovsync push`, running or over.
class Pass {
public:
    using Environment = std::map<std::string, std::string>;

    /// The service is reached as a proxy, so that a folder is synced with one URL whatever the port is.
    static constexpr const char* Url = "http://service.invalid/";
    /// Has the service at that port of this machine.
    static Environment ReachingPort(int port);

    /// Starts `ovsync` with `arguments` and --json.
    Pass(const std::vector<std::string>& arguments, const Environment& environment);

    void Signal(int signal) { _process.Signal(signal); }

    /// Waits for the end and returns the exit code, or the negative number of the signal that ended it.
    int ExitCode() { return _process.Wait(); }

    /// What it said of each path, by path: the names of the events. Whole only when it is over.
    std::map<std::string, std::set<std::string>> Events() const;
    /// Whether it said anything of `path` or of something that it lies in.
    bool SpokeOf(const std::string& path) const;
    /// What it wrote to standard error.
    std::string Errors() const { return _errors.Text(); }
    /// All that it wrote, for a message.
    std::string Text() const { return _output.Text() + _errors.Text(); }

private:
    service::test::CapturedText _output;
    service::test::CapturedText _errors;
    service::test::ChildProcess _process;
};

}  // namespace syncproof
