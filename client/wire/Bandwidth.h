#pragma once

#include <QtGlobal>
#include <algorithm>
#include <array>
#include <chrono>
#include <mutex>

namespace ovsync {
namespace wire {

/// What all transfers that share this object may move together, each way. Thread-safe.
class Bandwidth {
public:
    using Clock = std::chrono::steady_clock;

    enum class Way { Receive, Send };

    /// `rate` is in bytes a second, above 0.
    explicit Bandwidth(qint64 rate) : _rate(rate) {}

    /// As much as is to be moved at a time, so that one transfer does not hold up the others for long.
    qint64 PieceSize() const { return std::max<qint64>(_rate / PiecesInASecond, 1); }

    /// From when on something may be moved.
    Clock::time_point FreeAt(Way way) const {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _freeAt.at(static_cast<size_t>(way));
    }

    /// `size` bytes are moved at this moment.
    void Take(Way way, qint64 size) {
        const auto time = std::chrono::duration<double>(static_cast<double>(size) / static_cast<double>(_rate));
        const std::lock_guard<std::mutex> lock(_mutex);
        Clock::time_point& freeAt = _freeAt.at(static_cast<size_t>(way));
        freeAt = std::max(freeAt, Clock::now() - LongestDelay) + std::chrono::duration_cast<Clock::duration>(time);
    }

private:
    static constexpr qint64 PiecesInASecond = 8;
    /// Nobody is woken up just in time. What is not moved for so long may be moved afterwards.
    static constexpr std::chrono::milliseconds LongestDelay{100};

    const qint64 _rate;
    mutable std::mutex _mutex;
    std::array<Clock::time_point, 2> _freeAt;
};

}  // namespace wire
}  // namespace ovsync
