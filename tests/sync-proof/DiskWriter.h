#pragma once

#include "tests/sync-proof/IFolderWriter.h"

namespace syncproof {

/// Uses system calls.
class DiskWriter : public IFolderWriter {
public:
    /// How a file is written: into itself, or elsewhere and then moved into its place. The second knows what it retires
    /// whatever else changes the folder meanwhile.
    enum class Writing { InPlace, Aside };

    explicit DiskWriter(const std::string& folder, Writing writing = Writing::InPlace);

    bool Write(const std::string& path, const std::string& content, Contents& retired) override;
    void MakeFolder(const std::string& path) override;
    void Remove(const std::string& path, Contents& retired) override;
    void Rename(const std::string& from, const std::string& to) override;
    void Touch(const std::string& path, std::chrono::seconds age) override;

private:
    std::string _At(const std::string& path) const { return _folder + "/" + path; }
    /// Beside the folder, so that a rename is enough.
    std::string _Elsewhere() const { return _folder + ".elsewhere"; }
    /// Retires and deletes what was moved out of the folder.
    void _RetireElsewhere(Contents& retired) const;

    const std::string _folder;
    const Writing _writing;
};

}  // namespace syncproof
