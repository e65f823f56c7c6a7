#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "tests/endtoend/Service.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/ScriptedServer.h"
#include "tests/fakes/SelfSignedCertificate.h"
#include "tests/fakes/Text.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using tests::ErrorsOf;
using tests::ProgramResult;
using tests::RunOvsync;
using tests::ScriptedServer;
using tests::Service;
using tests::Text;

const char* const Document =
    "\xEF\xBB\xBF\n<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<SyncConfig>\n"
    "  <SyncVersions><Version32>KQ49_1_WIN</Version32><Version64>KQ52_1040_WIN</Version64></SyncVersions>\n"
    "  <SyncUrls><Url64>https://downloads.example.com/a.msi?x=1&amp;y=2</Url64></SyncUrls>\n"
    "  <SyncFrequency>60</SyncFrequency>\n</SyncConfig>\n";

void Publish(Service& service, const QByteArray& document) {
    service.AddFile(Text(".ovsync-service/sync-config.xml"), document);
}

ProgramResult Ask(const char* command, const Service& service, const QStringList& options = QStringList()) {
    return RunOvsync(QStringList({Text(command), service.Url()}) + options);
}

TEST(SettingsCommandTest, ShowsTheTuningNextToWhatIsPublished) {
    Service service;
    Publish(service, Document);
    const ProgramResult result = Ask("settings", service);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, QByteArray());
    const std::string output = result.output.toStdString();
    EXPECT_THAT(output, testing::ContainsRegex("^ +library +service\nSync frequency +180 +60\n"));
    EXPECT_THAT(output, testing::ContainsRegex("\nNewest version +- +KQ52_1040_WIN\n"));
    EXPECT_THAT(output, testing::ContainsRegex("\nInstaller +- +https://downloads.example.com/a.msi.x=1&y=2\n"));
    EXPECT_THAT(output, testing::ContainsRegex("\nIncremental sync +yes +-\n"));
    EXPECT_THAT(output, testing::ContainsRegex("\nLimits of finished uploads +none +-\n"));
}

TEST(SettingsCommandTest, JsonHasEveryValueOfBothSides) {
    Service service;
    Publish(service, Document);
    const ProgramResult result = Ask("settings", service, {Text("--json")});
    EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
    EXPECT_EQ(nlohmann::json::parse(result.output.constData()), nlohmann::json::parse(R"({
        "library": {
            "syncFrequency": 180, "incrementalSync": true, "incrementalSyncOfPath": true,
            "minIncrementalFileSize": 102400, "maxIncrementalChange": 0.5, "maxIncrementalDelta": 0.7,
            "uploadFinishedLimits": null, "referenceChangeLimits": null, "referenceQueryLimits": null,
            "maxParallelTransfers": 4, "maxTransferRetries": 0, "delayAfterServerError": 0, "maxFailedPasses": 0
        },
        "service": {
            "syncFrequency": 60, "mostCurrentVersion": "KQ52_1040_WIN",
            "installerUrl": "https://downloads.example.com/a.msi?x=1&y=2"
        }
    })"));
}

TEST(SettingsCommandTest, AFrequencyTooSmallForTheLibraryIsItsDefault) {
    Service service;
    const auto frequency = [&service](const char* text) {
        Publish(service, QByteArray("<SyncConfig><SyncFrequency>") + text + "</SyncFrequency></SyncConfig>");
        const ProgramResult result = Ask("settings", service, {Text("--json")});
        EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
        return nlohmann::json::parse(result.output.constData())["service"]["syncFrequency"].get<int>();
    };
    EXPECT_EQ(frequency("15"), 15);
    EXPECT_EQ(frequency("14"), 180);
    EXPECT_EQ(frequency("soon"), 180);
}

TEST(SettingsCommandTest, WhatIsNotPublishedIsNone) {
    Service service;
    Publish(service, "<SyncConfig/>");
    const ProgramResult result = Ask("settings", service);
    EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
    EXPECT_THAT(result.output.toStdString(), testing::ContainsRegex("\nNewest version +- +none\nInstaller +- +none\n"));
}

TEST(VersionCommandTest, ShowsTheVersionsAndThatTheyCannotBeCompared) {
    Service service;
    Publish(service, Document);
    const ProgramResult result = Ask("version", service);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output,
              QByteArray("Local version     5.1.1.1001\n"
                         "Newest version    KQ52_1040_WIN\n"
                         "Installer         https://downloads.example.com/a.msi?x=1&y=2\n"
                         "New version       no (not compared: only versions of the form KQ51_1001_WIN are)\n"));
    EXPECT_EQ(result.errors, QByteArray());
    // The library's own words.
    EXPECT_EQ(Ask("version", service, {Text("-v")}).errors,
              QByteArray("ovsync: Comparing two versions, \"versionA\" <KQ52_1040_WIN> and \"versionB\" <5.1.1.1001>.  "
                         "\"versionB\" <5.1.1.1001> has incorrect format.\n"));
}

