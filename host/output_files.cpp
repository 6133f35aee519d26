#include "host/output_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "host/error.h"

namespace ktl::host {

namespace {

[[noreturn]] void Fail(const std::string &path, int error) {
    throw Error("cannot write '" + path + "': " + std::strerror(error));
}

class Descriptor {
  public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor() { Close(); }

    int Get() const { return m_fd; }
    bool Close() {
        const int fd = m_fd;
        m_fd = -1;
        return fd < 0 || close(fd) == 0;
    }

  private:
    int m_fd;
};

void WriteAll(const Descriptor &file, std::string_view bytes, const std::string &path) {
    while (!bytes.empty()) {
        const ssize_t written = write(file.Get(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) Fail(path, errno);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace

OutputFiles::~OutputFiles() {
    for (std::size_t i = m_committed; i < m_names.size(); ++i) unlink(PartName(m_names[i]).c_str());
}

std::string OutputFiles::PartName(const std::string &path) {
    return path + ".part" + std::to_string(getpid());
}

void OutputFiles::Add(const std::string &path, std::string_view bytes) {
    // Found out now, since a rename that fails later would leave the files before it.
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) Fail(path, EISDIR);
    Descriptor file(open(PartName(path).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (file.Get() < 0) Fail(path, errno);
    m_names.push_back(path);
    WriteAll(file, bytes, path);
    if (fsync(file.Get()) != 0 && errno != EINVAL && errno != EROFS) Fail(path, errno);
    if (!file.Close()) Fail(path, errno);
}

void OutputFiles::Commit() {
    for (; m_committed < m_names.size(); ++m_committed) {
        const std::string &path = m_names[m_committed];
        if (std::rename(PartName(path).c_str(), path.c_str()) != 0) Fail(path, errno);
    }
}

}  // namespace ktl::host
