#pragma once

#include <QUrl>
#include <exception>

#include "client/content/ContentVersion.h"
#include "client/wire/HttpTransaction.h"

namespace ovsync {
namespace content {

/// Of a request or an answer: whether the file is executable, as "T" or "F".
const char* const ExecutableHeader = "x-ovs-executable";

/// One request about the content of a file. Takes every answer; what its status is good for is for the caller to judge.
/// Not thread-safe.
class ContentTransaction : public wire::HttpTransaction {
public:
    /// Of the body of an answer that is not handed on to anyone, in bytes.
    static constexpr qint64 IgnoredBodyLimit = qint64(1024) * 1024;

    ContentTransaction(const QByteArray& method, const QUrl& url);

    int StatusCode() const { return _status; }
    /// What the headers of the answer said.
    const ContentVersion& Version() const { return _version; }
    /// Throws what the sink or the source threw, if it did.
    void RethrowFailure() const;

    QByteArray Method() const override;
    QUrl Url() const override;
    bool MayComeCompressed() const override;
    void Forget() override;
    void OnHeaders(int status, const Headers& headers) override;
    void OnBody(const char* bytes, size_t size) override;

protected:
    /// Keeps what `action` throws for RethrowFailure and ends the transaction.
    template <typename Action>
    void Guard(Action action) {
        try {
            action();
        } catch (...) {
            _failure = std::current_exception();
            throw;
        }
    }

private:
    const QByteArray _method;
    const QUrl _url;
    int _status = 0;
    ContentVersion _version;
    qint64 _ignored = 0;
    std::exception_ptr _failure;
};

}  // namespace content
}  // namespace ovsync
