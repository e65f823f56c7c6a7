#include "client/sync/GoneCheck.h"

#include "client/sync/Names.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace syncing {

namespace {

const int NotFoundStatus = 404;
const int GoneStatus = 410;

}  // namespace

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
        _service.files->GetFileByName(_service.FolderAt(FolderOf(path)), NameOf(path));
        return false;
    } catch (const sync::http::HttpException& e) {
        if (e.StatusCode() == NotFoundStatus || e.StatusCode() == GoneStatus) {
            return true;
        }
        throw;
    }
}

}  // namespace syncing
}  // namespace ovsync
