// Uses something of every installed library.
#include <unistd.h>

#include <QMetaObject>
#include <iostream>

#include "dvsync/ResourceMapping.h"
#include "host/configurationfactory/ConfigurationFactory.h"
#include "host/core/SyncException.h"

int main() {
    sync::http::DAVPropfindProperties properties;
    properties.filename = QString::fromLatin1("plan.dwg");
    const sync::http::DAVPropfindResponse response(QString::fromLatin1("/Projects/plan.dwg"), properties);
    const sync::config::FileConfiguration file =
        sync::dv::dvsync::BuildFileConfigFromFindResponse(sync::config::FolderConfiguration(), response);
    std::cout << file.name.toStdString() << '\n';

    const bool isInterface = QString::fromLatin1(sync::interf::IServerConfigManager::staticMetaObject.className()) ==
                             QString::fromLatin1("sync::interf::IServerConfigManager");
    try {
        sync::factory::ConfigurationFactory().CreateServerConfigManager();
    } catch (const sync::core::SyncException&) {
        return isInterface ? 0 : 1;
    }
    return 1;
}
