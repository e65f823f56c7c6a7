#pragma once

#include <QDateTime>
#include <QMap>
#include <QString>

#include "host/http/DAVPropfindResponse.h"

namespace sync {
namespace http {

/// The parsed answer of one PROPFIND. A plain value. Both maps are keyed so that key order is the order in which
/// entries are to be shown, and a container comes before what lies in it.
struct DAVPropfindResult {
    /// The folder-like entries.
    QMap<QString, DAVPropfindResponse> collectionResponses;
    /// The file-like entries.
    QMap<QString, DAVPropfindResponse> fileResponses;
    /// Whether the answer consisted of the one entry in singleResponse.
    bool isSingleResponse = false;
    DAVPropfindResponse singleResponse;
    /// The service's time of the answer; invalid when it gave none.
    QDateTime serverTime;
};

}  // namespace http
}  // namespace sync
