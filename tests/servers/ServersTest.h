#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/servers/DavServer.h"
#include "tests/servers/OddTree.h"
#include "tests/service/HttpClient.h"
#include "tests/service/TemporaryFolder.h"

namespace servers {

using Words = std::vector<std::string>;

/// Drives the real `ovsync` against a server. A test is a cell of the table in the README: a server and a group of
/// commands. What a command has done is read from the server's disk, or written there, without `ovsync`.
class ServersTest : public testing::TestWithParam<ServerKind> {
protected:
    /// What a run left behind.
    struct Run {
        int exitCode = 0;
        std::string output;
        std::string errors;
    };

    /// Starts the server on a folder with `tree` in it, the files an hour old.
    void Serve(const FolderImage& tree);

    int Port() const { return _server->Port(); }
    /// The URL of `path`, all of it escaped that can be.
    std::string Url(const std::string& path = "") const;

    /// Runs it in the folder `here`. A server that does not answer is not waited for as long as by default.
    Run Ovsync(const Words& arguments) const;

    /// `check` names what is looked at, as short as a cell of the table has it. It fails when `problem` is not empty.
    /// The first one that fails is recorded for the table.
    void Expect(const std::string& check, const std::string& problem);
    /// Runs `ovsync`, which has to exit with `exitCode`, and returns what it wrote to its standard output.
    std::string ExpectRun(const std::string& check, const Words& arguments, int exitCode = 0);
    /// For a pass.
    void ExpectNothingToDo(const std::string& check, const Words& arguments);
    void ExpectEqual(const std::string& check, const std::string& expected, const std::string& actual);
    void ExpectEqual(const std::string& check, const FolderImage& expected, const FolderImage& actual);
    /// What the server has on its disk is `expected`.
    void ExpectThere(const std::string& check, const FolderImage& expected);

    /// Changes something on the server, over HTTP: some do not notice what is done to their folder. When it returns,
    /// the server also serves what was put.
    void ChangeThere(const std::string& method, const std::string& path, const std::string& content = "");

    /// What the server was asked so far, of those that write that into their log: "PROPFIND /folder/".
    Words Asked() const;

    void WriteHere(const FolderImage& tree) const;
    FolderImage ImageHere() const { return syncproof::ReadFolder(here.Path()); }

    const service::test::TemporaryFolder here;

private:
    const service::test::TemporaryFolder _there;
    std::unique_ptr<IDavServer> _server;
};

}  // namespace servers
