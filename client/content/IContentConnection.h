#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUrl>
#include <chrono>
#include <optional>

#include "client/content/ContentSink.h"
#include "client/content/ContentVersion.h"
#include "client/wire/IContentSource.h"

namespace ovsync {
namespace content {

/// What has to hold on the server for an upload to be stored.
enum class UploadCondition {
    /// There is no such file.
    New,
    /// The file is still the version that is given: by its entity tag or, where it has none, by its date.
    Unchanged,
    /// Nothing: whatever is there is replaced.
    Any
};

enum class UploadOutcome {
    Stored,
    /// The condition did not hold: someone else changed or made the file. Nothing was stored.
    Refused
};

enum class LockOutcome {
    Locked,
    /// The server has no locks, failed to lock, did not answer, or has another version.
    NotLocked,
    /// There is no such file any more.
    Gone
};

/// What a server answers to an upload. A plain value.
struct UploadAnswer {
    UploadOutcome outcome = UploadOutcome::Refused;
    /// The strong entity tag of what was stored; empty when the server does not say.
    QByteArray entityTag;
    /// When it answered, in UTC and by its own clock; invalid when it does not say.
    QDateTime date;
};

/// Reads and writes the content of files. For one thread, but for Cancel.
///
/// An operation returns when the whole answer came. It throws HttpException for an answer whose status is not what the
/// operation needs, with that status, and TransactionError when no whole answer came. Both messages name the URL, the
/// status, the content type and the first bytes of what came instead.
///
/// \code
/// #include <QBuffer>
/// #include <iostream>
/// #include "client/content/ContentConnection.h"
///
/// class Note : public ovsync::wire::IContentSource {
/// public:
///     explicit Note(QBuffer& text) : _text(text) {}
///     void Restart() override { _text.seek(0); }
///     size_t Read(char* bytes, size_t size) override { return size_t(_text.read(bytes, qint64(size))); }
///
/// private:
///     QBuffer& _text;
/// };
/// QBuffer text;
/// text.setData("a few words");
/// text.open(QIODevice::ReadOnly);
/// Note note(text);
/// const ovsync::wire::ConnectionSettings settings;
/// ovsync::content::ContentConnection connection(settings, QAuthenticator());
/// const auto answer = connection.Upload(QUrl(QStringLiteral("http://localhost:8080/note.txt")), note, text.size(),
///                                       ovsync::content::UploadCondition::New, ovsync::content::ContentVersion());
/// if (answer.outcome == ovsync::content::UploadOutcome::Refused) {
///     std::cerr << "There is a note.txt already\n";
/// }
/// \endcode
class IContentConnection {
public:
    virtual ~IContentConnection() = default;

    /// None when there is no such file.
    [[nodiscard]] virtual std::optional<ContentVersion> Look(const QUrl& url) = 0;

    /// Returns when `sink` was given everything that the server announced. That it is the file's content and no error
    /// page that a server sends in its place is for the caller to check.
    virtual ContentVersion Download(const QUrl& url, ContentSink& sink) = 0;

    /// Sends exactly `size` bytes; `known` counts for UploadCondition::Unchanged only and must have a tag or a date
    /// there. Throws TransactionError also when `source` has fewer or more: then the server was given no whole content.
    /// After an error without an answer the server may have stored the content nonetheless.
    [[nodiscard]] virtual UploadAnswer Upload(const QUrl& url, wire::IContentSource& source, qint64 size,
                                              UploadCondition condition, const ContentVersion& known) = 0;

    /// Lets nobody else change the file `url` until Unlock, or for `longest`; its content is sent by Upload as ever.
    /// Then nobody can come between the condition of an upload and its end, as on servers that look at conditions only
    /// when an upload begins. Others are told that `owner` has the lock. A file that has another tag than `entityTag`
    /// is not locked, unless that is empty. Throws HttpException of status 423 when somebody else has it locked, and
    /// TransactionError after Cancel; otherwise the upload shows what is wrong with the server.
    [[nodiscard]] virtual LockOutcome Lock(const QUrl& url, const QByteArray& entityTag, const QString& owner,
                                           std::chrono::seconds longest) = 0;

    /// Ends the lock that Lock made, if it did; also after Cancel, within seconds. False when there may still be one.
    virtual bool Unlock() noexcept = 0;

    /// Lock is to lock nothing from now on: the server does not do with locks what it should.
    virtual void DoWithoutLocks() = 0;

    /// Ends the locks that `owner` has on what lies in a folder, which a process that was killed left.
    virtual void Release(const QUrl& folder, const QString& owner) = 0;

    /// Deletes the file if it still is the version `known`, which must have a tag or a date. False when it is another;
    /// true also when there is none any more.
    [[nodiscard]] virtual bool Remove(const QUrl& url, const ContentVersion& known) = 0;

    /// Ends the operation under way, and each to come, with a TransactionError at once. May be called by any thread,
    /// any number of times.
    virtual void Cancel() = 0;
};

}  // namespace content
}  // namespace ovsync
