#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

namespace service::test {

/// A program that was started. Killed with this object.
class ChildProcess {
public:
    /// `environment` is added to that of the tests. What the program writes goes to the descriptors `output` and
    /// `errors`. Throws std::runtime_error when there is no such program.
    ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                 const std::map<std::string, std::string>& environment, int output, int errors);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t Id() const { return _process; }
    void Signal(int signal);
    /// To a program that leads a process group, and all that it started.
    void SignalGroup(int signal);

    /// Waits for its end. Returns the exit code, or the negative number of the signal that ended it.
    int Wait();

private:
    pid_t _process = -1;
    int _result = 0;
};

}  // namespace service::test
