#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <string>

namespace tests {

/// The stand-in service, running on a folder of its own and a free port as long as this object lives.
class Service {
public:
    /// With `options` behind the folder. `password` goes into its environment. Throws std::runtime_error when it does
    /// not start.
    explicit Service(const QStringList& options = QStringList(), const QString& password = QString());
    ~Service();
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    /// With a '/' at its end.
    const QString& Url() const { return _url; }

    /// The lines that it wrote about requests, when it was started with "--verbose", since this was called last.
    QStringList TakeRequests();

    /// Puts a file into the served folder, with the folders above it.
    void AddFile(const QString& path, const QByteArray& content);
    void AddFolder(const QString& path);
    void Remove(const QString& path);
    bool HasFile(const QString& path) const;
    /// Makes the folder at the percent-encoded `path` a form, which only the service itself can do.
    void MakeForm(const QString& path);

private:
    QTemporaryDir _directory;
    QTemporaryDir _logs;
    int _taken = 0;
    QProcess _process;
    QString _url;
};

/// What a program run left behind.
struct ProgramResult {
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

std::string ErrorsOf(const ProgramResult& result);

/// Runs `ovsync` to its end, with `environment` ("NAME=value") added, `input` to read and without a terminal.
ProgramResult RunOvsync(const QStringList& arguments, const QStringList& environment = QStringList(),
                        const QByteArray& input = QByteArray());

/// Runs a line as a shell takes it; `ovsync` in it is the program that RunOvsync runs.
ProgramResult RunTyped(const QString& line, const QStringList& environment = QStringList());

}  // namespace tests
