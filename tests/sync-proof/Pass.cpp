#include "tests/sync-proof/Pass.h"

#include <nlohmann/json.hpp>
#include <sstream>

namespace syncproof {
namespace {

std::vector<std::string> WithJson(std::vector<std::string> arguments) {
    arguments.emplace_back("--json");
    return arguments;
}

}  // namespace

Pass::Environment Pass::ReachingPort(int port) {
    return {{"http_proxy", "http://127.0.0.1:" + std::to_string(port)}, {"no_proxy", ""}};
}

Pass::Pass(const std::vector<std::string>& arguments, const Environment& environment)
    : _process(OVSYNC_PROGRAM, WithJson(arguments), environment, _output.Descriptor(), _errors.Descriptor()) {}

std::map<std::string, std::set<std::string>> Pass::Events() const {
    std::map<std::string, std::set<std::string>> events;
    std::istringstream lines(_output.Text());
    for (std::string line; std::getline(lines, line);) {
        const auto object = nlohmann::json::parse(line, nullptr, false);
        if (object.is_object() && object.contains("path")) {
            events[object["path"].get<std::string>()].insert(object["event"].get<std::string>());
        }
    }
    return events;
}

bool Pass::SpokeOf(const std::string& path) const {
    const auto events = Events();
    std::string above = path.back() == '/' ? path.substr(0, path.size() - 1) : path;
    while (events.count(above) == 0) {
        const std::size_t slash = above.rfind('/');
        if (slash == std::string::npos) {
            return false;
        }
        above.resize(slash);
    }
    return true;
}

}  // namespace syncproof
