#include <dlfcn.h>
#include <gtest/gtest.h>
#include <link.h>
#include <log4cplus/logger.h>

#include <QString>
#include <set>
#include <string>

namespace {

int TakeName(dl_phdr_info* module, std::size_t /*size*/, void* data) {
    const std::string file = module->dlpi_name;
    static_cast<std::set<std::string>*>(data)->insert(file.substr(file.rfind('/') + 1));
    return 0;
}

/// The libraries of the project that are loaded into this process.
std::set<std::string> OwnLibraries() {
    std::set<std::string> all;
    dl_iterate_phdr(TakeName, &all);
    std::set<std::string> own;
    for (const std::string& name : all) {
        if (name.find("libdvsync.") == 0 || name.find("libOvSync") == 0) {
            own.insert(name);
        }
    }
    return own;
}

TEST(UnloadingTest, TheLibraryGoesWhenItsHostLetsItGoAndComesBack) {
    // The threads of log4cplus outlive the library. It stays, because this process uses it, too.
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL);
    using Search = bool (*)(QString processName);
    const std::set<std::string> before = OwnLibraries();
    EXPECT_TRUE(before.empty()) << *before.begin();
    for (int i = 0; i < 20; ++i) {
        void* const library = dlopen(DVSYNC_FILE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        EXPECT_EQ(OwnLibraries().size(), 6U);
        void* const function =
            dlsym(library, "_ZN4sync2dv6dvsync44CachedIsDrovaneSynchronizationServiceRunningE7QString");
        ASSERT_NE(function, nullptr) << dlerror();
        reinterpret_cast<Search>(function)(QString());
        ASSERT_EQ(dlclose(library), 0) << dlerror();
        const std::set<std::string> left = OwnLibraries();
        ASSERT_TRUE(left.empty()) << *left.begin() << " stays";
    }
}

}  // namespace
