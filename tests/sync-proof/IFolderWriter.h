#pragma once

#include <chrono>
#include <set>
#include <string>

namespace syncproof {

/// Changes files and folders as a person's programs do. Paths are relative to the folder that it works in. What cannot
/// be done, because something else changes the folder meanwhile, is left; that can throw
/// std::filesystem::filesystem_error, too.
class IFolderWriter {
public:
    using Contents = std::set<std::string>;

    virtual ~IFolderWriter() = default;

    /// Makes the file or gives it other content. `retired` gets what it had before. Returns whether it was done.
    virtual bool Write(const std::string& path, const std::string& content, Contents& retired) = 0;
    virtual void MakeFolder(const std::string& path) = 0;
    /// Deletes a file, or a folder with everything in it. `retired` gets the contents that went.
    virtual void Remove(const std::string& path, Contents& retired) = 0;
    /// Nothing is overwritten.
    virtual void Rename(const std::string& from, const std::string& to) = 0;
    /// Gives a file another time of modification, and no other content.
    virtual void Touch(const std::string& path, std::chrono::seconds age) = 0;
};

}  // namespace syncproof
