#pragma once

#include <QString>
#include <iosfwd>
#include <string>
#include <vector>

#include "tests/fakes/ScriptedServer.h"

namespace tests {

/// An answer to a PROPFIND of /Projects/A/ that is none.
struct BadAnswer {
    /// The file under fixtures/bad, without ".http".
    const char* file;
    /// Part of what the error says about it.
    const char* reason;
    /// Whether its body alone gives it away, so that MultistatusReader has to see it.
    bool isForReader = true;
    tests::ScriptedServer::Ending ending = tests::ScriptedServer::Ending::KeepOpen;
    int depth = 1;
    int fillSize = 0;
};

const std::vector<BadAnswer>& BadAnswers();

/// For FixtureAnswer.
QString FixtureNameOf(const BadAnswer& answer);

/// What a test that goes by `answer` is called.
void PrintTo(const BadAnswer& answer, std::ostream* stream);
std::string NameOf(const BadAnswer& answer);

}  // namespace tests
