#include "ktl/attributes/column_kind.h"

#include <algorithm>
#include <iterator>

namespace ktl {

bool IsNumberType(ENUM_DATA type) {
    return type == DATA_INT || type == DATA_BIGINT || type == DATA_NUMERIC || type == DATA_BOOL;
}

bool IsSystemColumn(const CString &name) {
    constexpr const char *kNames[] = {"ID", "ShapeID", "Update"};
    return std::any_of(std::begin(kNames), std::end(kNames),
                       [&](const char *system) { return name.CompareNoCase(system) == 0; });
}

}  // namespace ktl
