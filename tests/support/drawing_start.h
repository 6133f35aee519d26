#pragma once

#include "ktl/platform/gdiplus/startup.h"

namespace ktl::test {

/// Drawing is started while it lives.
class DrawingStart {
  public:
    DrawingStart() {
        const Gdiplus::GdiplusStartupInput input;
        Gdiplus::GdiplusStartup(&m_token, &input, nullptr);
    }
    ~DrawingStart() { Gdiplus::GdiplusShutdown(m_token); }
    DrawingStart(const DrawingStart &) = delete;
    DrawingStart &operator=(const DrawingStart &) = delete;

  private:
    ULONG_PTR m_token = 0;
};

}  // namespace ktl::test
