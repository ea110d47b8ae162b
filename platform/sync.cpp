#include "platform/sync.h"

#include <map>

namespace ny {

void ManualResetEvent::Set() {
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_bSignalled = true;
    }
    m_changed.notify_all();
}

void ManualResetEvent::Reset() {
    std::lock_guard<std::mutex> guard(m_mutex);
    m_bSignalled = false;
}

bool ManualResetEvent::IsSet() const {
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_bSignalled;
}

bool ManualResetEvent::Wait(std::chrono::milliseconds timeout) const {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, timeout, [this] { return m_bSignalled; });
}

std::shared_ptr<ManualResetEvent> OpenNamedEvent(const std::string& name, bool signalled) {
    static std::mutex registryLock;
    static std::map<std::string, std::weak_ptr<ManualResetEvent>> registry;
    std::lock_guard<std::mutex> guard(registryLock);
    std::weak_ptr<ManualResetEvent>& slot = registry[name];
    std::shared_ptr<ManualResetEvent> event = slot.lock();
    if (!event) {
        event = std::make_shared<ManualResetEvent>(signalled);
        slot = event;
    }
    return event;
}

}  // namespace ny
