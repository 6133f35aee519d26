#pragma once

#include "ktl/platform/gdiplus/startup.h"

namespace ktl::test {

/// Drawing is started while it lives.
class DrawingSession {
  public:
    DrawingSession() {
        const Gdiplus::GdiplusStartupInput input;
        Gdiplus::GdiplusStartup(&m_token, &input, nullptr);
    }
    ~DrawingSession() { Gdiplus::GdiplusShutdown(m_token); }
    DrawingSession(const DrawingSession &) = delete;
    DrawingSession &operator=(const DrawingSession &) = delete;

  private:
    ULONG_PTR m_token = 0;
};

}  // namespace ktl::test
