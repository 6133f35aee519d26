#include "host/staged_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "host/error.h"
#include "host/text_number.h"

namespace ktl::host {

namespace {

namespace fs = std::filesystem;

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

void Flush(const Descriptor &file, const std::string &path) {
    if (fsync(file.Get()) != 0 && errno != EINVAL && errno != EROFS) Fail(path, errno);
}

fs::path ParentOf(const std::string &path) {
    const fs::path parent = fs::path(path).parent_path();
    return parent.empty() ? fs::path(".") : parent;
}

bool IsThere(const fs::path &path) {
    std::error_code ignored;
    return fs::symlink_status(path, ignored).type() > fs::file_type::not_found;
}

/// Files beside a dataset that say how to read it.
struct Companions {
    const char *ending;
    std::vector<const char *> companions;
};
const Companions kCompanions[] = {
    {".dbf", {".cpg", ".fpt", ".dbt"}},
    {".csv", {".csvt"}},
    {".tab", {".ind"}},
};

void RemoveOldCompanions(const fs::path &target, const std::vector<std::string> &newNames) {
    for (const Companions &kind : kCompanions) {
        if (LowerAscii(target.extension().string()) != kind.ending) continue;
        for (const char *ending : kind.companions) {
            const fs::path name = target.filename().replace_extension(ending);
            if (std::find(newNames.begin(), newNames.end(), name.string()) != newNames.end()) continue;
            std::error_code ignored;
            fs::remove(fs::path(target).replace_extension(ending), ignored);
        }
    }
}

}  // namespace

StagedFiles::StagedFiles(const std::string &target, bool overwrite) : m_target(target), m_overwrite(overwrite) {
    CheckTarget();
    m_folder = (ParentOf(target) / ".ktl-XXXXXX").string();
    if (mkdtemp(m_folder.data()) == nullptr) Fail(target, errno);
    m_older = m_folder + ".old";
}

StagedFiles::~StagedFiles() {
    std::error_code ignored;
    fs::remove_all(m_folder, ignored);
    fs::remove_all(m_older, ignored);
}

void StagedFiles::CheckTarget() const {
    std::error_code ignored;
    const bool isGeodatabase = LowerAscii(fs::path(m_target).extension().string()) == ".gdb";
    if (fs::is_directory(m_target, ignored) && !isGeodatabase) Fail(m_target, EISDIR);
    if (IsThere(m_target) && !m_overwrite) throw Error("'" + m_target + "' is there already");
    for (const char *ending : {"-wal", "-journal"}) {
        if (IsThere(m_target + ending))
            throw Error("'" + m_target + "' is in use: '" + m_target + ending + "' is there");
    }
}

std::string StagedFiles::Path() const {
    return (fs::path(m_folder) / fs::path(m_target).filename()).string();
}

std::vector<std::string> StagedFiles::FilesInOrder() const {
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(m_folder)) names.push_back(entry.path().filename().string());
    const std::string last = fs::path(m_target).filename().string();
    std::sort(names.begin(), names.end(), [&](const std::string &a, const std::string &b) {
        return std::pair(a == last, a) < std::pair(b == last, b);
    });
    return names;
}

void StagedFiles::Write(const std::string &path, std::string_view bytes) const {
    const fs::path part = m_folder / fs::path(path).filename();
    Descriptor file(open(part.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (file.Get() < 0) Fail(path, errno);
    WriteAll(file, bytes, path);
    Flush(file, path);
    if (!file.Close()) Fail(path, errno);
}

void StagedFiles::FlushAll(const std::vector<std::string> &names) const {
    for (const std::string &name : names) {
        const Descriptor file(open((fs::path(m_folder) / name).c_str(), O_RDONLY | O_CLOEXEC));
        if (file.Get() < 0) Fail(m_target, errno);
        Flush(file, m_target);
    }
}

// A hard link keeps the older file while the new one is renamed over it, so that the name is never without a file; a
// directory, and any file where links are not to be had, is moved out of the way.
void StagedFiles::Place(const std::string &name) {
    const fs::path to = ParentOf(m_target) / name;
    const fs::path older = fs::path(m_older) / name;
    if (IsThere(to)) {
        if (!m_overwrite) throw Error("'" + to.string() + "' is there already");
        std::error_code ignored;
        if (fs::is_directory(to, ignored) && !fs::is_directory(fs::path(m_folder) / name, ignored)) {
            Fail(to.string(), EISDIR);
        }
        fs::create_directory(m_older, ignored);
        if (link(to.c_str(), older.c_str()) != 0 && rename(to.c_str(), older.c_str()) != 0) Fail(to.string(), errno);
        m_done.push_back({older.string(), to.string()});
    } else {
        m_done.push_back({{}, to.string()});
    }
    if (rename((fs::path(m_folder) / name).c_str(), to.c_str()) != 0) Fail(to.string(), errno);
}

void StagedFiles::Undo() {
    for (; !m_done.empty(); m_done.pop_back()) {
        const Move &move = m_done.back();
        std::error_code ignored;
        if (move.from.empty() || fs::is_directory(move.to, ignored)) fs::remove_all(move.to, ignored);
        if (!move.from.empty()) fs::rename(move.from, move.to, ignored);
    }
}

void StagedFiles::Commit() {
    try {
        CheckTarget();
        const std::vector<std::string> names = FilesInOrder();
        FlushAll(names);
        for (const std::string &name : names) Place(name);
        if (m_overwrite) RemoveOldCompanions(m_target, names);
        m_done.clear();
    } catch (...) {
        Undo();
        throw;
    }
}

}  // namespace ktl::host
