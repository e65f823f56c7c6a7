#include "tests/servers/ServersTest.h"

#include <chrono>
#include <filesystem>
#include <sstream>
#include <thread>

#include "tests/service/CapturedText.h"
#include "tests/service/ChildProcess.h"

namespace servers {
namespace {

namespace fs = std::filesystem;
using syncproof::Differences;

void Write(const service::test::TemporaryFolder& folder, const FolderImage& tree) {
    for (const auto& [path, content] : tree) {
        if (path.back() == '/') {
            fs::create_directories(folder / path);
        } else {
            folder.Write(path, content);
        }
    }
}

std::string Escaped(const std::string& path) {
    static const std::string unreserved = "-._~/";
    std::string text;
    for (const char character : path) {
        const auto c = static_cast<unsigned char>(character);
        if (isalnum(c) != 0 || unreserved.find(character) != std::string::npos) {
            text += character;
        } else {
            text += '%';
            text += "0123456789ABCDEF"[c >> 4];
            text += "0123456789ABCDEF"[c & 15];
        }
    }
    return text;
}

}  // namespace

void ServersTest::Serve(const FolderImage& tree) {
    Write(_there, tree);
    const auto before = fs::file_time_type::clock::now() - std::chrono::hours(1);
    for (const auto& [path, content] : tree) {
        fs::last_write_time(_there / path, before);
    }
    _server = StartDavServer(GetParam(), _there.Path());
}

std::string ServersTest::Url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(_server->Port()) + "/" + Escaped(path);
}

ServersTest::Run ServersTest::Ovsync(const Words& arguments) const {
    const service::test::CapturedText output;
    const service::test::CapturedText errors;
    Words words{"--chdir", here.Path(), OVSYNC_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    words.insert(words.end(), {"--silence-limit", "5"});
    service::test::ChildProcess process("/usr/bin/env", words, {}, output.Descriptor(), errors.Descriptor());
    Run run;
    run.exitCode = process.Wait();
    run.output = output.Text();
    run.errors = errors.Text();
    return run;
}

void ServersTest::Expect(const std::string& check, const std::string& problem) {
    if (!problem.empty()) {
        if (!HasFailure()) {
            RecordProperty("failed", check);
        }
        ADD_FAILURE() << check << ": " << problem;
    }
}

std::string ServersTest::ExpectRun(const std::string& check, const Words& arguments, int exitCode) {
    const Run run = Ovsync(arguments);
    if (run.exitCode != exitCode) {
        std::string command = "ovsync";
        for (const std::string& argument : arguments) {
            command += " " + argument;
        }
        Expect(check, command + " exits with " + std::to_string(run.exitCode) + ", not " + std::to_string(exitCode) +
                          "\n" + run.output + run.errors);
    }
    return run.output;
}

void ServersTest::ExpectNothingToDo(const std::string& check, const Words& arguments) {
    const std::string output = ExpectRun(check, arguments);
    Expect(check, output.rfind("Nothing to do", 0) == 0 ? "" : output);
}

void ServersTest::ExpectEqual(const std::string& check, const std::string& expected, const std::string& actual) {
    Expect(check, expected == actual ? "" : "there is\n" + actual + "\nin place of\n" + expected);
}

void ServersTest::ExpectEqual(const std::string& check, const FolderImage& expected, const FolderImage& actual) {
    const std::string differences = Differences(expected, actual);
    Expect(check, differences.empty() ? "" : "here is what is wanted, there what is:\n" + differences);
}

void ServersTest::ExpectThere(const std::string& check, const FolderImage& expected) {
    ExpectEqual(check, expected, syncproof::ReadFolder(_there.Path()));
}

void ServersTest::ChangeThere(const std::string& method, const std::string& path, const std::string& content) {
    service::test::HttpClient client(_server->Port());
    const std::string target = "/" + Escaped(path);
    const auto answer = client.Send(method, target, {}, content);
    ASSERT_TRUE(answer.status >= 200 && answer.status < 300) << method << " " << path << ": " << answer.status;
    // For a second lighttpd announces the size that a file had before, and breaks off.
    const auto isServed = [&client, &target, &content] {
        const auto served = client.Send("GET", target);
        return served.error.empty() && served.body == content;
    };
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (method == "PUT" && !isServed()) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline) << path << " is not served as it was sent";
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

Words ServersTest::Asked() const {
    const std::string mark = "asked: ";
    Words asked;
    std::istringstream log(_server->Log());
    for (std::string line; std::getline(log, line);) {
        if (const auto at = line.find(mark); at != std::string::npos) {
            asked.push_back(line.substr(at + mark.size()));
        }
    }
    return asked;
}

void ServersTest::WriteHere(const FolderImage& tree) const {
    Write(here, tree);
}

INSTANTIATE_TEST_SUITE_P(Each, ServersTest,
                         testing::Values(ServerKind::Apache, ServerKind::ApacheByDefault, ServerKind::Lighttpd,
                                         ServerKind::Nginx, ServerKind::Rclone, ServerKind::SabreDav,
                                         ServerKind::SabreTags, ServerKind::StandIn),
                         testing::PrintToStringParamName());

}  // namespace servers
