#pragma once
// Threads and their meeting points for the picker's worker: a critical section, a manual-reset
// event that may be shared by name across the process, and a worker thread.

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace ny {

// A lock that one thread holds at a time.
class CriticalSection {
public:
    void Enter() { m_mutex.lock(); }
    void Leave() { m_mutex.unlock(); }

private:
    std::recursive_mutex m_mutex;  // the thread that holds it may enter again, as it may call back
};

// Holds a critical section for the life of a scope.
class CriticalSectionLock {
public:
    explicit CriticalSectionLock(CriticalSection& section) : m_section(section) { m_section.Enter(); }
    ~CriticalSectionLock() { m_section.Leave(); }
    CriticalSectionLock(const CriticalSectionLock&) = delete;
    CriticalSectionLock& operator=(const CriticalSectionLock&) = delete;

private:
    CriticalSection& m_section;
};

// An event that stays signalled until it is reset; every waiter passes while it is signalled.
class ManualResetEvent {
public:
    explicit ManualResetEvent(bool signalled = false) : m_bSignalled(signalled) {}

    void Set();
    void Reset();
    bool IsSet() const;
    // Waits until the event is signalled or the time is up; true if it is signalled.
    bool Wait(std::chrono::milliseconds timeout) const;

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    bool m_bSignalled;
};

// The event of a name: the first call creates it in the given state, later calls with the same
// name get the same event and the state argument is ignored. It lives while anyone holds it.
std::shared_ptr<ManualResetEvent> OpenNamedEvent(const std::string& name, bool signalled);

}  // namespace ny
