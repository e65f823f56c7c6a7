#include "tests/service/ServiceProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <stdexcept>

namespace service::test {
namespace {

std::string ReadLine(int descriptor) {
    std::string text;
    char c = 0;
    while (read(descriptor, &c, 1) == 1 && c != '\n') {
        text += c;
    }
    return text;
}

}  // namespace

ServiceProcess::ServiceProcess(const std::vector<std::string>& arguments,
                               const std::map<std::string, std::string>& environment) {
    std::array<int, 2> output{};
    if (pipe2(output.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("No pipe");
    }
    std::vector<std::string> all = arguments;
    if (std::find(all.begin(), all.end(), "--port") == all.end()) {
        all.insert(all.end(), {"--port", "0"});
    }
    _process = std::make_unique<ChildProcess>(OVSYNC_SERVICE_PROGRAM, all, environment, output[1], _log.Descriptor());
    close(output[1]);
    _output = output[0];
    _firstLine = ReadLine(_output);
    const std::size_t colon = _firstLine.rfind(':');
    if (_firstLine.rfind("Serving ", 0) != 0 || colon == std::string::npos) {
        close(_output);
        throw std::runtime_error("The service ended with " + std::to_string(_process->Wait()) + ": " + Log());
    }
    _port = std::stoi(_firstLine.substr(colon + 1));
}

ServiceProcess::~ServiceProcess() {
    // What a sanitizer has to say must not get lost.
    if (const int result = End(SIGTERM); result != 0 && result != -SIGKILL) {
        std::cerr << Log();
    }
    close(_output);
}

int ServiceProcess::End(int signal) {
    _process->Signal(signal);
    return _process->Wait();
}

ServiceProcess::Result ServiceProcess::Run(const std::vector<std::string>& arguments,
                                           const std::map<std::string, std::string>& environment) {
    const CapturedText output;
    const CapturedText errors;
    ChildProcess process(OVSYNC_SERVICE_PROGRAM, arguments, environment, output.Descriptor(), errors.Descriptor());
    Result result;
    result.exitCode = process.Wait();
    result.output = output.Text();
    result.errors = errors.Text();
    return result;
}

}  // namespace service::test
