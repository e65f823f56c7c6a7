#pragma once

#include <QString>

namespace ovsync {
namespace store {

/// A version of the service that was put beside a local file, because that had changed too. A plain value; the paths
/// are below the synced folder.
struct ConflictCopy {
    QString copy;
    /// Of the file that it is a version of.
    QString path;
    /// Tells the versions of the service's file apart; empty when nothing but the content does.
    QString identity;
    /// The MD5 of the content, in hexadecimal, to know whether somebody wrote it since.
    QString contentMd5;
};

}  // namespace store
}  // namespace ovsync
