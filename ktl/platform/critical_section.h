#pragma once

#include <condition_variable>
#include <mutex>

#include "ktl/platform/export.h"
#include "ktl/platform/types.h"

/// A wait without end.
constexpr DWORD INFINITE = 0xFFFFFFFF;

/// What a thread can lock or wait for.
class KTL_API CSyncObject {
  public:
    CSyncObject() = default;
    CSyncObject(const CSyncObject &) = delete;
    CSyncObject &operator=(const CSyncObject &) = delete;
    virtual ~CSyncObject() = default;

    /// FALSE when the time in milliseconds ran out.
    virtual BOOL Lock(DWORD timeout = INFINITE) = 0;
    virtual BOOL Unlock() = 0;
};

/// A lock that its thread may take again; it is free after as many `Unlock` as `Lock`.
class KTL_API CCriticalSection : public CSyncObject {
  public:
    /// Waits until the lock is free; the time is ignored.
    BOOL Lock(DWORD timeout = INFINITE) override;
    BOOL Unlock() override;

  private:
    std::recursive_mutex m_mutex;
};

/// A signal between threads. An automatic event lets one waiting thread pass and is then unset; a manual one stays set
/// until `ResetEvent`.
class KTL_API CEvent : public CSyncObject {
  public:
    explicit CEvent(BOOL initiallySet = FALSE, BOOL manualReset = FALSE);

    BOOL SetEvent();
    BOOL ResetEvent();
    /// Lets the threads pass that wait at this moment (one of them, if automatic) and leaves the event unset.
    BOOL PulseEvent();
    /// Waits for the event.
    BOOL Lock(DWORD timeout = INFINITE) override;
    BOOL Unlock() override { return TRUE; }

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isSet;
    const bool m_isManual;
    unsigned m_waiting = 0;
    /// Waiting threads that a pulse has let pass and that have not left yet.
    unsigned m_released = 0;
};

/// Holds a lock for a scope: starts unlocked unless told otherwise, and unlocks at its end what it has locked.
class KTL_API CSingleLock {
  public:
    explicit CSingleLock(CSyncObject *object, BOOL initialLock = FALSE);
    CSingleLock(const CSingleLock &) = delete;
    CSingleLock &operator=(const CSingleLock &) = delete;
    ~CSingleLock() { Unlock(); }

    BOOL Lock(DWORD timeout = INFINITE);
    /// FALSE when it was not locked.
    BOOL Unlock();
    BOOL IsLocked() const { return m_isLocked; }

  private:
    CSyncObject *m_object;
    BOOL m_isLocked = FALSE;
};
