#pragma once
// Timers of a window: after Start, the callback runs on the window's thread every `milliseconds`
// until Stop. Starting an id that runs restarts it. The window owns its timers.

#include <functional>

namespace ny {

class Timer {
public:
    virtual ~Timer() = default;

    virtual void Start(int id, int milliseconds, std::function<void()> callback) = 0;
    virtual void Stop(int id) = 0;
};

}  // namespace ny
