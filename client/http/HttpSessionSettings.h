#pragma once

#include <QString>
#include <chrono>
#include <functional>

namespace ovsync {
namespace http {

/// How a HttpSession connects. A plain value.
struct HttpSessionSettings {
    /// A file of PEM certificates to trust in place of the system's; empty for the system's.
    QString caFile;
    /// How long neither side may send a single byte. The length of an exchange as a whole is not limited.
    std::chrono::milliseconds silenceLimit = std::chrono::seconds(60);
    /// How long it may take to reach the server, TLS included.
    std::chrono::milliseconds connectLimit = std::chrono::seconds(30);
    /// Called several times a second while an answer is waited for and received, and once more when the exchange is
    /// over, on its thread, with the bytes of the body so far, uncompressed. May be empty; must not throw.
    std::function<void(qint64 bodyBytes, bool isOver)> onProgress;
};

}  // namespace http
}  // namespace ovsync
