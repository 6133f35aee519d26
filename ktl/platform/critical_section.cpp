#include "ktl/platform/critical_section.h"

#include <chrono>

BOOL CCriticalSection::Lock(DWORD) {
    m_mutex.lock();
    return TRUE;
}

BOOL CCriticalSection::Unlock() {
    m_mutex.unlock();
    return TRUE;
}

CEvent::CEvent(BOOL initiallySet, BOOL manualReset)
    : m_isSet(initiallySet != FALSE), m_isManual(manualReset != FALSE) {}

BOOL CEvent::SetEvent() {
    const std::lock_guard guard(m_mutex);
    m_isSet = true;
    m_changed.notify_all();
    return TRUE;
}

BOOL CEvent::ResetEvent() {
    const std::lock_guard guard(m_mutex);
    m_isSet = false;
    return TRUE;
}

BOOL CEvent::PulseEvent() {
    const std::lock_guard guard(m_mutex);
    m_isSet = false;
    const unsigned free = m_waiting - m_released;
    m_released += m_isManual || free == 0 ? free : 1;
    m_changed.notify_all();
    return TRUE;
}

BOOL CEvent::Lock(DWORD timeout) {
    std::unique_lock guard(m_mutex);
    ++m_waiting;
    const auto mayPass = [this] { return m_isSet || m_released > 0; };
    bool passes = true;
    if (timeout == INFINITE) {
        m_changed.wait(guard, mayPass);
    } else {
        passes = m_changed.wait_for(guard, std::chrono::milliseconds(timeout), mayPass);
    }
    --m_waiting;
    if (!passes) return FALSE;
    if (m_released > 0) {
        --m_released;
    } else if (!m_isManual) {
        m_isSet = false;
    }
    return TRUE;
}

CSingleLock::CSingleLock(CSyncObject *object, BOOL initialLock) : m_object(object) {
    if (initialLock) Lock();
}

BOOL CSingleLock::Lock(DWORD timeout) {
    m_isLocked = m_object->Lock(timeout);
    return m_isLocked;
}

BOOL CSingleLock::Unlock() {
    if (!m_isLocked) return FALSE;
    m_isLocked = FALSE;
    return m_object->Unlock();
}
