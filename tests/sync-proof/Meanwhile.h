#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <thread>

namespace syncproof {

/// Does something again and again beside what else happens, until it is destroyed.
class Meanwhile {
public:
    Meanwhile(std::chrono::milliseconds pause, const std::function<void()>& action)
        : _thread([this, pause, action] {
              while (!_isOver) {
                  try {
                      action();
                  } catch (const std::filesystem::filesystem_error&) {
                      // Somebody else was quicker.
                  }
                  std::this_thread::sleep_for(pause);
              }
          }) {}
    ~Meanwhile() {
        _isOver = true;
        _thread.join();
    }
    Meanwhile(const Meanwhile&) = delete;
    Meanwhile& operator=(const Meanwhile&) = delete;

private:
    std::atomic<bool> _isOver{false};
    std::thread _thread;
};

}  // namespace syncproof
