#pragma once

#include <QByteArray>

#include "client/content/ContentTransaction.h"

namespace ovsync {
namespace content {

/// Sets one property of what is at a URL. Takes every answer. Not thread-safe.
class PropertyChange : public ContentTransaction {
public:
    /// Sends `conditions` among the headers.
    PropertyChange(const QUrl& url, const QByteArray& nameSpace, const QByteArray& name, const QByteArray& value,
                   const Headers& conditions);

    /// The status of the answer or, where that has a status for each property, the one of this property; 0 when it
    /// cannot be read.
    int Outcome() const;

    Headers RequestHeaders() const override;
    QByteArray RequestBody() const override { return _body; }
    void Forget() override;
    void OnBody(const char* bytes, size_t size) override;

private:
    const QByteArray _body;
    const Headers _conditions;
    QByteArray _answer;
};

}  // namespace content
}  // namespace ovsync
