#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// A folder of its own for one test, removed with all in it.
class ScratchFolder {
  public:
    ScratchFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ktl-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) std::abort();
        m_path = pattern;
    }
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::string Path(const std::string &name) const { return (m_path / name).string(); }
    std::string Write(const std::string &name, const std::string &bytes) const {
        std::ofstream(m_path / name, std::ios::binary) << bytes;
        return Path(name);
    }
    std::string Read(const std::string &name) const {
        std::ifstream stream(m_path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }
    /// The number of entries, to see that nothing was left behind.
    int Count() const {
        int count = 0;
        for (const auto &entry : std::filesystem::directory_iterator(m_path)) count += entry.path().empty() ? 0 : 1;
        return count;
    }

  private:
    std::filesystem::path m_path;
};
