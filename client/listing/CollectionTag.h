#pragma once

#include <QString>

namespace ovsync {
namespace listing {

/// The namespace of the ids that come with entity tags which a change of anything below a collection changes.
constexpr char FileIdNamespace[] = "http://owncloud.org/ns";

/// By which a collection is known to be the same one as before, with all that lies below it as it was: its id, `id` or
/// where that is empty `fileId`, and its entity tag, strong or weak. Empty when there are not both.
QString CollectionTag(const QString& id, const QString& fileId, const QString& entityTag);

}  // namespace listing
}  // namespace ovsync
