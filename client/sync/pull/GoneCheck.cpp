#include "client/sync/pull/GoneCheck.h"

#include "client/sync/local/PathNames.h"
#include "client/wire/HttpStatus.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace pull {

using local::FolderOf;
using wire::HttpStatus;

bool GoneCheck::IsGone(const QString& path) {
    // The listing has something else of this name, or a file where a folder above it was.
    if (_remote.HasFolder(path) || _remote.HasFile(path)) {
        return true;
    }
    const QString above = FolderOf(path);
    if (!_remote.HasFolder(above) && IsGone(above)) {
        return true;
    }
    auto answer = _answers.constFind(path);
    if (answer == _answers.constEnd()) {
        answer = _answers.insert(path, _Ask(path));
    }
    return *answer;
}

bool GoneCheck::_Ask(const QString& path) {
    try {
        _service.FileAt(path);
        return false;
    } catch (const sync::http::HttpException& e) {
        if (e.StatusCode() == HttpStatus::NotFound || e.StatusCode() == HttpStatus::Gone) {
            return true;
        }
        throw;
    }
}

}  // namespace pull
}  // namespace ovsync
