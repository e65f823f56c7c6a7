#pragma once

#include <map>
#include <set>
#include <string>

namespace syncproof {

/// What lies below a folder: the content of each file by its path; of a folder, whose path has a '/' at its end,
/// nothing; of a link where it leads to.
using FolderImage = std::map<std::string, std::string>;

/// Reads what is really on the disk. Leaves out what the client and the service keep for themselves in their hidden
/// folders, and nothing else.
FolderImage ReadFolder(const std::string& folder);

/// The paths, one a line, that are not the same in both, and how they differ; empty when they are equal.
std::string Differences(const FolderImage& here, const FolderImage& there);

/// The paths that `image` lacks or has another content of.
std::set<std::string> MissingFrom(const FolderImage& image, const FolderImage& expected);

/// Those of the files, without that of empty ones, which nobody misses.
std::set<std::string> ContentsOf(const FolderImage& image);

}  // namespace syncproof
