#include "host/configuration/FileLink.h"

namespace sync {
namespace config {

FileLink::FileLink() = default;
FileLink::FileLink(const FileLink& other) = default;
FileLink& FileLink::operator=(const FileLink& other) = default;
FileLink::~FileLink() = default;

}  // namespace config
}  // namespace sync
