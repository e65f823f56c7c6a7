#pragma once

#include <QObject>
#include <QTimerEvent>
#include <functional>
#include <utility>

namespace tests {

/// Calls an action once, from the event loop that this thread runs next. Timers of Qt 4.8 call slots alone.
class Soon : public QObject {
public:
    explicit Soon(std::function<void()> action) : _action(std::move(action)) { startTimer(0); }

protected:
    void timerEvent(QTimerEvent* event) override {
        killTimer(event->timerId());
        _action();
    }

private:
    const std::function<void()> _action;
};

}  // namespace tests
