#pragma once

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ktl/platform/filesystem.h"

namespace ktl::fuzz {

/// Files in memory, all in one folder "/m". In use while it lives.
class MemoryFileSystem : public FileSystem {
  public:
    MemoryFileSystem() : m_before(Replace(this)) {}
    ~MemoryFileSystem() override { Replace(m_before); }

    void Put(const std::string &name, std::string content) {
        auto node = std::make_shared<Node>();
        node->content = std::move(content);
        node->inode = ++m_lastInode;
        m_names["/m/" + name] = node;
    }

    int Open(const std::string &path, unsigned flags, File &file) override {
        file = -1;
        if (path == "/m") return EISDIR;
        auto found = m_names.find(path);
        if (found == m_names.end()) {
            if ((flags & kOpenCreate) == 0) return ENOENT;
            Put(path.substr(3), "");
            found = m_names.find(path);
        } else if ((flags & kOpenNew) != 0) {
            return EEXIST;
        }
        if ((flags & kOpenTruncate) != 0) found->second->content.clear();
        m_open.push_back(found->second);
        file = static_cast<File>(m_open.size() - 1);
        return 0;
    }
    int Close(File file) override {
        m_open[static_cast<std::size_t>(file)].reset();
        return 0;
    }
    int ReadAt(File file, std::uint64_t offset, void *buffer, std::size_t count, std::size_t &done) override {
        const std::string &content = m_open[static_cast<std::size_t>(file)]->content;
        done = offset >= content.size() ? 0 : std::min<std::size_t>(count, content.size() - offset);
        if (done > 0) std::memcpy(buffer, content.data() + offset, done);
        return 0;
    }
    int WriteAt(File file, std::uint64_t offset, const void *buffer, std::size_t count, std::size_t &done) override {
        constexpr std::uint64_t kMost = 64U << 20U;
        done = 0;
        if (offset + count > kMost) return ENOSPC;
        Node &node = *m_open[static_cast<std::size_t>(file)];
        if (node.content.size() < offset + count) node.content.resize(offset + count);
        std::memcpy(node.content.data() + offset, buffer, count);
        ++node.changes;
        done = count;
        return 0;
    }
    int Flush(File) override { return 0; }
    int Lock(File, FileLock) override { return 0; }
    int Stat(File file, FileInfo &info) override {
        const auto &node = m_open[static_cast<std::size_t>(file)];
        Describe(*node, info);
        info.links =
            std::any_of(m_names.begin(), m_names.end(), [&](const auto &entry) { return entry.second == node; });
        return 0;
    }
    int Stat(const std::string &path, FileInfo &info) override {
        info = {};
        info.isFolder = path == "/m";
        const auto found = m_names.find(path);
        if (found != m_names.end()) Describe(*found->second, info);
        return info.isFolder || found != m_names.end() ? 0 : ENOENT;
    }
    int Rename(const std::string &from, const std::string &to) override {
        const auto found = m_names.find(from);
        if (found == m_names.end()) return ENOENT;
        const auto node = found->second;
        m_names.erase(found);
        m_names[to] = node;
        return 0;
    }
    int Remove(const std::string &path) override { return m_names.erase(path) == 1 ? 0 : ENOENT; }
    int List(const std::string &, std::vector<std::string> &names) override {
        names.clear();
        for (const auto &entry : m_names) names.push_back(entry.first.substr(3));
        return 0;
    }
    int SetMode(const std::string &, unsigned) override { return 0; }

  private:
    struct Node {
        std::string content;
        std::uint64_t inode = 0;
        std::uint32_t changes = 0;
    };
    static void Describe(const Node &node, FileInfo &info) {
        info.size = node.content.size();
        info.device = 1;
        info.inode = node.inode;
        info.changedFraction = node.changes;
        info.mode = 0644;
    }

    FileSystem *m_before;
    std::map<std::string, std::shared_ptr<Node>> m_names;
    std::vector<std::shared_ptr<Node>> m_open;
    std::uint64_t m_lastInode = 0;
};

}  // namespace ktl::fuzz
