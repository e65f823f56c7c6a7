#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QUrl>
#include <memory>

#include "tests/fakes/Contract.h"
#include "tests/fakes/InstalledConfiguration.h"
#include "tests/fakes/Text.h"

namespace tests {

/// The account of the managers, and the one that `_folder` names: the two may differ.
const int ServerId = 7;
const int FolderServerId = 23;

/// What the managers of files and of folders both stand on: every path has the URL `_url`, and every listing is
/// `_propfind`.
class RemoteManagerTest : public testing::Test {
protected:
    explicit RemoteManagerTest(const char* serverPath)
        : _url(std::make_shared<QUrl>(Text("http://service.test/") + Text(serverPath))) {
        using testing::_;
        using testing::Return;
        ON_CALL(*_urlBuilder, BuildUrl(_, _)).WillByDefault(Return(_url));
        ON_CALL(*_httpFactory, CreatePropfindRequest(_, _, _)).WillByDefault(Return(_propfind));
        _folder.serverPath = Text(serverPath);
        _folder.serverId = FolderServerId;
    }

    const InstalledConfiguration _installed;
    const std::shared_ptr<QUrl> _url;
    const std::shared_ptr<testing::NiceMock<MockUrlBuilder>> _urlBuilder =
        std::make_shared<testing::NiceMock<MockUrlBuilder>>();
    const std::shared_ptr<testing::NiceMock<MockHttpFactory>> _httpFactory =
        std::make_shared<testing::NiceMock<MockHttpFactory>>();
    const std::shared_ptr<FakePropfindRequest> _propfind = std::make_shared<FakePropfindRequest>();
    sync::config::FolderConfiguration _folder;
};

}  // namespace tests
