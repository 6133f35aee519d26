#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ktl::host {

/// The files of a dataset, or a picture with its side files, that take their places together or not at all. They are
/// made in a folder beside the target and renamed from there; what was there stays until then, and for good where
/// anything fails. The folder goes with the object. Names and messages are UTF-8; failures throw `Error`.
///
///     StagedFiles files("out/roads.tab", true);
///     Write(files.Path());
///     files.Commit();
class StagedFiles {
  public:
    /// Without `overwrite` a target that is there is an error.
    StagedFiles(const std::string &target, bool overwrite);
    StagedFiles(const StagedFiles &) = delete;
    StagedFiles &operator=(const StagedFiles &) = delete;
    ~StagedFiles();

    /// The folder.
    const std::string &Folder() const { return m_folder; }
    /// The target's own name in it.
    std::string Path() const;
    /// Makes one of the files from its bytes, flushed; `path` is its place behind `Commit`, beside the target.
    void Write(const std::string &path, std::string_view bytes) const;
    /// Moves all that is in the folder, the target last, and removes the files that belonged to an older target and
    /// that the new one lacks, since they would be taken for its own.
    void Commit();

  private:
    struct Move {
        std::string from;
        std::string to;
    };
    void CheckTarget() const;
    std::vector<std::string> FilesInOrder() const;
    void FlushAll(const std::vector<std::string> &names) const;
    void Place(const std::string &name);
    void Undo();

    std::string m_target;
    bool m_overwrite;
    std::string m_folder;
    /// Where the files that stood there wait, for an undo.
    std::string m_older;
    std::vector<Move> m_done;
};

}  // namespace ktl::host
