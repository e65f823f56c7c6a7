#include "client/sync/pass/RemoteContent.h"

#include <QCryptographicHash>

#include "client/sync/pass/RemoteVersion.h"

namespace ovsync {
namespace pass {

namespace {

class Md5Sink : public content::ContentSink {
public:
    class MoreThanListed {};

    explicit Md5Sink(qint64 listed) : _listed(listed) {}

    void Restart(qint64 size) override {
        _announced = size;
        _size = 0;
        _md5.reset();
    }
    void Write(const char* bytes, size_t size) override {
        _size += static_cast<qint64>(size);
        if (_size > SizeLimit(_listed, _announced)) {
            throw MoreThanListed();
        }
        _md5.addData(bytes, static_cast<int>(size));
    }
    QString Text() const { return QString::fromLatin1(_md5.result().toHex()); }

private:
    const qint64 _listed;
    qint64 _announced = -1;
    qint64 _size = 0;
    QCryptographicHash _md5{QCryptographicHash::Md5};
};

}  // namespace

QString Md5OnService(const ServiceFolder& service, const QString& path, qint64 listed) {
    Md5Sink sink(listed);
    try {
        service.newConnection()->Download(service.urlOf(service.ServerPath(path)), sink);
    } catch (const Md5Sink::MoreThanListed&) {
        return QString();
    }
    return sink.Text();
}

}  // namespace pass
}  // namespace ovsync
