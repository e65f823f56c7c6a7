#include <fcntl.h>
#include <sys/stat.h>

#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

class FileAttributesTest : public ServiceTest {
protected:
    std::string Mtime(const std::string& target) { return Properties(client, target)["{urn:ovsync}mtime"]; }
    bool IsExecutable(const std::string& target) {
        return Properties(client, target)["{http://apache.org/dav/props/}executable"] == "T";
    }
    bool IsExecutableOnDisk(const std::string& name) {
        struct stat status {};
        EXPECT_EQ(stat((folder / name).c_str(), &status), 0);
        return (status.st_mode & S_IXUSR) != 0;
    }
    // The status of setting one property.
    int Set(const std::string& target, const std::string& space, const std::string& name, const std::string& value) {
        const auto answer = Send("PROPPATCH", target, {},
                                 "<D:propertyupdate xmlns:D='DAV:'><D:set><D:prop><x:" + name + " xmlns:x='" + space +
                                     "'>" + value + "</x:" + name + "></D:prop></D:set></D:propertyupdate>");
        return Multistatus(answer.body).responses.begin()->second.statuses.at("{" + space + "}" + name);
    }
};

TEST_F(FileAttributesTest, ComeWithAPut) {
    const auto answer = Send("PUT", "/f", {"X-OC-Mtime: 1600000000.25", "x-ovs-executable: T"}, "x");
    EXPECT_EQ(answer.status, 201);
    EXPECT_EQ(answer.headers.at("x-oc-mtime"), "accepted");
    EXPECT_EQ(answer.headers.at("x-ovs-executable"), "accepted");
    EXPECT_EQ(Mtime("/f"), "1600000000.25");
    EXPECT_TRUE(IsExecutable("/f"));
    EXPECT_TRUE(IsExecutableOnDisk("f"));
    EXPECT_EQ(Send("GET", "/f").headers.at("last-modified"), "Sun, 13 Sep 2020 12:26:40 GMT");
    EXPECT_EQ(Properties(client, "/f")["version"], "1");
}

TEST_F(FileAttributesTest, PutWithoutThemHasTheTimeOfNowAndLeavesTheBit) {
    Send("PUT", "/f", {"X-OC-Mtime: 1600000000", "x-ovs-executable: T"}, "x");
    const auto answer = Send("PUT", "/f", {}, "y");
    EXPECT_EQ(answer.headers.count("x-oc-mtime"), 0U);
    EXPECT_EQ(answer.headers.count("x-ovs-executable"), 0U);
    EXPECT_GT(std::stod(Mtime("/f")), 1700000000.0);
    EXPECT_TRUE(IsExecutable("/f"));
    EXPECT_EQ(Properties(client, "/f")["version"], "2");
    Send("PUT", "/f", {"x-ovs-executable: F"}, "z");
    EXPECT_FALSE(IsExecutable("/f"));
    EXPECT_FALSE(IsExecutableOnDisk("f"));
}

TEST_F(FileAttributesTest, TheExecutableBitIsSaidWithTheContent) {
    Send("PUT", "/f", {"x-ovs-executable: T"}, "xyz");
    EXPECT_EQ(Send("GET", "/f").headers.at("x-ovs-executable"), "T");
    EXPECT_EQ(Send("HEAD", "/f").headers.at("x-ovs-executable"), "T");
    EXPECT_EQ(Send("GET", "/f", {"Range: bytes=1-"}).headers.at("x-ovs-executable"), "T");
    Send("PUT", "/f", {"x-ovs-executable: F"}, "xyz");
    EXPECT_EQ(Send("GET", "/f").headers.at("x-ovs-executable"), "F");
}

TEST_F(FileAttributesTest, PutWithValuesThatCannotBeReadIgnoresThem) {
    const auto answer = Send("PUT", "/f", {"X-OC-Mtime: yesterday", "x-ovs-executable: yes"}, "x");
    EXPECT_EQ(answer.status, 201);
    EXPECT_EQ(answer.headers.count("x-oc-mtime"), 0U);
    EXPECT_EQ(answer.headers.count("x-ovs-executable"), 0U);
    EXPECT_FALSE(IsExecutable("/f"));
}

TEST_F(FileAttributesTest, AreSetWithoutANewVersion) {
    const std::string tag = Send("PUT", "/f", {}, "hello").headers.at("etag");
    EXPECT_EQ(Set("/f", "urn:ovsync", "mtime", "1600000000.000000001"), 200);
    EXPECT_EQ(Set("/f", "http://apache.org/dav/props/", "executable", "T"), 200);
    EXPECT_EQ(Mtime("/f"), "1600000000.000000001");
    EXPECT_TRUE(IsExecutable("/f"));
    EXPECT_TRUE(IsExecutableOnDisk("f"));
    const auto answer = Send("GET", "/f");
    EXPECT_EQ(answer.headers.at("etag"), tag);
    EXPECT_EQ(answer.body, "hello");
    EXPECT_EQ(Properties(client, "/f")["checksummd5"], "5d41402abc4b2a76b9719d911017c592");
    EXPECT_EQ(Set("/f", "http://apache.org/dav/props/", "executable", "F"), 200);
    EXPECT_FALSE(IsExecutable("/f"));
}

TEST_F(FileAttributesTest, ThatCannotBeSetAreRefused) {
    Send("PUT", "/f", {"X-OC-Mtime: 1600000000"}, "x");
    Send("MKCOL", "/d");
    EXPECT_EQ(Set("/f", "urn:ovsync", "mtime", "soon"), 409);
    EXPECT_EQ(Set("/d", "urn:ovsync", "mtime", "1600000000"), 409);
    EXPECT_EQ(Set("/d", "http://apache.org/dav/props/", "executable", "T"), 409);
    EXPECT_EQ(Mtime("/f"), "1600000000");
}

TEST_F(FileAttributesTest, StayInAMoveAndTheBitInACopy) {
    Send("PUT", "/f", {"X-OC-Mtime: 1600000000", "x-ovs-executable: T"}, "x");
    EXPECT_EQ(Status("COPY", "/f", {Destination("/copy")}), 201);
    EXPECT_EQ(Status("MOVE", "/f", {Destination("/moved")}), 201);
    EXPECT_EQ(Mtime("/moved"), "1600000000");
    EXPECT_TRUE(IsExecutable("/moved"));
    EXPECT_GT(std::stod(Mtime("/copy")), 1700000000.0);
    EXPECT_TRUE(IsExecutable("/copy"));
}

TEST_F(FileAttributesTest, OfFilesPutThereByHandAreThoseOfTheDisk) {
    folder.Write("f", "hello");
    chmod((folder / "f").c_str(), 0644);
    const timespec times[] = {{1600000000, 0}, {1600000000, 500000000}};
    ASSERT_EQ(utimensat(AT_FDCWD, (folder / "f").c_str(), times, 0), 0);
    EXPECT_EQ(Mtime("/f"), "1600000000.5");
    EXPECT_FALSE(IsExecutable("/f"));
    const std::string tag = Send("GET", "/f").headers.at("etag");
    chmod((folder / "f").c_str(), 0755);
    EXPECT_TRUE(IsExecutable("/f"));
    EXPECT_EQ(Send("GET", "/f").headers.at("etag"), tag);
}

}  // namespace
}  // namespace service::test
