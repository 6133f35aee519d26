#include "ktl/platform/ado/sql/aggregate.h"

#include "ktl/platform/ado/sql/arithmetic.h"

namespace ktl::ado::sql {

void Aggregate::Reset() {
    m_count = 0;
    m_result.SetNull();
    if (m_function == FunctionId::Count) m_result.SetInteger(0);
}

void Aggregate::Take(const Value &value) {
    if (value.IsNull()) return;
    ++m_count;
    switch (m_function) {
        case FunctionId::Count:
            return m_result.SetInteger(m_count);
        case FunctionId::Max:
            if (m_count == 1 || CompareValues(value, m_result) > 0) m_result = value;
            return;
        case FunctionId::Min:
            if (m_count == 1 || CompareValues(value, m_result) < 0) m_result = value;
            return;
        case FunctionId::Sum:
            if (m_count == 1) {
                m_result = value;
            } else {
                Calculate('+', Value(m_result), value, m_result);
            }
            return;
        default: {
            // The running mean, so that no second value is kept.
            const double mean = m_count == 1 ? 0 : m_result.ToDouble();
            return m_result.SetDouble(mean + (value.ToDouble() - mean) / static_cast<double>(m_count));
        }
    }
}

}  // namespace ktl::ado::sql
