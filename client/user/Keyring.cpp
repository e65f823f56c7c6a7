#include "client/user/Keyring.h"

#include <qt5keychain/keychain.h>

#include <QEventLoop>
#include <QFile>
#include <QTimer>
#include <memory>
#include <vector>

namespace ovsync {
namespace user {

namespace {

const int PatienceInMilliseconds = 3000;

/// Without one the keyring's library would start one, and a keyring of its own in it.
bool HasSessionBus() {
    return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") ||
           QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QLatin1String("/bus"));
}

QString Service() {
    return QStringLiteral("ovsync");
}

}  // namespace

std::optional<QString> Keyring::Read(const QString& host, const QString& user) {
    const auto job = std::make_shared<QKeychain::ReadPasswordJob>(Service());
    return _Run(job, host, user) ? std::make_optional(job->textData()) : std::nullopt;
}

bool Keyring::Write(const QString& host, const QString& user, const QString& password) {
    const auto job = std::make_shared<QKeychain::WritePasswordJob>(Service());
    job->setTextData(password);
    return _Run(job, host, user);
}

bool Keyring::_Run(const std::shared_ptr<QKeychain::Job>& job, const QString& host, const QString& user) {
    if (_isSilent || !HasSessionBus()) {
        return false;
    }
    job->setAutoDelete(false);
    job->setKey(user + QLatin1Char('@') + host.toLower());
    job->setInsecureFallback(false);
    QEventLoop loop;
    bool isOver = false;
    QObject::connect(job.get(), &QKeychain::Job::finished, &loop, [&isOver, &loop] {
        isOver = true;
        loop.quit();
    });
    QTimer::singleShot(PatienceInMilliseconds, &loop, [&loop] { loop.quit(); });
    job->start();
    loop.exec();
    if (!isOver) {
        _isSilent = true;
        // Its answer may come when nobody waits any more, and needs it then.
        static std::vector<std::shared_ptr<QKeychain::Job>> givenUp;
        givenUp.push_back(job);
        return false;
    }
    return job->error() == QKeychain::NoError;
}

}  // namespace user
}  // namespace ovsync
