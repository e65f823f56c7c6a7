#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <QString>
#include <QUuid>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

namespace tests {

/// An empty directory that is gone, with what is in it, when this object is. Qt has one like it, but not Qt 4.8.
class TemporaryDirectory {
public:
    TemporaryDirectory() { EXPECT_TRUE(QDir().mkpath(_path)); }
    ~TemporaryDirectory() {
        std::error_code error;
        std::filesystem::remove_all(_path.toStdWString(), error);
        // Windows removes no program that has not ended yet.
        for (int i = 0; i < 300 && error; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            std::filesystem::remove_all(_path.toStdWString(), error);
        }
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    QString FilePath(const QString& name) const { return _path + QLatin1Char('/') + name; }

private:
    const QString _path = QDir::tempPath() + QLatin1String("/test-") + QUuid::createUuid().toString().mid(1, 36);
};

}  // namespace tests
