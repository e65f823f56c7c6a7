#pragma once

#include <QByteArray>

#include "client/agent/FolderStatus.h"

namespace ovsync {
namespace agent {

/// One line of JSON; docs/agent.md describes it.
QByteArray StatusLine(const AgentStatus& status);

}  // namespace agent
}  // namespace ovsync
