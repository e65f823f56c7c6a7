#pragma once

#include "client/content/ContentTransaction.h"
#include "client/wire/IContentSource.h"

namespace ovsync {
namespace content {

/// Stores the content of a file, and tells its date, which some servers keep. A source that does not have just the
/// announced size breaks the transaction off before the server was sent as much as was announced, so that it has
/// nothing whole to store. Not thread-safe.
class ContentUpload : public ContentTransaction, private wire::IContentSource {
public:
    /// Sends `conditions` among the headers. `source` has to outlive this object.
    ContentUpload(const QUrl& url, wire::IContentSource& source, qint64 size, const Headers& conditions);

    /// Whether the server said that it took the date that it was told.
    bool IsDateTaken() const { return _isDateTaken; }
    /// The same of the executable bit.
    bool IsBitTaken() const { return _isBitTaken; }
    /// By the server's clock, in UTC; invalid when it does not say.
    const QDateTime& AnsweredAt() const { return _answeredAt; }

    Headers RequestHeaders() const override;
    void OnHeaders(int status, const Headers& headers) override;
    wire::IContentSource* StreamedBody() override;
    qint64 StreamedBodySize() const override;
    void OnEnd() override;

private:
    void Restart() override;
    size_t Read(char* bytes, size_t size) override;
    size_t _ReadSource(char* bytes, size_t size);
    void _CheckThatSourceEnds();

    wire::IContentSource& _source;
    const qint64 _size;
    const Headers _conditions;
    qint64 _sent = 0;
    bool _isDateTaken = false;
    bool _isBitTaken = false;
    QDateTime _answeredAt;
};

}  // namespace content
}  // namespace ovsync
