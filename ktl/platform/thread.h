#pragma once

#include <memory>

#include "ktl/platform/critical_section.h"
#include "ktl/platform/export.h"
#include "ktl/platform/object.h"
#include "ktl/platform/types.h"
#include "ktl/platform/window.h"

constexpr DWORD CREATE_SUSPENDED = 4;
/// The exit code of a thread that has not ended.
constexpr DWORD STILL_ACTIVE = 259;

/// A thread as an object. With m_bAutoDelete (the default) the object must come from `new` and dies with its thread;
/// otherwise the owner waits before deleting it.
class KTL_API CWinThread : public CObject {
  public:
    CWinThread();
    /// A thread that was created suspended never begins; another one is waited for. The owner waits earlier, with
    /// `Wait`: here the derived part, which the thread uses, is gone.
    ~CWinThread() override;

    /// Starts the thread; with CREATE_SUSPENDED it runs only after `ResumeThread`. FALSE when there is one already or
    /// the system gives none.
    BOOL CreateThread(DWORD flags = 0);
    /// The suspend count before: 1 for a thread created suspended, 0 for a running one, 0xFFFFFFFF without a thread.
    DWORD ResumeThread();
    /// FALSE when the time in milliseconds ran out; TRUE at once without a thread. Not for a thread with m_bAutoDelete.
    BOOL Wait(DWORD timeout = INFINITE);
    /// STILL_ACTIVE until the thread has ended; 0 without a thread.
    DWORD GetExitCode() const;

    /// FALSE ends the thread through `ExitInstance`. The base answers FALSE.
    virtual BOOL InitInstance() { return FALSE; }
    /// The thread's body; its answer is not looked at when InitInstance was FALSE.
    virtual int Run() { return ExitInstance(); }
    /// The base answers 0. Its answer is the exit code.
    virtual int ExitInstance() { return 0; }
    /// Nonzero when the message is dealt with. The base answers 0.
    virtual BOOL PreTranslateMessage(MSG *message);

    BOOL m_bAutoDelete = TRUE;

  private:
    struct State;
    void Main(std::shared_ptr<State> state);

    std::shared_ptr<State> m_state;
};
