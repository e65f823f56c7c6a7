#include "client/cli/input/ArgumentOrder.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace ovsync {
namespace input {

namespace {

std::vector<const CLI::App*> CommandsOf(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App*) { return true; });
}

/// Whether the option `name`, with its dashes, of any command takes a value.
bool TakesValue(const CLI::App& app, const std::string& name) {
    const std::vector<const CLI::App*> commands = CommandsOf(app);
    const CLI::Option* const option = app.get_option_no_throw(name);
    return (option != nullptr && option->get_items_expected_max() > 0) ||
           std::any_of(commands.begin(), commands.end(),
                       [&name](const CLI::App* command) { return TakesValue(*command, name); });
}

/// Whether the value of `option` is the argument after it.
bool IsFollowedByValue(const CLI::App& app, const std::string& option) {
    if (option.compare(0, 2, "--") == 0) {
        return option.find('=') == std::string::npos && TakesValue(app, option);
    }
    // Of several letters the first that takes a value has what follows it.
    for (size_t i = 1; i < option.size(); ++i) {
        if (TakesValue(app, {'-', option[i]})) {
            return i + 1 == option.size();
        }
    }
    return false;
}

/// CLI takes the next argument for the value of an option that ends in '='.
std::vector<std::string> WithEmptyValues(const CLI::App& app, const std::vector<std::string>& given) {
    std::vector<std::string> words;
    for (auto word = given.begin(); word != given.end(); ++word) {
        const std::string name = word->substr(0, word->find('='));
        const bool hasEmptyValue = word->compare(0, 2, "--") == 0 && name.size() + 1 == word->size();
        if (*word == "--") {
            words.insert(words.end(), word, given.end());
            break;
        }
        words.push_back(hasEmptyValue ? name : *word);
        if (hasEmptyValue) {
            words.emplace_back();
        } else if (word->compare(0, 1, "-") == 0 && IsFollowedByValue(app, *word) && word + 1 != given.end()) {
            words.push_back(*++word);
        }
    }
    return words;
}

}  // namespace

std::vector<std::string> CommandFirst(const CLI::App& app, int argc, const char* const* argv) {
    std::vector<std::string> words;
    std::vector<std::string> others;
    const CLI::App* command = &app;
    int at = 1;
    for (; at < argc && !CommandsOf(*command).empty(); ++at) {
        const std::string argument = argv[at];
        if (argument.size() > 1 && argument[0] == '-') {
            others.push_back(argument);
            if (IsFollowedByValue(app, argument) && at + 1 < argc) {
                others.emplace_back(argv[++at]);
            }
            continue;
        }
        const std::vector<const CLI::App*> commands = CommandsOf(*command);
        const auto named = std::find_if(commands.begin(), commands.end(),
                                        [&argument](const CLI::App* one) { return one->get_name() == argument; });
        if (named == commands.end()) {
            break;
        }
        words.push_back(argument);
        command = *named;
    }
    words.insert(words.end(), others.begin(), others.end());
    words.insert(words.end(), argv + at, argv + argc);
    return WithEmptyValues(app, words);
}

std::vector<std::string> CommandsWith(const CLI::App& app, const std::string& option) {
    std::vector<std::string> names;
    for (const CLI::App* command : CommandsOf(app)) {
        if (command->get_option_no_throw(option) != nullptr) {
            names.push_back(command->get_name());
        }
        for (const std::string& name : CommandsWith(*command, option)) {
            names.push_back(command->get_name() + ' ' + name);
        }
    }
    return names;
}

}  // namespace input
}  // namespace ovsync
