#include "client/cli/input/AbsolutePath.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "client/cli/input/UsageError.h"

namespace ovsync {
namespace input {

namespace {

struct Freer {
    void operator()(char* text) const { std::free(text); }
};

}  // namespace

QString AbsolutePath(const QString& directory) {
    const std::unique_ptr<char, Freer> path(realpath(directory.toUtf8().constData(), nullptr));
    if (!path) {
        throw UsageError(QStringLiteral("%1: %2").arg(directory, QString::fromLocal8Bit(std::strerror(errno))));
    }
    return QString::fromUtf8(path.get());
}

}  // namespace input
}  // namespace ovsync