TEST(VersionCommandTest, JsonSaysWhetherTheVersionsWereCompared) {
    Service service;
    Publish(service, Document);
    const ProgramResult result = Ask("version", service, {Text("--json")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(nlohmann::json::parse(result.output.constData()), nlohmann::json::parse(R"({
        "local": "5.1.1.1001", "newest": "KQ52_1040_WIN", "isNew": false, "isCompared": false,
        "installer": "https://downloads.example.com/a.msi?x=1&y=2"
    })"));
}

TEST(VersionCommandTest, TheDocumentIsFetchedOnce) {
    Service service({Text("--fault"), Text("status=503,method=GET,request=2")});
    Publish(service, Document);
    EXPECT_EQ(Ask("version", service).exitCode, 0);
}

class ConfigCommandTest : public testing::TestWithParam<const char*> {
protected:
    static ProgramResult RunIt(const Service& service, const QStringList& options = QStringList()) {
        return Ask(GetParam(), service, options);
    }
};

INSTANTIATE_TEST_SUITE_P(Commands, ConfigCommandTest, testing::Values("settings", "version"),
                         [](const auto& command) { return std::string(command.param); });

TEST_P(ConfigCommandTest, ThatAServicePublishesNothingIsSaidAndNoError) {
    const Service service;
    const ProgramResult result = RunIt(service);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(ErrorsOf(result), "");
    EXPECT_THAT(result.output.toStdString(), HasSubstr("his server publishes no "));
}

TEST(SettingsCommandTest, WhatCountsWhereNothingIsPublishedIsShown) {
    const Service service;
    EXPECT_THAT(Ask("settings", service).output.toStdString(), testing::ContainsRegex("\nSync frequency +180 +-\n"));
    const ProgramResult json = Ask("settings", service, {Text("--json")});
    EXPECT_EQ(json.exitCode, 0) << ErrorsOf(json);
    EXPECT_EQ(nlohmann::json::parse(json.output.constData())["service"], nullptr);
    EXPECT_EQ(nlohmann::json::parse(json.output.constData())["library"]["syncFrequency"], 180);
}

TEST(VersionCommandTest, TheLocalOneIsShownWhereNothingIsPublished) {
    const Service service;
    EXPECT_EQ(Ask("version", service).output,
              QByteArray("Local version     5.1.1.1001\n"
                         "Newest version    none\n"
                         "Installer         none\n"
                         "New version       unknown (this server publishes no version)\n"));
    const ProgramResult json = Ask("version", service, {Text("--json")});
    EXPECT_EQ(nlohmann::json::parse(json.output.constData()), nlohmann::json::parse(R"({
        "local": "5.1.1.1001", "newest": "", "installer": "", "isNew": false, "isCompared": false
    })"));
}

TEST_P(ConfigCommandTest, TheAccountsPasswordIsGivenWhereItIsAskedFor) {
    Service service({Text("--user"), Text("ann")}, Text("secret"));
    Publish(service, Document);
    const ProgramResult stranger = RunIt(service);
    EXPECT_EQ(stranger.exitCode, 1);
    EXPECT_THAT(ErrorsOf(stranger), HasSubstr("wants a user and a password (-u USER)"));
    const QStringList asAnn({Text(GetParam()), service.Url(), Text("-u"), Text("ann")});
    EXPECT_EQ(RunOvsync(asAnn, {Text("OVSYNC_PASSWORD=wrong")}).exitCode, 1);
    const ProgramResult ann = RunOvsync(asAnn, {Text("OVSYNC_PASSWORD=secret")});
    EXPECT_EQ(ann.exitCode, 0) << ErrorsOf(ann);
    EXPECT_THAT(ann.output.toStdString(), HasSubstr("KQ52_1040_WIN"));
}

TEST_P(ConfigCommandTest, TheUserAndThePasswordComeFromNetrc) {
    Service service({Text("--user"), Text("ann")}, Text("secret word"));
    Publish(service, Document);
    const QTemporaryDir folder;
    QFile netrc(folder.filePath(Text("netrc")));
    ASSERT_TRUE(netrc.open(QIODevice::WriteOnly));
    netrc.write("machine 127.0.0.1 # of the tests\n password \"secret word\" login ann\n");
    netrc.close();
    const QStringList environment(Text("NETRC=") + netrc.fileName());
    for (const char* command : {GetParam(), "ls"}) {
        const ProgramResult result = RunOvsync({Text(command), service.Url()}, environment);
        EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
    }
}

TEST_P(ConfigCommandTest, AServiceThatIsNotThereCannotBeReached) {
    QString url;
    {
        const Service service;
        url = service.Url();
    }
    const ProgramResult result = RunOvsync({Text(GetParam()), Text("-v"), url});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.output, QByteArray());
    EXPECT_THAT(ErrorsOf(result), AllOf(HasSubstr("/.ovs/sync-config.xml failed: "), HasSubstr("no answer")));
}

TEST_P(ConfigCommandTest, WhatIsNoDocumentIsNamedWithItsPlace) {
    Service service;
    const auto expect = [&service](const QByteArray& document, const char* message) {
        Publish(service, document);
        const ProgramResult result = RunIt(service, {Text("-v")});
        EXPECT_EQ(result.exitCode, 3) << document.constData();
        EXPECT_EQ(result.output, QByteArray());
        EXPECT_THAT(ErrorsOf(result), AllOf(HasSubstr("/.ovs/sync-config.xml failed: "), HasSubstr(message)));
    };
    expect("", "the document is empty");
    expect("<SyncConfig>\n<SyncFrequency>60</SyncFrequency>", "line 2, column");
    expect("\x1b[2J", "not well-formed");
    expect("<html/>", "its root is <html>");
    expect("<!DOCTYPE a [<!ENTITY b \"c\">]><SyncConfig/>", "declares a document type");
}

struct ConfigFault {
    const char* name;
    int exitCode;
    const char* message;
};

void PrintTo(const ConfigFault& fault, std::ostream* stream) {
    *stream << fault.name;
}

class ConfigFaultTest : public testing::TestWithParam<ConfigFault> {};

TEST_P(ConfigFaultTest, IsToldAndNeverTakenForAConfiguration) {
    Service service({Text("--fault"), Text(GetParam().name) + Text(",method=GET")});
    Publish(service, Document);
    const ProgramResult result = Ask("settings", service, {Text("-v"), Text("--silence-limit"), Text("0.5")});
    EXPECT_EQ(result.exitCode, GetParam().exitCode);
    EXPECT_EQ(result.output, QByteArray());
    EXPECT_THAT(ErrorsOf(result), AllOf(HasSubstr("/.ovs/sync-config.xml"), HasSubstr(GetParam().message)));
}

INSTANTIATE_TEST_SUITE_P(
    Faults, ConfigFaultTest,
    testing::Values(ConfigFault{"cut=0", 3, "status 200"}, ConfigFault{"cut=100", 3, "status 200"},
                    ConfigFault{"hang", 3, "nothing was heard"}, ConfigFault{"reset", 3, "no answer"},
                    ConfigFault{"reset=100", 3, ""}, ConfigFault{"redirect=302", 3, "status 302"},
                    ConfigFault{"error-page", 3, "its root is <html>"}, ConfigFault{"status=204", 3, "status 204"},
                    ConfigFault{"status=403", 1, "403"}, ConfigFault{"status=500", 1, "500"},
                    ConfigFault{"error-in-body=100", 3, "line"}, ConfigFault{"content-length=+10", 3, "status 200"},
                    ConfigFault{"content-length=-10", 3, "status 200"}));

// The library takes any certificate for this one document; a password is not to go that way.
TEST(SettingsCommandTest, AServerWithoutATrustedCertificateIsAskedButToldNoPassword) {
    const tests::SelfSignedCertificate certificate;
    const QByteArray refusal =
        "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"a\"\r\nContent-Length: 0\r\n\r\n";
    const QByteArray answer =
        "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(QByteArray(Document).size()) + "\r\n\r\n" + Document;
    ScriptedServer server({ScriptedServer::Answer(answer), ScriptedServer::Answer(refusal),
                           ScriptedServer::Answer(refusal), ScriptedServer::Answer(answer)},
                          certificate.Files());
    const QStringList arguments({Text("settings"), server.Url(Text("/")).toString(), Text("-u"), Text("ann")});
    const QStringList password(Text("OVSYNC_PASSWORD=secret"));

    EXPECT_EQ(RunOvsync(arguments, password).exitCode, 0);

    const ProgramResult refused = RunOvsync(QStringList(arguments) << Text("-v"), password);
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(ErrorsOf(refused), AllOf(HasSubstr("status: 401"), HasSubstr("--ca-file")));

    const QStringList trust({Text("--ca-file"), certificate.Files().certificateFile});
    EXPECT_EQ(RunOvsync(arguments + trust, password).exitCode, 0);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(server.Requests().at(i).headers.contains("authorization")) << i;
    }
    EXPECT_TRUE(server.Requests().at(3).headers.contains("authorization"));
}

TEST(SettingsCommandTest, TheContentTypeDoesNotMatter) {
    Service service({Text("--fault"), Text("content-type=text/plain")});
    Publish(service, Document);
    EXPECT_EQ(Ask("settings", service).exitCode, 0);
}

}  // namespace
