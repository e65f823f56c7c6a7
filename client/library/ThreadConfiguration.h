#pragma once

#include <memory>

#include "host/interfaces/factory/IConfigurationFactory.h"

namespace ovsync {
namespace library {

/// What the process's configuration factory hands out on the thread that made this object, for as long as it lives: the
/// library asks that factory wherever it was given none, and each thread may have an account of its own. One at a time
/// on a thread, and gone from there.
///
/// \code
/// #include "host/configurationfactory/ConfigurationFactory.h"
///
/// const auto configuration = std::make_shared<sync::factory::ConfigurationFactory>();
/// const ovsync::library::ThreadConfiguration ofThisThread(configuration);
/// \endcode
class ThreadConfiguration {
public:
    explicit ThreadConfiguration(const std::shared_ptr<sync::interf::factory::IConfigurationFactory>& configuration);
    ~ThreadConfiguration();
    ThreadConfiguration(const ThreadConfiguration&) = delete;
    ThreadConfiguration& operator=(const ThreadConfiguration&) = delete;
};

}  // namespace library
}  // namespace ovsync
