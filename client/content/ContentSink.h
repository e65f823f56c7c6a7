#pragma once

#include <QtGlobal>
#include <cstddef>

#include "client/content/ContentPart.h"
#include "client/content/ContentVersion.h"

namespace ovsync {
namespace content {

/// Receives the content of a file while it comes. What an operation throws ends the download and passes through it.
///
/// \code
/// #include "client/content/ContentConnection.h"
///
/// class Text : public ovsync::content::ContentSink {
/// public:
///     void Restart(qint64) override { _bytes.clear(); }
///     void Write(const char* bytes, size_t size) override { _bytes.append(bytes, int(size)); }
///     QByteArray Bytes() const { return _bytes; }
///
/// private:
///     QByteArray _bytes;
/// };
/// Text text;
/// const ovsync::wire::ConnectionSettings settings;
/// ovsync::content::ContentConnection connection(settings, QAuthenticator());
/// connection.Download(QUrl(QStringLiteral("http://localhost:8080/note.txt")), text);
/// const QByteArray bytes = text.Bytes();
/// \endcode
class ContentSink {
public:
    virtual ~ContentSink() = default;

    /// What is there of an earlier download. Only what follows it is asked for, if the server still has that version.
    virtual ContentPart Received() { return {}; }
    /// Before Restart or GoOn: what the server says of the content that is about to come.
    virtual void TakeVersion(const ContentVersion& /*version*/) {}
    /// Before the first piece: whatever was received is to be forgotten, the content starts anew. `size` is what the
    /// server announces, in bytes; -1 when it does not say.
    virtual void Restart(qint64 size) = 0;
    /// In place of Restart: the content goes on behind what Received gave. Never called where that was nothing.
    virtual void GoOn() {}
    virtual void Write(const char* bytes, size_t size) = 0;
};

}  // namespace content
}  // namespace ovsync
