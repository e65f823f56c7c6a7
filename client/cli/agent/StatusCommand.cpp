#include "client/cli/agent/StatusCommand.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <iostream>
#include <optional>

#include "client/agent/AgentClient.h"
#include "client/cli/input/Application.h"
#include "client/cli/output/Complaint.h"
#include "client/cli/output/StatusText.h"

namespace ovsync {
namespace commands {

using agent::AgentClient;
using input::Arguments;
using output::ExitCode;
using output::IsAllWell;
using output::Output;
using output::StatusText;

namespace {

const char* const StatusFooter =
    "Exit status: 0 all is well, 1 no agent runs or something is left for you to do, 2 wrong usage.";

const int PatienceWithAgent = 5000;

const char* const ClearScreen = "\x1B[H\x1B[2J";

ExitCode ShowStatus(const Arguments& given, Output& output) {
    const input::Application application;
    const bool clears = given.isWatching && !given.isJson && isatty(STDOUT_FILENO) == 1;
    AgentClient agent;
    std::optional<QByteArray> line;
    if (agent.Send(given.isWatching ? "watch" : "status")) {
        line = agent.ReadLine(PatienceWithAgent);
    }
    if (!line) {
        const bool isRunning = AgentClient::IsRunning();
        if (given.isJson) {
            output.Write(isRunning ? "{\"running\":true}\n" : "{\"running\":false}\n");
        } else {
            output.Write(isRunning ? "OvSync.exe runs, but does not answer\n" : "OvSync.exe does not run\n");
        }
        return ExitCode::Refused;
    }
    for (;;) {
        if (clears) {
            std::cout << ClearScreen << std::flush;
        }
        output.Write(given.isJson ? *line : StatusText(*line, output));
        output.Flush();
        const std::optional<QByteArray> next = given.isWatching ? agent.ReadLine(-1) : std::nullopt;
        if (!next) {
            return IsAllWell(*line) ? ExitCode::Done : ExitCode::Refused;
        }
        line = next;
    }
}

}  // namespace

void AddStatusCommand(CommandRegistry& registry) {
    CLI::App* const command =
        registry.AddLocal("status", "Shows what the agent does, and what it leaves to you.",
                          [](const Arguments& given, Output& output) { return ShowStatus(given, output); });
    command->add_flag("-w,--watch", registry.Given().isWatching, "Show it again whenever it changes");
    command->footer(StatusFooter);
}

}  // namespace commands
}  // namespace ovsync
