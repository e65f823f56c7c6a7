#include "service/http/Fault.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "service/dav/WebDavService.h"

namespace service::http {
namespace {

constexpr std::int64_t Most = std::numeric_limits<std::int32_t>::max();

enum class Argument { None, Number, Text };

struct Form {
    std::string_view name;
    Fault::Kind kind;
    Argument argument;
    std::int64_t least;
    std::int64_t greatest;
};

// A name that occurs twice is told apart by its argument.
constexpr std::array<Form, 11> Forms{{{"cut", Fault::Kind::Cut, Argument::Number, 0, Most},
                                      {"hang", Fault::Kind::Hang, Argument::None, 0, 0},
                                      {"reset", Fault::Kind::Reset, Argument::None, 0, 0},
                                      {"reset", Fault::Kind::ResetInBody, Argument::Number, 0, Most},
                                      {"redirect", Fault::Kind::Redirect, Argument::Number, 301, 308},
                                      {"error-page", Fault::Kind::ErrorPage, Argument::None, 0, 0},
                                      {"status", Fault::Kind::Status, Argument::Number, 200, 999},
                                      {"content-type", Fault::Kind::ContentType, Argument::Text, 0, 0},
                                      {"error-in-body", Fault::Kind::ErrorInBody, Argument::Number, 0, Most},
                                      {"drip", Fault::Kind::Drip, Argument::None, 0, 0},
                                      {"content-length", Fault::Kind::ContentLength, Argument::Number, -Most, Most}}};

[[noreturn]] void Refuse(const std::string& fault, const std::string& why) {
    throw std::invalid_argument("In the fault '" + fault + "', " + why);
}

std::int64_t ParseNumber(const std::string& fault, const std::string& text, std::int64_t least, std::int64_t greatest) {
    std::int64_t number = 0;
    const char* begin = text.c_str() + (text[0] == '+' ? 1 : 0);
    const char* const textEnd = text.c_str() + text.size();
    const auto [end, error] = std::from_chars(begin, textEnd, number);
    if (error != std::errc() || end != textEnd || number < least || number > greatest) {
        Refuse(fault, "'" + text + "' is no number from " + std::to_string(least) + " to " + std::to_string(greatest));
    }
    return number;
}

void SetKind(Fault& fault, const std::string& text, const std::string& part) {
    const std::size_t equals = part.find('=');
    const std::string name = part.substr(0, equals);
    const bool hasArgument = equals != std::string::npos;
    const auto named = [&](const Form& form) { return form.name == name; };
    const auto fits = [&](const Form& form) { return named(form) && hasArgument == (form.argument != Argument::None); };
    if (std::none_of(Forms.begin(), Forms.end(), named)) {
        Refuse(text, "'" + name + "' is no kind of fault");
    }
    const auto* const form = std::find_if(Forms.begin(), Forms.end(), fits);
    if (form == Forms.end()) {
        Refuse(text, "'" + name + (hasArgument ? "' takes no argument" : "' needs an argument"));
    }
    fault.kind = form->kind;
    const std::string argument = hasArgument ? part.substr(equals + 1) : "";
    if (form->argument == Argument::Number) {
        fault.number = ParseNumber(text, argument, form->least, form->greatest);
    } else {
        fault.type = argument;
    }
    const auto printable = [](char c) { return c >= ' ' && c <= '~'; };
    if (form->argument == Argument::Text &&
        (argument.empty() || !std::all_of(argument.begin(), argument.end(), printable))) {
        Refuse(text, "the media type is empty or not printable ASCII");
    }
    if (fault.kind == Fault::Kind::Redirect && fault.number >= 303 && fault.number <= 306) {
        Refuse(text, "the status is not 301, 302, 307 or 308");
    }
}

}  // namespace

bool Fault::ReplacesOperation() const {
    return kind < Kind::Cut;
}

Fault Fault::Parse(const std::string& text) {
    std::vector<std::string> parts;
    std::istringstream stream(text + ",");
    for (std::string part; std::getline(stream, part, ',');) {
        parts.push_back(part);
    }
    Fault fault;
    SetKind(fault, text, parts.front());
    for (auto part = parts.begin() + 1; part != parts.end(); ++part) {
        const std::size_t equals = part->find('=');
        const std::string name = part->substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : part->substr(equals + 1);
        if (name == "method") {
            fault.method = value;
            if (!dav::WebDavService::Knows(fault.method)) {
                Refuse(text, "'" + value + "' is no method of the service");
            }
        } else if (name == "request") {
            fault.request = ParseNumber(text, value, 1, Most);
        } else {
            Refuse(text, "'" + *part + "' is neither method=METHOD nor request=NUMBER");
        }
    }
    return fault;
}

}  // namespace service::http
