#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ktl::host {

/// Files that appear together or not at all: each is written beside its place, flushed, and renamed on `Commit`. What
/// is not committed is removed with the object. Names and messages are UTF-8; failures throw `Error`.
class OutputFiles {
  public:
    OutputFiles() = default;
    OutputFiles(const OutputFiles &) = delete;
    OutputFiles &operator=(const OutputFiles &) = delete;
    ~OutputFiles();

    void Add(const std::string &path, std::string_view bytes);
    void Commit();
    /// The names given to `Add`, in order.
    const std::vector<std::string> &Names() const { return m_names; }

  private:
    static std::string PartName(const std::string &path);

    std::vector<std::string> m_names;
    std::size_t m_committed = 0;
};

}  // namespace ktl::host
