#include <log4cplus/logger.h>

#include <QXmlStreamReader>
#include <memory>

#include "dvsync/ExternalSyncConfigManager.h"
#include "tests/fuzz/Fuzzing.h"

using fuzz::Require;
using sync::dv::dvsync::ExternalSyncConfig;
using sync::dv::dvsync::ExternalSyncConfigManager;

namespace sync {
namespace dv {
namespace dvsync {

class ExternalSyncConfigManagerAccess {
public:
    static ExternalSyncConfig Parse(ExternalSyncConfigManager& manager, const QString& text) {
        manager.config.Clear();
        manager.responseText = text;
        manager._ParseConfigFromResponse();
        return manager.config;
    }
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync

namespace {

std::unique_ptr<ExternalSyncConfigManager> MakeManager() {
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL);
    return std::make_unique<ExternalSyncConfigManager>(nullptr, nullptr);
}

ExternalSyncConfig Parse(const QString& text) {
    static const std::unique_ptr<ExternalSyncConfigManager> manager = MakeManager();
    return sync::dv::dvsync::ExternalSyncConfigManagerAccess::Parse(*manager, text);
}

bool AreEqual(const ExternalSyncConfig& a, const ExternalSyncConfig& b) {
    return a.syncFrequency == b.syncFrequency && a.mostCurrentVersion == b.mostCurrentVersion &&
           a.installerUrl == b.installerUrl;
}

/// Whether `text` is an element without a document type before it.
bool IsElement(const QString& text) {
    QXmlStreamReader reader(text);
    bool hasDoctype = false;
    while (!reader.atEnd()) {
        hasDoctype = reader.readNext() == QXmlStreamReader::DTD || hasDoctype;
    }
    return !reader.hasError() && !hasDoctype;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString text = QString::fromLatin1(fuzz::BytesOf(data, size).constData());
    const ExternalSyncConfig config = Parse(text);
    if (text.isEmpty()) {
        Require(AreEqual(config, ExternalSyncConfig()), "no document changes nothing");
        return 0;
    }
    Require(config.syncFrequency >= 15, "a frequency is not below the smallest");
    Require(config.mostCurrentVersion.size() <= text.size() && config.installerUrl.size() <= text.size(),
            "nothing comes out that was not in the document");
    Require(config.mostCurrentVersion.isEmpty() || text.contains(QLatin1String("Version64")), "a version has its name");
    Require(config.installerUrl.isEmpty() || text.contains(QLatin1String("Url64")), "an installer has its name");
    if (!text.startsWith(QLatin1Char('<')) || text.startsWith(QLatin1String("<?xml"))) {
        return 0;
    }
    Require(IsElement(text) || (config.mostCurrentVersion.isEmpty() && config.installerUrl.isEmpty() &&
                                config.syncFrequency == ExternalSyncConfig::DefaultSyncFrequency),
            "a document that is broken or declares a type says nothing");
    for (const char* beginning : {"\xEF\xBB\xBF", " \r\n", "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"}) {
        Require(AreEqual(config, Parse(QString::fromLatin1(beginning) + text)),
                "what stands before a document changes nothing");
    }
    return 0;
}
