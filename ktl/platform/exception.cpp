#include "ktl/platform/exception.h"

#include <algorithm>
#include <cstring>

#include "ktl/platform/encoding.h"

BOOL CException::GetErrorMessage(char *buffer, UINT size) const {
    if (!buffer || size == 0) return FALSE;
    const CString text = ktl::FromUtf8(m_text);
    const std::size_t length = std::min<std::size_t>(text.View().size(), size - 1);
    std::memcpy(buffer, text.GetString(), length);
    buffer[length] = '\0';
    return text.IsEmpty() ? FALSE : TRUE;
}
