#pragma once

#include <memory>

#include "tests/service/HttpClient.h"
#include "tests/sync-proof/IFolderWriter.h"

namespace syncproof {

/// Another WebDAV client, which asks a server for no conditions.
class WebDavWriter : public IFolderWriter {
public:
    /// Works in the folder `name` of the server, which lies on this disk as `folder`.
    WebDavWriter(const std::string& name, const std::string& folder);

    /// The server is at this port of this machine from now on.
    void Connect(int port);

    bool Write(const std::string& path, const std::string& content, Contents& retired) override;
    void MakeFolder(const std::string& path) override;
    void Remove(const std::string& path, Contents& retired) override;
    void Rename(const std::string& from, const std::string& to) override;
    /// Sends the same content again.
    void Touch(const std::string& path, std::chrono::seconds age) override;

private:
    std::string _At(const std::string& path) const { return _folder + "/" + path; }
    std::string _Target(const std::string& path) const;
    /// Returns whether it was carried out.
    bool _Send(const std::string& method, const std::string& path, const std::vector<std::string>& headers = {},
               const std::string& body = "");

    const std::string _name;
    const std::string _folder;
    std::unique_ptr<service::test::HttpClient> _client;
};

}  // namespace syncproof
