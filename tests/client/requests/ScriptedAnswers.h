#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <memory>

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

/// The fixtures with which a server answers each request, its depth and its target, the first time, the second time and
/// so on.
using Script = QMap<QByteArray, QList<const char*>>;

/// As many requests as the script has, in any order, one connection each: the server serves one at a time.
inline QList<ScriptedServer::Step> StepsOf(const Script& script) {
    const auto left = std::make_shared<Script>(script);
    const ScriptedServer::Step step{[left](const ScriptedServer::Request& request) {
                                        const QByteArray key = request.headers.value("depth") + ' ' + request.target;
                                        QList<const char*>& fixtures = (*left)[key];
                                        if (fixtures.isEmpty()) {
                                            return "HTTP/1.1 500 Not in the script: " + key +
                                                   "\r\nContent-Length: 0\r\n\r\n";
                                        }
                                        return FixtureAnswer(QLatin1String(fixtures.takeFirst())).Bytes();
                                    },
                                    ScriptedServer::Ending::Close};
    QList<ScriptedServer::Step> steps;
    for (const QList<const char*>& fixtures : script) {
        for (int i = 0; i < fixtures.size(); ++i) {
            steps.append(step);
        }
    }
    return steps;
}

/// `script` with other answers to some requests.
inline Script With(Script script, const Script& others) {
    for (auto other = others.begin(); other != others.end(); ++other) {
        script[other.key()] = other.value();
    }
    return script;
}

}  // namespace tests
