#include "host/output_files.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "host/error.h"
#include "tests/host/scratch_folder.h"

namespace {

using ktl::host::Error;
using ktl::host::OutputFiles;

TEST(OutputFiles, NothingAppearsBeforeCommitAndAllAfterIt) {
    const ScratchFolder folder;
    folder.Write("b", "old");
    OutputFiles files;
    files.Add(folder.Path("a"), "first");
    files.Add(folder.Path("b"), "second");
    EXPECT_EQ(folder.Read("b"), "old");
    EXPECT_FALSE(std::filesystem::exists(folder.Path("a")));
    files.Commit();
    EXPECT_EQ(folder.Read("a"), "first");
    EXPECT_EQ(folder.Read("b"), "second");
    EXPECT_EQ(folder.Count(), 2);
}

TEST(OutputFiles, WhatIsNotCommittedIsRemoved) {
    const ScratchFolder folder;
    folder.Write("a", "old");
    {
        OutputFiles files;
        files.Add(folder.Path("a"), "new");
        EXPECT_EQ(folder.Count(), 2);
    }
    EXPECT_EQ(folder.Count(), 1);
    EXPECT_EQ(folder.Read("a"), "old");
}

TEST(OutputFiles, AFailedWriteSaysWhichFileAndWhy) {
    const ScratchFolder folder;
    const auto errorOf = [&](const std::string &name, const std::string &bytes) -> std::string {
        try {
            OutputFiles files;
            files.Add(folder.Path(name), bytes);
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
