#pragma once

#include <QTemporaryDir>
#include <QtGlobal>

namespace tests {

/// Takes away what the surroundings of a test say about proxies and passwords, for the rest of the process.
class CleanEnvironment {
public:
    CleanEnvironment() {
        for (const char* name :
             {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"}) {
            qunsetenv(name);
        }
        qputenv("HOME", _home.path().toLocal8Bit());
    }

    /// An empty directory; ~ for the code under test.
    QString HomeFile(const QString& name) const { return _home.filePath(name); }

private:
    const QTemporaryDir _home;
};

}  // namespace tests
