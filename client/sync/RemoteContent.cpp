#include "client/sync/RemoteContent.h"

#include <QCryptographicHash>

namespace ovsync {
namespace syncing {

namespace {

class Md5Sink : public http::ContentSink {
public:
    void Restart() override { _md5.reset(); }
    void Write(const char* bytes, size_t size) override { _md5.addData(bytes, static_cast<int>(size)); }
    QString Text() const { return QString::fromLatin1(_md5.result().toHex()); }

private:
    QCryptographicHash _md5{QCryptographicHash::Md5};
};

}  // namespace

QString Md5OnService(const ServiceFolder& service, const QString& path) {
    Md5Sink sink;
    service.newSession()->Download(service.urlOf(service.ServerPath(path)), sink);
    return sink.Text();
}

}  // namespace syncing
}  // namespace ovsync
