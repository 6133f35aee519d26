#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const fs::path kRoot = KTL_SOURCE_DIR;

// The library's folders from bottom to top, then what stands on it.
const std::vector<std::string> kFolders = {
    "ktl/platform", "ktl/platform/gdiplus", "ktl/platform/ado", "ktl/core",    "ktl/webmap",
    "ktl/imaging",  "ktl/attributes",       "ktl/controls",     "ktl/legends", "ktl/shapes",
    "ktl/layers",   "ktl/overlays",         "ktl/mapview",      "host",        "apps",
};

struct Source {
    std::string name;
    std::vector<std::string> quoted;     // #include "..."
    std::vector<std::string> bracketed;  // #include <...>
    bool onlyOnce = false;
};

std::string TextOf(const fs::path &path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

Source Load(const fs::path &path) {
    Source source;
    source.name = fs::relative(path, kRoot).generic_string();
    std::ifstream stream(path);
    for (std::string line; std::getline(stream, line);) {
        if (line == "#pragma once") source.onlyOnce = true;
        if (!line.starts_with("#include ") || line.size() < 12) continue;
        const char open = line[9];
        if (open != '<' && open != '"') continue;
        const std::string name = line.substr(10, line.find(open == '<' ? '>' : '"', 10) - 10);
        (open == '<' ? source.bracketed : source.quoted).push_back(name);
    }
    return source;
}

std::vector<Source> SourcesUnder(const std::vector<std::string> &folders) {
    std::vector<Source> sources;
    for (const std::string &folder : folders) {
        for (const auto &entry : fs::recursive_directory_iterator(kRoot / folder)) {
            const std::string extension = entry.path().extension();
            if (extension == ".h" || extension == ".cpp") sources.push_back(Load(entry.path()));
        }
    }
    return sources;
}

bool IsHeader(const Source &source) {
    return source.name.ends_with(".h");
}

// The place of the folder with the longest name that holds the file; -1 for none.
int RankOf(const std::string &name) {
    int rank = -1;
    std::size_t longest = 0;
    for (std::size_t i = 0; i < kFolders.size(); ++i) {
        if (!name.starts_with(kFolders[i] + "/") || kFolders[i].size() < longest) continue;
        longest = kFolders[i].size();
        rank = static_cast<int>(i);
    }
    return rank;
}

std::set<std::string> PrivateEntries() {
    std::set<std::string> entries;
    std::ifstream stream(kRoot / "ktl/private_headers.txt");
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty() && line.front() != '#') entries.insert(line);
    }
    return entries;
}

bool IsPrivate(const std::string &name) {
    static const std::set<std::string> entries = PrivateEntries();
    return std::any_of(entries.begin(), entries.end(), [&](const std::string &entry) {
        return entry.back() == '/' ? name.starts_with(entry) : name == entry;
    });
}

TEST(Structure, AFolderIncludesOnlyFromItselfAndBelow) {
    const auto sources = SourcesUnder({"ktl", "host", "apps"});
    ASSERT_GT(sources.size(), 50U);
    for (const Source &source : sources) {
        if (source.name == "ktl/ktl.h") continue;
        const int rank = RankOf(source.name);
        ASSERT_GE(rank, 0) << source.name << " stands in a folder that kFolders lacks";
        for (const std::string &include : source.quoted) {
            EXPECT_TRUE(fs::exists(kRoot / include))
                << source.name << " doesn't include " << include << " from the root";
            EXPECT_LE(RankOf(include), rank) << source.name << " includes " << include << " from above";
        }
    }
}

TEST(Structure, TheLibraryNeverIncludesAllOfItself) {
    for (const Source &source : SourcesUnder({"ktl"})) {
        EXPECT_EQ(std::count(source.quoted.begin(), source.quoted.end(), "ktl/ktl.h"), 0) << source.name;
    }
}

TEST(Structure, EveryHeaderIsReadOnce) {
    for (const Source &source : SourcesUnder({"ktl", "host", "apps"})) {
        EXPECT_TRUE(source.onlyOnce || !IsHeader(source)) << source.name;
    }
}

TEST(Structure, PublicHeadersShowNoOtherLibrary) {
    const auto isForeign = [](const std::string &include) {
        constexpr const char *kForeign[] = {"cairo",      "pango", "glib", "gdal",  "ogr",  "cpl_",
                                            "fontconfig", "sql",   "mdb",  "iconv", "CLI/", "Q"};
        return std::any_of(std::begin(kForeign), std::end(kForeign),
                           [&](const char *start) { return include.starts_with(start); });
    };
    for (const Source &source : SourcesUnder({"ktl"})) {
        if (!IsHeader(source) || IsPrivate(source.name)) continue;
        for (const std::string &include : source.bracketed) {
            EXPECT_FALSE(isForeign(include)) << source.name << " includes <" << include << ">";
        }
        for (const std::string &include : source.quoted) {
            EXPECT_FALSE(IsPrivate(include)) << source.name << " includes the private " << include;
            EXPECT_TRUE(include.starts_with("ktl/")) << source.name << " includes " << include;
        }
    }
}

TEST(Structure, TheOneHeaderNamesEveryPublicOne) {
    std::set<std::string> wanted;
    for (const Source &source : SourcesUnder({"ktl"})) {
        if (IsHeader(source) && !IsPrivate(source.name) && source.name != "ktl/ktl.h") wanted.insert(source.name);
    }
    const Source all = Load(kRoot / "ktl/ktl.h");
    const std::set<std::string> named(all.quoted.begin(), all.quoted.end());
    for (const std::string &header : wanted) {
        EXPECT_TRUE(named.contains(header))
            << header << " is neither in ktl/ktl.h (scripts/list_headers.sh) nor private";
    }
    for (const std::string &header : named) EXPECT_TRUE(wanted.contains(header)) << header << " is no public header";
}

TEST(Structure, PrivateHeadersExist) {
    for (const std::string &entry : PrivateEntries()) EXPECT_TRUE(fs::exists(kRoot / entry)) << entry;
}

// The folder of the program is the one place that a reader looks at first.
TEST(Structure, EveryFolderOpensWithAReadme) {
    for (const std::string &folder : kFolders) {
        if (folder == "apps" || !fs::exists(kRoot / folder)) continue;
        EXPECT_GT(TextOf(kRoot / folder / "README.md").size(), 100U) << folder;
    }
}

}  // namespace
