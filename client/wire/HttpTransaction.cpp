#include "client/wire/HttpTransaction.h"

namespace ovsync {
namespace wire {

QByteArray HttpTransaction::ValueOf(const Headers& headers, const char* name) {
    QByteArray all;
    for (const auto& header : headers) {
        if (header.first.compare(name, Qt::CaseInsensitive) == 0) {
            all = all.isEmpty() ? header.second : all + ", " + header.second;
        }
    }
    return all;
}

}  // namespace wire
}  // namespace ovsync
