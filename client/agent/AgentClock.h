#pragma once

#include <chrono>

namespace ovsync {
namespace agent {

/// How long the system has run, its sleep included. Nobody sets this clock.
std::chrono::milliseconds Now();

/// For an alarm of this clock: makes the descriptor, throws SyncException; and sets it.
int NewAlarm();
void SetAlarm(int descriptor, std::chrono::milliseconds time);

}  // namespace agent
}  // namespace ovsync
