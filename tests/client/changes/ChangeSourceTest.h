#pragma once

#include <gmock/gmock.h>

#include "client/library/ServiceConnection.h"
#include "tests/fakes/CleanEnvironment.h"
#include "tests/fakes/ScriptedServer.h"

namespace ovsync {
namespace changes {

/// Asks for what changed in one folder, each time over a connection of its own to a server that answers so.
class ChangeSourceTest : public testing::Test {
protected:
    using Steps = QList<tests::ScriptedServer::Step>;

    template <typename Question>
    auto AnswerTo(const Question& question, const Steps& steps) {
        tests::ScriptedServer server(steps);
        library::ServiceConnection connection(server.Url(QString()), QAuthenticator(), settings);
        auto answer = question(connection, *connection.NewChangeSource(folder));
        server.Stop();
        EXPECT_TRUE(server.SawItsScript());
        requests = server.Requests();
        return answer;
    }

    ServiceChanges ChangesSince(const QString& state, const Steps& steps) {
        return AnswerTo(
            [&state](library::ServiceConnection&, IChangeSource& source) {
                source.Ask(state);
                return source.Take();
            },
            steps);
    }

    const QString folder = QStringLiteral("Projects/A");
    const tests::CleanEnvironment environment;
    wire::ConnectionSettings settings;
    QList<tests::ScriptedServer::Request> requests;
};

}  // namespace changes
}  // namespace ovsync
