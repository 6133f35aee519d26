#pragma once

#include <string>
#include <utility>

#include "ktl/platform/ado/dbase/data_file.h"
#include "ktl/platform/filesystem.h"

namespace ktl::ado::dbase {

/// A file that is written under another name and takes its place at the end; without that it is removed.
class NewFile {
  public:
    explicit NewFile(std::string target) : m_target(std::move(target)), m_path(TemporaryNameFor(m_target)) {}
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;
    ~NewFile() {
        if (!m_placed) FileSystem::Current().Remove(m_path);
    }
    const std::string &GetPath() const { return m_path; }
    void Place() {
        if (const int error = FileSystem::Current().Rename(m_path, m_target)) {
            ThrowFileError("replaced", m_target, error);
        }
        m_placed = true;
    }

  private:
    std::string m_target;
    std::string m_path;
    bool m_placed = false;
};

}  // namespace ktl::ado::dbase
