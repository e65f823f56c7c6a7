#include "client/library/Netrc.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QByteArray>
#include <QRegularExpression>
#include <QUrl>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

#include "client/wire/CurlHandle.h"

namespace ovsync {
namespace library {

using sync::core::SyncException;
using wire::CurlHandle;
using wire::NewCurlHandle;
using wire::SetCurlOption;

namespace {

const int LongestPause = 1000;

/// A socket that only this process can take connections from, and that nobody answers at.
class SilentSocket {
public:
    SilentSocket() : _socket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        socklen_t size = sizeof(address);
        // Bound to no name, it is given an abstract one that nobody has.
        const bool isThere =
            _socket >= 0 && bind(_socket, reinterpret_cast<sockaddr*>(&address), sizeof(sa_family_t)) == 0 &&
            listen(_socket, 1) == 0 && getsockname(_socket, reinterpret_cast<sockaddr*>(&address), &size) == 0;
        if (!isThere) {
            const int error = errno;
            close(_socket);
            throw SyncException(
                QStringLiteral("There is no socket to be had: %1").arg(QString::fromLocal8Bit(std::strerror(error))));
        }
        _name = QByteArray(address.sun_path + 1, static_cast<int>(size - offsetof(sockaddr_un, sun_path)) - 1);
    }
    ~SilentSocket() { close(_socket); }
    SilentSocket(const SilentSocket&) = delete;
    SilentSocket& operator=(const SilentSocket&) = delete;

    /// In the abstract namespace.
    const QByteArray& Name() const { return _name; }

private:
    const int _socket;
    QByteArray _name;
};

struct MultiCloser {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};

int KeepRequest(CURL* /*easy*/, curl_infotype type, char* bytes, size_t size, void* request) {
    if (type == CURLINFO_HEADER_OUT) {
        static_cast<QByteArray*>(request)->append(bytes, static_cast<int>(size));
    }
    return 0;
}

/// Sends the request of `handle` and returns its head. It is not waited for an answer.
QByteArray HeadOfRequest(const CurlHandle& handle) {
    QByteArray head;
    SetCurlOption(handle, CURLOPT_VERBOSE, 1L);
    SetCurlOption(handle, CURLOPT_DEBUGFUNCTION, &KeepRequest);
    SetCurlOption(handle, CURLOPT_DEBUGDATA, &head);
    const std::unique_ptr<CURLM, MultiCloser> multi(curl_multi_init());
    if (!multi) {
        throw std::bad_alloc();
    }
    curl_multi_add_handle(multi.get(), handle.get());
    int running = 1;
    while (running != 0 && !head.endsWith("\r\n\r\n")) {
        if (curl_multi_perform(multi.get(), &running) != CURLM_OK) {
            break;
        }
        if (running != 0 && head.isEmpty()) {
            curl_multi_poll(multi.get(), nullptr, 0, LongestPause, nullptr);
        }
    }
    int left = 0;
    const CURLMsg* const message = curl_multi_info_read(multi.get(), &left);
    const CURLcode result = message == nullptr ? CURLE_OK : message->data.result;
    curl_multi_remove_handle(multi.get(), handle.get());
    if (result != CURLE_OK) {
        throw SyncException(QString::fromUtf8(curl_easy_strerror(result)));
    }
    return head;
}

}  // namespace

QAuthenticator NetrcCredentials(const QString& host, const QString& user) {
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(host);
    if (!user.isEmpty()) {
        url.setUserName(user, QUrl::DecodedMode);
    }
    url.setPath(QStringLiteral("/"));
    const QByteArray file = qgetenv("NETRC");
    const SilentSocket nobody;
    const CurlHandle handle = NewCurlHandle();
    SetCurlOption(handle, CURLOPT_URL, url.toEncoded().constData());
    SetCurlOption(handle, CURLOPT_NETRC, static_cast<long>(CURL_NETRC_OPTIONAL));
    if (!file.isEmpty()) {
        SetCurlOption(handle, CURLOPT_NETRC_FILE, file.constData());
    }
    SetCurlOption(handle, CURLOPT_HTTPAUTH, CURLAUTH_BASIC);
    SetCurlOption(handle, CURLOPT_PROXY, "");
    SetCurlOption(handle, CURLOPT_NOSIGNAL, 1L);
    SetCurlOption(handle, CURLOPT_ABSTRACT_UNIX_SOCKET, nobody.Name().constData());
    QByteArray head;
    try {
        // The HTTP library hands out what it reads in a request only.
        head = HeadOfRequest(handle);
    } catch (const SyncException& reason) {
        throw SyncException(
            QStringLiteral("%1 cannot be read: %2")
                .arg(file.isEmpty() ? QStringLiteral("~/.netrc") : QString::fromLocal8Bit(file), reason.Message()));
    }
    static const QRegularExpression basic(QStringLiteral("\r\nAuthorization: Basic ([^\r]*)\r\n"));
    const QString encoded = basic.match(QString::fromLatin1(head)).captured(1);
    const QString both = QString::fromUtf8(QByteArray::fromBase64(encoded.toLatin1()));
    const int colon = user.isEmpty() ? both.indexOf(QLatin1Char(':')) : user.size();
    QAuthenticator credentials;
    if (colon > 0 && colon + 1 < both.size()) {
        credentials.setUser(both.left(colon));
        credentials.setPassword(both.mid(colon + 1));
    }
    return credentials;
}

}  // namespace library
}  // namespace ovsync
