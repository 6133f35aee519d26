#include "ktl/platform/progress_ctrl.h"

#include <algorithm>

void CProgressCtrl::SetRange32(int lower, int upper) {
    m_lower = std::min(lower, upper);
    m_upper = std::max(lower, upper);
    m_position = std::clamp(m_position, m_lower, m_upper);
    Invalidate(FALSE);
}

void CProgressCtrl::GetRange(int &lower, int &upper) const {
    lower = m_lower;
    upper = m_upper;
}

int CProgressCtrl::SetPos(int position) {
    const int old = m_position;
    m_position = std::clamp(position, m_lower, m_upper);
    Invalidate(FALSE);
    return old;
}
