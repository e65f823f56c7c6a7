#include "dvsync/ModuleDirectory.h"

#include <QFileInfo>

#include "dvsync/Utf16.h"
#include "dvsync/platform/Platform.h"

namespace sync {
namespace dv {
namespace dvsync {

QString GetModuleDirectory(QString moduleName) {
    const QString file = FromUtf16(platform::ModuleFile(ToUtf16(moduleName)));
    return file.isEmpty() ? QString() : QFileInfo(file).absolutePath();
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
