#pragma once

#include <cstdint>
#include <string>

namespace ktl::host {

/// What a host starts before it uses the library's drawing, and ends after it: the folder for the configuration file
/// and the error log, and drawing itself. One at a time.
class Runtime {
  public:
    /// `folder` is UTF-8. It is made when it is missing; a failure to make it shows only when something is to be
    /// written there. Throws `Error` when drawing can't start.
    explicit Runtime(const std::string &folder = DefaultFolder());
    Runtime(const Runtime &) = delete;
    Runtime &operator=(const Runtime &) = delete;
    ~Runtime();

    /// $KTL_HOME, or else ktl in the user's data folder ($XDG_DATA_HOME, ~/.local/share), or else in the temporary one.
    static std::string DefaultFolder();

  private:
    std::uintptr_t m_drawing = 0;
};

}  // namespace ktl::host
