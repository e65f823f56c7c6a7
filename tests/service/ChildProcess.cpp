#include "tests/service/ChildProcess.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

namespace service::test {
namespace {

// With the null at the end that C expects.
std::vector<char*> Pointers(std::vector<std::string>& words) {
    std::vector<char*> pointers(words.size() + 1, nullptr);
    std::transform(words.begin(), words.end(), pointers.begin(), [](std::string& word) { return word.data(); });
    return pointers;
}

}  // namespace

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                           const std::map<std::string, std::string>& environment, int output, int errors) {
    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv = Pointers(words);
    // Of two assignments to one variable the first counts.
    std::vector<std::string> assignments;
    for (const auto& [name, value] : environment) {
        assignments.push_back(name);
        assignments.back().append("=").append(value);
    }
    for (char** variable = environ; *variable != nullptr; ++variable) {
        assignments.emplace_back(*variable);
    }
    std::vector<char*> envp = Pointers(assignments);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", 0, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    const int error = posix_spawn(&_process, program.c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        _process = -1;
        throw std::runtime_error("Cannot start " + program);
    }
}

ChildProcess::~ChildProcess() {
    Signal(SIGKILL);
    Wait();
}

void ChildProcess::Signal(int signal) {
    if (_process > 0) {
        kill(_process, signal);
    }
}

void ChildProcess::SignalGroup(int signal) {
    if (_process > 0) {
        kill(-_process, signal);
    }
}

int ChildProcess::Wait() {
    if (_process > 0) {
        int status = 0;
        waitpid(_process, &status, 0);
        _process = -1;
        _result = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }
    return _result;
}

}  // namespace service::test
