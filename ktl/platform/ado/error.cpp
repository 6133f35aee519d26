#include "ktl/platform/ado/error.h"

#include "ktl/platform/encoding.h"

namespace ktl::ado {

Error::Error(const CString &description, int number)
    : CException(ToUtf8(description)), m_description(description), m_number(number) {}

}  // namespace ktl::ado
