#pragma once

#include <exception>
#include <utility>

#include "ktl/platform/string.h"

namespace ktl {

/// The log's code of a store's faults.
constexpr int kStoreFaultCode = 2;
/// Bytes of a statement that is sent without asking for rows.
constexpr int kLongestStatement = 8192;

/// The fault's own description, in GBK.
CString FaultText(const std::exception &fault);
/// Logs a fault's description and, on a line of its own, what was sent.
void LogStoreFault(const std::exception &fault, const CString &sent);

/// What `action` answers; a fault is logged with what was sent, and `fallback` is the answer.
template <class Result, class Action>
Result GuardStore(const CString &sent, Result fallback, Action action) {
    try {
        return action();
    } catch (const std::exception &fault) {
        LogStoreFault(fault, sent);
        return fallback;
    }
}

}  // namespace ktl
