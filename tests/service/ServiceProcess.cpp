#include "tests/service/ServiceProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace service::test {
namespace {

// With the null at the end that C expects.
std::vector<char*> Pointers(std::vector<std::string>& words) {
    std::vector<char*> pointers(words.size() + 1, nullptr);
    std::transform(words.begin(), words.end(), pointers.begin(), [](std::string& word) { return word.data(); });
    return pointers;
}

pid_t Start(const std::vector<std::string>& arguments, const std::map<std::string, std::string>& environment,
            int output, int errors) {
    std::vector<std::string> words{OVSYNC_SERVICE_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv = Pointers(words);
    std::vector<std::string> assignments;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        assignments.emplace_back(*variable);
    }
    for (const auto& [name, value] : environment) {
        assignments.push_back(name);
        assignments.back().append("=").append(value);
    }
    std::vector<char*> envp = Pointers(assignments);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    if (errors >= 0) {
        posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    }
    pid_t process = -1;
    const int error = posix_spawn(&process, OVSYNC_SERVICE_PROGRAM, &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::runtime_error("Cannot start " OVSYNC_SERVICE_PROGRAM);
    }
    return process;
}

std::array<int, 2> Pipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("No pipe");
    }
    return ends;
}

int Wait(pid_t process) {
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string ReadUntil(int descriptor, char last) {
    std::string text;
    char c = 0;
    while (read(descriptor, &c, 1) == 1 && c != last) {
        text += c;
    }
    return text;
}

}  // namespace

ServiceProcess::ServiceProcess(const std::vector<std::string>& arguments,
                               const std::map<std::string, std::string>& environment) {
    const auto output = Pipe();
    std::vector<std::string> all = arguments;
    all.insert(all.end(), {"--port", "0"});
    _process = Start(all, environment, output[1], -1);
    close(output[1]);
    _output = output[0];
    _firstLine = ReadUntil(_output, '\n');
    const std::size_t colon = _firstLine.rfind(':');
    if (_firstLine.rfind("Serving ", 0) != 0 || colon == std::string::npos) {
        close(_output);
        throw std::runtime_error("The service ended with " + std::to_string(Wait(_process)));
    }
    _port = std::stoi(_firstLine.substr(colon + 1));
}

ServiceProcess::~ServiceProcess() {
    if (_process > 0) {
        End(SIGTERM);
    }
    close(_output);
}

int ServiceProcess::End(int signal) {
    kill(_process, signal);
    const int result = Wait(_process);
    _process = -1;
    return result;
}

ServiceProcess::Result ServiceProcess::Run(const std::vector<std::string>& arguments,
                                           const std::map<std::string, std::string>& environment) {
    const auto output = Pipe();
    const auto errors = Pipe();
    const pid_t process = Start(arguments, environment, output[1], errors[1]);
    close(output[1]);
    close(errors[1]);
    Result result;
    result.output = ReadUntil(output[0], '\0');
    result.errors = ReadUntil(errors[0], '\0');
    close(output[0]);
    close(errors[0]);
    result.exitCode = Wait(process);
    return result;
}

}  // namespace service::test
