#include "client/http/Exchange.h"

namespace ovsync {
namespace http {

QByteArray Exchange::ValueOf(const Headers& headers, const char* name) {
    QByteArray all;
    for (const auto& header : headers) {
        if (header.first.compare(name, Qt::CaseInsensitive) == 0) {
            all = all.isEmpty() ? header.second : all + ", " + header.second;
        }
    }
    return all;
}

}  // namespace http
}  // namespace ovsync
