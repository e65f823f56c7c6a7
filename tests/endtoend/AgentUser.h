#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <nlohmann/json.hpp>

#include "tests/endtoend/Service.h"

namespace tests {

/// A user of this machine, with a home and so with an agent of their own; the agent ends with this object.
class AgentUser {
public:
    AgentUser();
    ~AgentUser();
    AgentUser(const AgentUser&) = delete;
    AgentUser& operator=(const AgentUser&) = delete;

    /// "NAME=value", for programs of this user.
    QStringList Environment() const;
    /// With those of this process.
    QProcessEnvironment Variables() const;
    /// In the home.
    QString Path(const QString& name) const { return _home.filePath(name); }
    void Write(const QString& name, const QByteArray& content) const;
    QByteArray Read(const QString& name) const;
    /// What the agent logged.
    QByteArray Log() const;

    ProgramResult Ovsync(const QStringList& arguments, const QStringList& environment = QStringList()) const;

    /// In the foreground, and waits until it answers.
    void StartAgent();
    /// Sends it a signal.
    void Signal(int signal) const;
    /// Waits for its end and returns its exit code; -1 when a signal ended it.
    int WaitForAgent();
    qint64 AgentProcess() const { return _agent.processId(); }

    /// What the agent says; null when there is none.
    nlohmann::json Status() const;
    /// Of the first folder.
    nlohmann::json Folder() const;
    /// Whether the first folder comes to be as `condition` wants it. Says how it is when it does not.
    bool FolderBecomes(const std::function<bool(const nlohmann::json& folder)>& condition) const;
    /// Whether a pass of the first folder comes to its end that began after this call, or nearly.
    bool IsInStep() const;

private:
    const QTemporaryDir _home;
    QProcess _agent;
};

/// Looks again and again.
bool BecomesTrue(const std::function<bool()>& condition);

}  // namespace tests
