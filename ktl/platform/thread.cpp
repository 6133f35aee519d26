#include "ktl/platform/thread.h"

#include <atomic>
#include <system_error>
#include <thread>

// What the thread and its object share; it outlives the object that deletes itself.
struct CWinThread::State {
    CEvent resumed{FALSE, TRUE};
    CEvent ended{FALSE, TRUE};
    std::atomic<DWORD> suspendCount{0};
    std::atomic<DWORD> exitCode{STILL_ACTIVE};
    std::atomic<std::thread::id> thread;
    /// The object went before its suspended thread began: the thread must not touch it.
    std::atomic<bool> isAbandoned{false};
};

CWinThread::CWinThread() = default;

CWinThread::~CWinThread() {
    if (!m_state || m_state->thread.load() == std::this_thread::get_id()) return;
    m_state->isAbandoned = m_state->suspendCount != 0;
    ResumeThread();
    m_state->ended.Lock();
}

BOOL CWinThread::CreateThread(DWORD flags) {
    if (m_state) return FALSE;
    m_state = std::make_shared<State>();
    m_state->suspendCount = (flags & CREATE_SUSPENDED) != 0 ? 1 : 0;
    if (m_state->suspendCount == 0) m_state->resumed.SetEvent();
    try {
        std::thread([this, state = m_state] { Main(state); }).detach();
    } catch (const std::system_error &) {
        m_state.reset();
        return FALSE;
    }
    return TRUE;
}

// The object may be gone once it has deleted itself, or before a suspended thread began.
void CWinThread::Main(std::shared_ptr<State> state) {
    state->thread = std::this_thread::get_id();
    state->resumed.Lock();
    if (!state->isAbandoned) {
        const int code = InitInstance() ? Run() : ExitInstance();
        state->exitCode = static_cast<DWORD>(code);
        if (m_bAutoDelete) delete this;
    }
    state->ended.SetEvent();
}

DWORD CWinThread::ResumeThread() {
    if (!m_state) return 0xFFFFFFFF;
    const DWORD before = m_state->suspendCount.exchange(0);
    m_state->resumed.SetEvent();
    return before;
}

BOOL CWinThread::Wait(DWORD timeout) {
    const std::shared_ptr<State> state = m_state;
    return state ? state->ended.Lock(timeout) : TRUE;
}

DWORD CWinThread::GetExitCode() const {
    return m_state ? m_state->exitCode.load() : 0;
}

BOOL CWinThread::PreTranslateMessage(MSG *) {
    return FALSE;
}
