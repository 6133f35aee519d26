#pragma once

#include <exception>
#include <string>

#include "ktl/platform/export.h"
#include "ktl/platform/types.h"

/// Base of the platform's exceptions. They are thrown by value and caught by reference. `what()` is the text in UTF-8;
/// `GetErrorMessage` gives it in GBK.
class KTL_API CException : public std::exception {
  public:
    CException() = default;
    explicit CException(std::string text) : m_text(std::move(text)) {}

    const char *what() const noexcept override { return m_text.c_str(); }
    /// Copies at most size - 1 bytes of the text and a terminator; 0 when there is no text.
    virtual BOOL GetErrorMessage(char *buffer, UINT size) const;

  private:
    std::string m_text;
};

/// A bad index or argument.
class KTL_API CInvalidArgException : public CException {
  public:
    CInvalidArgException() : CException("An argument was not valid.") {}
};
