#pragma once

#include "tests/client/http/Fixtures.h"
#include "tests/fakes/ScriptedServer.h"

namespace ovsync {
namespace http {

/// The step that sends the fixture `name`.
inline tests::ScriptedServer::Step AnswerOf(
    const char* name, tests::ScriptedServer::Ending ending = tests::ScriptedServer::Ending::KeepOpen) {
    return tests::ScriptedServer::Answer(FixtureAnswer(QLatin1String(name)).Bytes(), ending);
}

/// The answer to what a server is asked before its first listing.
inline tests::ScriptedServer::Step OptionsStep() {
    return AnswerOf("statuses/options-service-200");
}

}  // namespace http
}  // namespace ovsync
