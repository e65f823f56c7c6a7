// The sync application that the library looks for and starts: OvSync.exe [--foreground]

#include <QCoreApplication>
#include <QTextCodec>
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "client/agent/Agent.h"
#include "client/agent/AgentLock.h"
#include "client/agent/AgentLog.h"
#include "client/user/Places.h"
#include "host/core/SyncException.h"

namespace {

/// Whoever reads the output of the process that started this one would wait for this one otherwise.
bool LetGoOfStreams() {
    for (std::FILE* stream : {stdin, stdout, stderr}) {
        if (std::freopen("/dev/null", "r+", stream) == nullptr) {
            return false;
        }
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const bool isInForeground = argc > 1 && std::strcmp(argv[1], "--foreground") == 0;
    // Names of files are UTF-8, whatever the locale is.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    const QCoreApplication application(argc, argv);
    try {
        ovsync::user::MakePrivateFolder(ovsync::user::RuntimeFolder());
        ovsync::user::MakePrivateFolder(ovsync::user::StateFolder());
        ovsync::agent::AgentLock lock(ovsync::user::RuntimeFolder());
        if (!lock.Take()) {
            std::fprintf(stderr, "OvSync.exe: another one runs for this user already.\n");
            return 1;
        }
        ovsync::agent::Agent agent;
        if (!isInForeground && !LetGoOfStreams()) {
            return 1;
        }
        ovsync::agent::BeginLog(ovsync::user::StateFolder(), isInForeground);
        agent.Run();
        return 0;
    } catch (const sync::core::SyncException& e) {
        std::fprintf(stderr, "OvSync.exe: %s\n", e.what());
        return 1;
    }
}
