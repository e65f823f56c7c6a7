#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/service/CapturedText.h"
#include "tests/service/ChildProcess.h"

namespace service::test {

/// The real program, serving a folder on a port of its own. Stopped with this object.
class ServiceProcess {
public:
    /// What a run that did not serve left behind.
    struct Result {
        int exitCode = 0;
        std::string output;
        std::string errors;
    };

    /// Starts it and waits until it serves, at any port unless one is among the arguments. Throws std::runtime_error
    /// when it ends instead.
    explicit ServiceProcess(const std::vector<std::string>& arguments,
                            const std::map<std::string, std::string>& environment = {});
    ~ServiceProcess();
    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess& operator=(const ServiceProcess&) = delete;

    int Port() const { return _port; }
    /// The line it wrote when it was ready.
    const std::string& FirstLine() const { return _firstLine; }
    /// What it wrote to standard error.
    std::string Log() const { return _log.Text(); }

    void Signal(int signal) { _process->Signal(signal); }
    /// Sends the signal and returns the exit code, or the negative number of the signal that ended the program.
    int End(int signal);

    /// Runs the program to its end.
    static Result Run(const std::vector<std::string>& arguments,
                      const std::map<std::string, std::string>& environment = {});

private:
    CapturedText _log;
    std::unique_ptr<ChildProcess> _process;
    int _output = -1;
    int _port = 0;
    std::string _firstLine;
};

}  // namespace service::test
