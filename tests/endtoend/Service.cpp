#include "tests/endtoend/Service.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QProcessEnvironment>
#include <memory>
#include <stdexcept>

namespace tests {

namespace {

const int StartLimitInMilliseconds = 30000;
const int RunLimitInMilliseconds = 60000;

}  // namespace

Service::Service(const QStringList& options, const QString& password) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!password.isEmpty()) {
        environment.insert(QStringLiteral("OVSYNC_SERVICE_PASSWORD"), password);
    }
    _process.setProcessEnvironment(environment);
    if (options.contains(QStringLiteral("--verbose"))) {
        _process.setStandardErrorFile(_logs.filePath(QStringLiteral("requests")));
    } else {
        _process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    }
    _process.start(QStringLiteral(OVSYNC_SERVICE_PROGRAM),
                   QStringList() << _directory.path() << QStringLiteral("--port") << QStringLiteral("0") << options);
    while (!_process.canReadLine()) {
        if (!_process.waitForReadyRead(StartLimitInMilliseconds)) {
            throw std::runtime_error("the service did not start");
        }
    }
    const QString line = QString::fromUtf8(_process.readLine()).trimmed();
    _url = line.mid(line.indexOf(QStringLiteral("http://")));
}

Service::~Service() {
    _process.terminate();
    _process.waitForFinished(StartLimitInMilliseconds);
}

QStringList Service::TakeRequests() {
    QFile log(_logs.filePath(QStringLiteral("requests")));
    EXPECT_TRUE(log.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(log.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QStringList fresh = lines.mid(_taken);
    _taken = lines.size();
    return fresh;
}

void Service::AddFile(const QString& path, const QByteArray& content) {
    const QString name = _directory.filePath(path);
    ASSERT_TRUE(QDir().mkpath(QFileInfo(name).path()));
    QFile file(name);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
    ASSERT_EQ(file.write(content), content.size());
}

void Service::AddFolder(const QString& path) {
    ASSERT_TRUE(QDir().mkpath(_directory.filePath(path)));
}

void Service::Remove(const QString& path) {
    ASSERT_TRUE(QFile::remove(_directory.filePath(path)));
}

bool Service::HasFile(const QString& path) const {
    return QFile::exists(_directory.filePath(path));
}

void Service::MakeForm(const QString& path) {
    int argc = 1;
    char name[] = "test";
    char* argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv);
    QNetworkAccessManager network;
    QNetworkRequest request(QUrl(_url + path));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/xml"));
    const QByteArray body =
        "<D:propertyupdate xmlns:D=\"DAV:\"><D:set><D:prop><D:resourceclasstype>drovane.objects.Form"
        "</D:resourceclasstype></D:prop></D:set></D:propertyupdate>";
    const std::unique_ptr<QNetworkReply> reply(network.sendCustomRequest(request, "PROPPATCH", body));
    QEventLoop loop;
    QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    ASSERT_EQ(reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), 207);
}

std::string ErrorsOf(const ProgramResult& result) {
    return result.errors.toStdString();
}

namespace {

ProgramResult RunWithoutTerminal(const QStringList& words, const QStringList& environment, const QByteArray& input) {
    QProcess process;
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    for (const QString& variable : environment) {
        variables.insert(variable.section(QLatin1Char('='), 0, 0), variable.section(QLatin1Char('='), 1));
    }
    process.setProcessEnvironment(variables);
    // In a session of its own the program has no terminal to ask at.
    process.start(QStringLiteral("setsid"), QStringList(QStringLiteral("--wait")) + words);
    process.write(input);
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished(RunLimitInMilliseconds));
    ProgramResult result;
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.output = process.readAllStandardOutput();
    result.errors = process.readAllStandardError();
    return result;
}

}  // namespace

ProgramResult RunOvsync(const QStringList& arguments, const QStringList& environment, const QByteArray& input) {
    return RunWithoutTerminal(QStringList(QStringLiteral(OVSYNC_PROGRAM)) + arguments, environment, input);
}

ProgramResult RunTyped(const QString& line, const QStringList& environment) {
    return RunWithoutTerminal({QStringLiteral("sh"), QStringLiteral("-c"),
                               QStringLiteral("ovsync() { \"$0\" \"$@\"; }; ") + line, QStringLiteral(OVSYNC_PROGRAM)},
                              environment, QByteArray());
}

}  // namespace tests
