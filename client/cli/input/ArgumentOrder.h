#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace ovsync {
namespace input {

/// The arguments of the command line, without the program's name, with the words of the command in front of the options
/// that were given before it, where `app` expects them.
std::vector<std::string> CommandFirst(const CLI::App& app, int argc, const char* const* argv);

/// The commands of `app` that have `option`, which is written with its dashes.
std::vector<std::string> CommandsWith(const CLI::App& app, const std::string& option);

}  // namespace input
}  // namespace ovsync
