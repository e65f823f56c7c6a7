#include <signal.h>
#include <sys/mount.h>

#include <cerrno>
#include <fstream>

#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

// A service on a disk of its own, which is small.
class FullDiskTest : public testing::Test {
protected:
    void SetUp() override {
        if (mount("tmpfs", folder.Path().c_str(), "tmpfs", 0, "size=10m") != 0) {
            ASSERT_EQ(errno, EPERM);
            GTEST_SKIP() << "Only root can make disks";
        }
        isMounted = true;
        Start();
    }
    ~FullDiskTest() override {
        service.reset();
        if (isMounted) {
            umount(folder.Path().c_str());
        }
    }

    void Start() {
        client.reset();
        service.reset();
        service = std::make_unique<ServiceProcess>(std::vector<std::string>{folder.Path()});
        client = std::make_unique<HttpClient>(service->Port());
    }

    // Puts a file there by hand that takes all the space there is.
    void FillDisk() {
        std::ofstream file(folder / "rest", std::ios::binary | std::ios::app);
        const std::string block(4096, 'x');
        while (file << block << std::flush) {
        }
    }

    long Status(const std::string& method, const std::string& target, const std::string& body = "") {
        return client->Send(method, target, {}, body).status;
    }

    TemporaryFolder folder;
    bool isMounted = false;
    std::unique_ptr<ServiceProcess> service;
    std::unique_ptr<HttpClient> client;
};

TEST_F(FullDiskTest, FilesAreReadAndRemovedAndNoneIsTakenIn) {
    ASSERT_EQ(Status("PUT", "/f", "hello"), 201);
    ASSERT_EQ(Status("MKCOL", "/d"), 201);
    FillDisk();
    EXPECT_EQ(Status("PUT", "/g", std::string(100000, 'x')), 507);
    EXPECT_EQ(client->Send("GET", "/f").body, "hello");
    EXPECT_EQ(Multistatus(client->Send("PROPFIND", "/").body).responses.size(), 4U);
    EXPECT_EQ(Status("DELETE", "/f"), 204);
    EXPECT_EQ(Status("DELETE", "/d"), 204);
    EXPECT_EQ(Status("DELETE", "/rest"), 204);
    EXPECT_EQ(Status("PUT", "/g", std::string(100000, 'x')), 201);
}

TEST_F(FullDiskTest, ServiceStartsAndGoesOn) {
    ASSERT_EQ(Status("PUT", "/f", "hello"), 201);
    FillDisk();
    Start();
    EXPECT_EQ(client->Send("GET", "/f").body, "hello");
    service->End(SIGKILL);
    Start();
    EXPECT_EQ(Multistatus(client->Send("PROPFIND", "/").body).responses.size(), 3U);
    EXPECT_EQ(Status("DELETE", "/f"), 204);
    Start();
    EXPECT_EQ(Status("GET", "/f"), 404);
    EXPECT_EQ(Status("DELETE", "/rest"), 204);
    EXPECT_EQ(Status("PUT", "/g", "x"), 201);
}

TEST_F(FullDiskTest, ManySmallFilesCanBeRemoved) {
    for (int i = 0; i < 300; ++i) {
        ASSERT_EQ(Status("PUT", "/" + std::to_string(i), "x"), 201);
    }
    FillDisk();
    for (int i = 0; i < 300; ++i) {
        EXPECT_EQ(Status("DELETE", "/" + std::to_string(i)), 204) << i;
        // Whoever fills the disk does not rest.
        FillDisk();
    }
    EXPECT_EQ(Status("DELETE", "/rest"), 204);
    EXPECT_EQ(Status("PUT", "/f", "x"), 201);
}

}  // namespace
}  // namespace service::test
