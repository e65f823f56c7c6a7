#include "client/user/Keyring.h"

#include <qt5keychain/keychain.h>

#include <QEventLoop>
#include <QFile>
#include <QTimer>
#include <memory>

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
    auto* const job = new QKeychain::ReadPasswordJob(Service());
    // The job is gone when it is done.
    const auto password = std::make_shared<QString>();
    QObject::connect(job, &QKeychain::Job::finished, [job, password] { *password = job->textData(); });
    return _Run(job, host, user) ? std::make_optional(*password) : std::nullopt;
}

bool Keyring::Write(const QString& host, const QString& user, const QString& password) {
    auto* const job = new QKeychain::WritePasswordJob(Service());
    job->setTextData(password);
    return _Run(job, host, user);
}

bool Keyring::_Run(QKeychain::Job* job, const QString& host, const QString& user) {
    if (_isSilent || !HasSessionBus()) {
        delete job;
        return false;
    }
    job->setKey(user + QLatin1Char('@') + host.toLower());
    job->setInsecureFallback(false);
    // A job that is given up must not be deleted, and may end when nobody waits any more.
    struct Outcome {
        bool isOver = false;
        bool isDone = false;
    };
    const auto outcome = std::make_shared<Outcome>();
    const auto loop = std::make_shared<QEventLoop>();
    QObject::connect(job, &QKeychain::Job::finished, [outcome, loop](QKeychain::Job* finished) {
        outcome->isOver = true;
        outcome->isDone = finished->error() == QKeychain::NoError;
        loop->quit();
    });
    QTimer::singleShot(PatienceInMilliseconds, loop.get(), [raw = loop.get()] { raw->quit(); });
    job->start();
    loop->exec();
    _isSilent = !outcome->isOver;
    return outcome->isDone;
}

}  // namespace user
}  // namespace ovsync
