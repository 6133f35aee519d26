#include "host/staged_files.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "host/error.h"
#include "tests/host/scratch_folder.h"

namespace {

using ktl::host::Error;
using ktl::host::StagedFiles;

TEST(StagedFiles, FilesTakeTheirPlacesTogether) {
    const ScratchFolder folder;
    const auto stage = [&](bool overwrite, bool commit = true) {
        StagedFiles files(folder.Path("a.tab"), overwrite);
        for (const char *name : {"a.tab", "a.dat", "a.id"}) files.Write(folder.Path(name), "new");
        if (commit) files.Commit();
    };
    const auto texts = [&] { return folder.Read("a.tab") + folder.Read("a.dat"); };
    folder.Write("a.tab", "old");
    folder.Write("a.dat", "old");
    std::filesystem::create_directories(folder.Path("a.id/kept"));
    stage(true, false);
    EXPECT_THROW(stage(false), Error);
    EXPECT_THROW(stage(true), Error) << "a directory is in the way";
    EXPECT_EQ(texts(), "oldold");
    EXPECT_TRUE(std::filesystem::exists(folder.Path("a.id/kept")));
    EXPECT_EQ(folder.Count(), 3);
    std::filesystem::remove_all(folder.Path("a.id"));
    stage(true);
    EXPECT_EQ(texts() + folder.Read("a.id"), "newnewnew");
    EXPECT_EQ(folder.Count(), 3);
}

TEST(StagedFiles, AFailedWriteSaysWhichFileAndWhy) {
    const ScratchFolder folder;
    const auto errorOf = [&](const std::string &name, const std::string &bytes) -> std::string {
        try {
            StagedFiles(folder.Path(name), true).Write(folder.Path(name), bytes);
        } catch (const Error &error) {
            return error.what();
        }
        return "";
    };
    std::filesystem::create_directory(folder.Path("folder"));
    EXPECT_EQ(errorOf("folder", "x"), "cannot write '" + folder.Path("folder") + "': Is a directory");
    EXPECT_NE(errorOf("no/such/file", "x").find("No such file or directory"), std::string::npos);

    // A limit on file sizes stands for a full disk.
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit tight = {1000, before.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &tight);
    const std::string full = errorOf("large", std::string(5000, 'x'));
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, SIG_DFL);
    EXPECT_NE(full.find("large"), std::string::npos);
    EXPECT_EQ(folder.Count(), 1) << "no part is left";
}

}  // namespace
