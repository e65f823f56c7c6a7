#include "client/agent/Agent.h"

#include <fcntl.h>
#include <unistd.h>

#include <QAuthenticator>
#include <QCoreApplication>
#include <QFileInfo>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "client/agent/AgentLog.h"
#include "client/agent/FolderPass.h"
#include "client/agent/StatusJson.h"
#include "client/folders/FoldersFile.h"
#include "client/user/Passwords.h"
#include "client/user/Places.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace agent {

using folders::SyncedFolder;
using sync::core::SyncException;

namespace {

const std::chrono::milliseconds EndInterval(10);
const std::chrono::milliseconds EndLimit(4000);

/// What a handler of signals, and other threads, have to say to the main thread: the number of the signal, or this.
int messages[2] = {-1, -1};
const char NewStatus = 0;

void Send(char message) {
    [[maybe_unused]] const ssize_t ignored = write(messages[1], &message, 1);
}

void SendSignal(int signal) {
    const int code = errno;
    Send(static_cast<char>(signal));
    errno = code;
}

}  // namespace

Agent::Agent()
    : _server({[this] { return StatusLine(_Status()); }, [this] { _Load(); }, [] { QCoreApplication::quit(); },
               [this](const QString& directory) { _Look(directory); }}) {
    if (pipe2(messages, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw SyncException(QStringLiteral("There are no descriptors to be had."));
    }
    _notifier = std::make_unique<QSocketNotifier>(messages[0], QSocketNotifier::Read);
    QObject::connect(_notifier.get(), &QSocketNotifier::activated, [this] { _OnMessages(); });
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction action {};
        action.sa_handler = &SendSignal;
        action.sa_flags = SA_RESTART;
        sigaction(signal, &action, nullptr);
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

Agent::~Agent() {
    _EndWorkers();
}

void Agent::Run() {
    _server.Listen(StatusServer::PathIn(user::RuntimeFolder()));
    LogLine(AgentLogger(), log4cplus::INFO_LOG_LEVEL, QStringLiteral("begins, process %1").arg(getpid()));
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [this] { _Load(); }, Qt::QueuedConnection);
    QCoreApplication::exec();
    LogLine(AgentLogger(), log4cplus::INFO_LOG_LEVEL, QStringLiteral("ends"));
    _EndWorkers();
}

void Agent::_OnMessages() {
    char bytes[16];
    const ssize_t count = read(messages[0], bytes, sizeof(bytes));
    for (ssize_t i = 0; i < count; ++i) {
        if (bytes[i] == NewStatus) {
            _isStatusOnItsWay = false;
            _RemoveEnded();
            _server.TellWatchers();
        } else if (bytes[i] == SIGHUP) {
            _Load();
        } else {
            QCoreApplication::quit();
        }
    }
}

void Agent::_Load() {
    // To ask the keyring runs the event loop.
    _isToLoadAgain = true;
    if (_isLoading) {
        return;
    }
    _isLoading = true;
    while (_isToLoadAgain) {
        _isToLoadAgain = false;
        _LoadOnce();
    }
    _isLoading = false;
}

void Agent::_LoadOnce() {
    _read = folders::ReadFoldersFile();
    for (const QString& mistake : qAsConst(_read.mistakes)) {
        LogLine(AgentLogger(), log4cplus::ERROR_LOG_LEVEL,
                QStringLiteral("%1: %2").arg(user::FoldersFilePath(), mistake));
    }
    if (_read.mistakes.isEmpty()) {
        user::Passwords passwords;
        QVector<Wanted> wanted;
        for (const SyncedFolder& folder : qAsConst(_read.folders)) {
            QAuthenticator found;
            try {
                found = passwords.Find(folder.location.baseUrl.host(), folder.user);
            } catch (const SyncException& e) {
                LogLine(AgentLogger(), log4cplus::ERROR_LOG_LEVEL, e.Message());
            }
            wanted.append({folder, found.user(), found.password()});
        }
        _Adjust(wanted);
    }
    _server.TellWatchers();
}

void Agent::_Look(const QString& directory) {
    for (const auto& worker : qAsConst(_workers)) {
        if (QFileInfo(worker->Folder().directory).canonicalFilePath() == directory) {
            worker->TryAgain();
        }
    }
}

void Agent::_Adjust(const QVector<Wanted>& wanted) {
    const auto isSame = [](const Wanted& a, const Wanted& b) {
        return a.folder.IsSyncedAs(b.folder) && a.user == b.user && a.password == b.password;
    };
    for (const Wanted& before : qAsConst(_wanted)) {
        const auto worker = _workers.find(before.folder.directory);
        const bool stays =
            std::any_of(wanted.begin(), wanted.end(), [&](const Wanted& after) { return isSame(before, after); });
        if (worker == _workers.end()) {
            continue;
        }
        if (stays) {
            (*worker)->TryAgain();
        } else {
            (*worker)->Stop();
            _ending.push_back(*worker);
            _workers.erase(worker);
        }
    }
    _wanted = wanted;
    _StartMissing();
}

void Agent::_StartMissing() {
    for (const Wanted& wanted : qAsConst(_wanted)) {
        const QString& directory = wanted.folder.directory;
        const bool isEnding = std::any_of(_ending.begin(), _ending.end(), [&directory](const auto& worker) {
            return worker->Folder().directory == directory;
        });
        if (wanted.folder.isPaused || isEnding || _workers.contains(directory)) {
            continue;
        }
        QAuthenticator credentials;
        if (!wanted.user.isEmpty()) {
            credentials.setUser(wanted.user);
            credentials.setPassword(wanted.password);
        }
        _workers.insert(directory, std::make_shared<FolderWorker>(
                                       wanted.folder,
                                       [credentials](const SyncedFolder& folder) -> std::unique_ptr<IFolderPass> {
                                           return std::make_unique<FolderPass>(folder, credentials);
                                       },
                                       [this] { _OnStatus(); }));
    }
}

void Agent::_RemoveEnded() {
    _ending.remove_if([](const auto& worker) { return worker->HasEnded(); });
    _StartMissing();
}

void Agent::_EndWorkers() {
    for (const auto& worker : qAsConst(_workers)) {
        worker->Stop();
        _ending.push_back(worker);
    }
    _workers.clear();
    const auto hasEnded = [](const auto& worker) { return worker->HasEnded(); };
    for (auto waited = EndInterval; !std::all_of(_ending.begin(), _ending.end(), hasEnded); waited += EndInterval) {
        if (waited > EndLimit) {
            // A pass is made to be broken off at any point, by a crash even. Some servers and disks do not let go.
            LogLine(AgentLogger(), log4cplus::WARN_LOG_LEVEL,
                    QStringLiteral("ends before what was under way has come to its end"));
            std::_Exit(EXIT_SUCCESS);
        }
        std::this_thread::sleep_for(EndInterval);
    }
    _ending.clear();
}

void Agent::_OnStatus() {
    if (!_isStatusOnItsWay.exchange(true)) {
        Send(NewStatus);
    }
}

AgentStatus Agent::_Status() const {
    AgentStatus status;
    status.foldersFile = user::FoldersFilePath();
    status.mistakes = _read.mistakes;
    status.hasFoldersFileChanged = folders::HasFoldersFileChanged(_read);
    for (const Wanted& wanted : _wanted) {
        const auto worker = _workers.find(wanted.folder.directory);
        if (worker != _workers.end()) {
            status.folders.append((*worker)->Status());
            continue;
        }
        FolderStatus folder;
        folder.directory = wanted.folder.directory;
        folder.url = QUrl(wanted.folder.url).toDisplayString(QUrl::RemoveUserInfo);
        folder.state = wanted.folder.isPaused ? FolderStatus::State::Paused : FolderStatus::State::Starting;
        status.folders.append(folder);
    }
    return status;
}

}  // namespace agent
}  // namespace ovsync
