#pragma once

#include "tests/client/Fixtures.h"
#include "tests/fakes/ScriptedServer.h"

namespace tests {

/// The step that sends the fixture `name`.
inline tests::ScriptedServer::Step AnswerOf(
    const char* name, tests::ScriptedServer::Ending ending = tests::ScriptedServer::Ending::KeepOpen) {
    return tests::ScriptedServer::Answer(FixtureAnswer(QLatin1String(name)).Bytes(), ending);
}

/// The answer to what a server is asked before its first listing.
inline tests::ScriptedServer::Step OptionsStep() {
    return AnswerOf("statuses/options-service-200");
}

}  // namespace tests
