#pragma once

#include <cpl_error.h>

#include <string>
#include <vector>

namespace ktl::host {

/// The text, with question marks for all but ASCII where it is no UTF-8: drivers hand on what stands in the file.
std::string SoundUtf8(const std::string &text);

/// What GDAL would tell on the terminal, caught while a `Listening` lives. Only what it tells counts as a failure: its
/// drivers try things quietly, and the last error that GDAL itself remembers may be one of those.
class GdalMessages {
  public:
    /// The latest one that lives hears what is told.
    class Listening {
      public:
        explicit Listening(GdalMessages &messages) { CPLPushErrorHandlerEx(OnMessage, &messages); }
        Listening(const Listening &) = delete;
        Listening &operator=(const Listening &) = delete;
        ~Listening() { CPLPopErrorHandler(); }
    };

    GdalMessages() = default;
    GdalMessages(const GdalMessages &) = delete;
    GdalMessages &operator=(const GdalMessages &) = delete;

    void Forget();
    bool Failed() const { return !m_failure.empty(); }
    /// The first failure since the last `Forget`, in one line.
    const std::string &Failure() const { return m_failure; }
    /// The first few warnings since then, each once, a line each.
    const std::vector<std::string> &Warnings() const { return m_warnings; }

  private:
    static void CPL_STDCALL OnMessage(CPLErr kind, CPLErrorNum number, const char *text);

    std::string m_failure;
    std::vector<std::string> m_warnings;
};

}  // namespace ktl::host
