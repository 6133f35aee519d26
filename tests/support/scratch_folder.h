#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "ktl/platform/encoding.h"
#include "ktl/platform/string.h"

namespace ktl::test {

/// A new folder for one test, gone with its content at the end.
class ScratchFolder {
  public:
    ScratchFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ktl-test-XXXXXX").string();
        if (::mkdtemp(pattern.data())) m_path = pattern;
    }
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;
    ~ScratchFolder() {
        std::error_code ignored;
        if (!m_path.empty()) std::filesystem::remove_all(m_path, ignored);
    }

    /// The system's name of the folder, or of a file in it.
    const std::string &Path() const { return m_path; }
    std::string Path(std::string_view name) const { return m_path + "/" + std::string(name); }
    /// The same as the library takes it.
    CString Name(std::string_view name) const { return PlatformPath(Path(name)); }
    CString Name() const { return PlatformPath(m_path); }

    bool Has(std::string_view name) const { return std::filesystem::exists(Path(name)); }
    void Write(std::string_view name, std::string_view content) const {
        std::ofstream(Path(name), std::ios::binary) << content;
    }
    std::string Read(std::string_view name) const {
        std::ifstream file(Path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::string m_path;
};

}  // namespace ktl::test
