#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/window.h"

/// A bar that shows how far a piece of work is: a range, 0 to 100 at first, and a position in it. Every change of the
/// position invalidates the window, so that its peer can show it at once.
class KTL_API CProgressCtrl : public CWnd {
  public:
    ~CProgressCtrl() override = default;

    /// Moves the position into the new range.
    void SetRange(short lower, short upper) { SetRange32(lower, upper); }
    void SetRange32(int lower, int upper);
    void GetRange(int &lower, int &upper) const;
    /// Held in the range; the old position.
    int SetPos(int position);
    int GetPos() const { return m_position; }

  private:
    int m_lower = 0;
    int m_upper = 100;
    int m_position = 0;
};
