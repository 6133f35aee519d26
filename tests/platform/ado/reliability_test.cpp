// What is left when a process is killed, a disk fills, a file is damaged or another process writes.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>
#include <vector>

#include "tests/platform/ado/foreign_table.h"
#include "tests/platform/ado/tables.h"
#include "tests/support/faulty_filesystem.h"

namespace ktl::test {
namespace {

/// What a saved layer does to its table, each statement whole or not at all.
const std::vector<std::string> &Script() {
    static const std::vector<std::string> script = [] {
        const std::string longText(3000, 'm');
        return std::vector<std::string>{
            "Create Table t (ID int,ShapeID int,name Char(10),v numeric(20,10),m memo)",
            "Insert Into t (ID,ShapeID,name,v) Values (1,1,'one',1.5)",
            "Update t Set m='" + longText + "' Where ShapeID=1",
            "Insert Into t Values (2,2,'two',2,'short')",
            "Update t Set m='short now' Where ShapeID=1",
            "Update t Set ID=-1 Where ShapeID=2",
            "Insert Into t (ID,ShapeID) Values (3,3)",
            "Create Table tb (ID int,ShapeID int,name Char(10),v numeric(20,10),m memo)",
            "Insert Into tb Select ID,ShapeID,name,v,m From t Where ID <> -1",
            "Alter Table t Add x int",
            "Alter Table t Drop Column v",
            "Alter Table t Alter Column name Char(3)",
            "Delete From t Where ShapeID=3",
            "Pack t",
            "Create Table tb (ID int,ShapeID int,m memo)",
            "Insert Into tb Select ID,ShapeID,m From t",
            "Alter Table t Alter Column m Char(9)",
        };
    }();
    return script;
}

/// All that can be read, or what cannot.
std::string Everything(const ScratchFolder &folder) {
    Tables tables(folder);
    std::string text;
    for (const char *name : {"t", "tb"}) {
        try {
            text += name + ("\n" + tables.Rows(std::string("Select * From ") + name));
        } catch (const ado::Error &error) {
            text += std::string(name) +
                    (error.GetNumber() == ado::error_number::kFileNotFound ? " missing\n" : " broken\n");
        }
    }
    return text;
}

/// The state before the first statement and after each.
std::vector<std::string> States() {
    const ScratchFolder folder;
    std::vector<std::string> states = {Everything(folder)};
    Tables tables(folder);
    for (const std::string &statement : Script()) {
        tables.Run(statement);
        states.push_back(Everything(folder));
    }
    return states;
}

/// Runs the script in a process of its own that is killed at a changing call. The statements that it finished, and
/// whether it came to the end.
std::pair<int, bool> RunKilled(const ScratchFolder &folder, int calls) {
    int progress[2];
    if (::pipe(progress) != 0) return {0, true};
    const pid_t child = ::fork();
    if (child == 0) {
        FaultyFileSystem files;
        files.ExitAfter(calls, 3);
        try {
            Tables tables(folder);
            for (const std::string &statement : Script()) {
                tables.Run(statement);
                if (::write(progress[1], "x", 1) != 1) ::_exit(4);
            }
        } catch (...) {
            ::_exit(5);
        }
        ::_exit(0);
    }
    ::close(progress[1]);
    int finished = 0;
    for (char byte = 0; ::read(progress[0], &byte, 1) == 1;) ++finished;
    ::close(progress[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_TRUE(WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == 3) << WEXITSTATUS(status);
    return {finished, WEXITSTATUS(status) == 0};
}

TEST(Killed, FinishedStatementsSurviveAtEveryWrite) {
    const std::vector<std::string> states = States();
    int calls = 0;
    for (bool atEnd = false; !atEnd && calls < 1000; ++calls) {
        const ScratchFolder folder;
        int finished = 0;
        std::tie(finished, atEnd) = RunKilled(folder, calls);
        const std::string state = Everything(folder);
        const auto at = static_cast<std::size_t>(finished);
        const bool good = state == states[at] || (at + 1 < states.size() && state == states[at + 1]);
        ASSERT_TRUE(good) << "killed at call " << calls << " after " << finished << " statements:\n"
                          << state << "\nexpected:\n"
                          << states[at];
        // And the tables can be written to.
        Tables tables(folder);
        if (state.find("t missing") == std::string::npos) {
            tables.Run("Insert Into t (ID,ShapeID,m) Values (77,77,'after')");
            EXPECT_EQ(tables.Rows("Select m From t Where ShapeID=77"), "after\n");
        }
    }
    EXPECT_GT(calls, 50) << "the script writes more often than that";
}

TEST(Killed, RowsLeftBehindTheCountNeverAppear) {
    for (int calls = 0; calls < 5; ++calls) {
        const ScratchFolder folder;
        {
            Tables tables(folder);
            tables.Run("Create Table t (ID int, name Char(4))");
            tables.Run("Insert Into t Values (1,'kept')");
        }
        // What a killed copy leaves: rows that the count does not tell of.
        std::ofstream(folder.Path("t.dbf"), std::ios::app | std::ios::binary) << std::string(9 * 20, 'L');
        const pid_t child = ::fork();
        if (child == 0) {
            FaultyFileSystem files;
            Tables tables(folder);
            tables.Rows("Select * From t");
            files.ExitAfter(calls, 3);
            tables.Run("Insert Into t Values (2,'new')");
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        const std::string rows = Tables(folder).Rows("Select * From t");
        EXPECT_TRUE(rows == "1|kept\n" || rows == "1|kept\n2|new\n") << calls << ": " << rows;
    }
}

TEST(Killed, AMissingMemoFileIsThereWholeOrNotAtAll) {
    bool atEnd = false;
    for (int calls = 0; !atEnd && calls < 100; ++calls) {
        const ScratchFolder folder;
        Tables(folder).Run("Create Table t (ID int,ShapeID int,m memo)");
        Tables(folder).Run("Insert Into t (ID,ShapeID) Values (1,1)");
        std::filesystem::remove(folder.Path("t.fpt"));
        const pid_t child = ::fork();
        if (child == 0) {
            FaultyFileSystem files;
            files.ExitAfter(calls, 3);
            Tables(folder).Run("Update t Set m='text' Where ShapeID=1");
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        atEnd = WEXITSTATUS(status) == 0;
        if (folder.Has("t.fpt")) {
            EXPECT_EQ(folder.Read("t.fpt").substr(6, 2), std::string("\0\x40", 2)) << "the block size";
        }
        const std::string rows = Tables(folder).Rows("Select m From t");
        EXPECT_TRUE(rows == "text\n" || rows == "\n" || rows == "~\n") << rows;
        Tables(folder).Run("Update t Set m='after' Where ShapeID=1");
        EXPECT_EQ(Tables(folder).Rows("Select m From t"), "after\n") << calls;
    }
    EXPECT_TRUE(atEnd);
}

TEST(FailingDisk, AnErrorIsToldAndTheTableStaysWhole) {
    const std::vector<std::string> states = States();
    for (int calls = 0; calls < 1000; ++calls) {
        const ScratchFolder folder;
        std::size_t finished = 0;
        bool failed = false;
        {
            FaultyFileSystem files;
            Tables tables(folder);
            files.FailAfter(calls, ENOSPC);
            for (const std::string &statement : Script()) {
                failed = !tables.Fault(statement).empty();
                if (failed) break;
                ++finished;
            }
            if (failed) {
                // The connection goes on once there is room again.
                files.FailAfter(-1, 0);
                const std::string state = Everything(folder);
                const bool good = state == states[finished] || state == states[finished + 1];
                ASSERT_TRUE(good) << "failed at call " << calls << " in " << Script()[finished] << "\n" << state;
                EXPECT_TRUE(finished <= 1 || tables.Fault("Update t Set ID=5 Where ShapeID=1").empty());
            }
        }
        if (!failed) return;
    }
    FAIL() << "the script never ended";
}

TEST(FailingDisk, AShortWriteIsAnErrorAndTheRowsBeforeAreKept) {
    const ScratchFolder folder;
    Tables(folder).Run("Create Table t (ID int, name Char(100), m memo)");
    FaultyFileSystem files;
    files.LimitWrites(2000);
    Tables tables(folder);
    int rows = 0;
    while (rows < 100 && tables.Fault("Insert Into t Values (1,'x','memo text')").empty()) ++rows;
    EXPECT_GT(rows, 2);
    EXPECT_LT(rows, 20);
    EXPECT_EQ(tables.Rows("Select Count(0) From t"), std::to_string(rows) + "\n");
    files.LimitWrites(~0ULL);
    tables.Run("Insert Into t Values (2,'y','later')");
    EXPECT_EQ(tables.Rows("Select name,m From t Where ID=2"), "y|later\n");
    EXPECT_EQ(tables.Rows("Select Count(0) From t Where m='memo text'"), std::to_string(rows) + "\n");
}

TEST(FailingDisk, TheIndexForgetsRowsThatWereNotWritten) {
    for (const bool isHeld : {false, true}) {
        SCOPED_TRACE(isHeld);
        const ScratchFolder folder;
        FaultyFileSystem files;
        Tables tables(folder);
        const auto fail = [&](int calls, const char *statement) {
            const auto hold = isHeld ? tables.Get().HoldTable("t") : nullptr;
            tables.Run("Update t Set ID=1 Where ShapeID=1");
            files.FailAfter(calls, EIO);
            EXPECT_NE(tables.Fault(statement), "");
            files.FailAfter(-1, 0);
            EXPECT_EQ(tables.Rows("Select ID From t Where ShapeID=1"), "1\n");
        };
        tables.Run("Create Table t (ID int, ShapeID int)");
        tables.Run("Insert Into t Values (1,1)");
        for (int calls = 0; calls < 2; ++calls) {
            fail(calls, "Insert Into t Values (9,9)");
            EXPECT_EQ(tables.Rows("Select ID From t Where ShapeID=9"), "");
        }
        fail(0, "Update t Set ShapeID=5 Where ShapeID=1");
        tables.Run("Insert Into t Values (2,2)");
        tables.Run("Insert Into t Values (3,3)");
        EXPECT_EQ(tables.Rows("Select ID From t Where ShapeID=2"), "2\n");
        EXPECT_EQ(tables.Rows("Select ID From t Where ShapeID=3"), "3\n");
    }
}

TEST(FailingDisk, ReadsInPiecesGiveTheSame) {
    const ScratchFolder folder;
    Tables tables(folder);
    for (const std::string &statement : Script()) tables.Run(statement);
    const std::string all = Everything(folder);
    FaultyFileSystem files;
    files.ShortReads(7);
    EXPECT_EQ(Everything(folder), all);
}

/// A table with a row of each kind of column, and its memo file.
class Damaged : public testing::Test {
  protected:
    void SetUp() override {
        Tables tables(folder);
        tables.Run(
            "Create Table t (ID int,ShapeID int,name Char(10),v numeric(20,10),d date,s datetime,l L,m memo,g image)");
        for (int i = 0; i < 20; ++i) {
            const std::string n = std::to_string(i);
            tables.Run("Insert Into t (ID,ShapeID,name,v,m) Values (" + n + "," + n + ",'name" + n + "'," + n +
                       ".5,'memo " + n + "')");
        }
        tables.Close();
        table = Read("t.dbf");
        memo = Read("t.fpt");
    }
    std::string Read(const char *name) const {
        std::ifstream in(folder.Path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    /// Uses the table in every way; only Error may come. The rows that were read.
    int UseAll() {
        int rows = -1;
        Tables tables(folder);
        const char *const statements[] = {"Select * From t Order By v",
                                          "Select Count(0),Max(m) From t Where ShapeID=3",
                                          "Update t Set name='u',m='new' Where ShapeID=3",
                                          "Insert Into t (ID,ShapeID,m) Values (99,99,'x')",
                                          "Delete From t Where ID=99",
                                          "Alter Table t Add x int",
                                          "Alter Table t Drop Column m"};
        for (const char *statement : statements) {
            try {
                if (statement[0] == 'S') {
                    const ado::RecordsetRef found = tables.Open(statement);
                    if (rows < 0) rows = found->GetRecordCount();
                } else {
                    tables.Run(statement);
                }
            } catch (const ado::Error &) {
            }
        }
        return rows;
    }
    ScratchFolder folder;
    std::string table;
    std::string memo;
};

TEST_F(Damaged, EveryTruncatedTableIsAnErrorOrShorter) {
    const std::size_t header = 32 + 9 * 32 + 1 + 263;
    const std::size_t record = (table.size() - header - 1) / 20;
    for (std::size_t size = 0; size < table.size(); size += size < header ? 5 : 37) {
        folder.Write("t.dbf", table.substr(0, size));
        folder.Write("t.fpt", memo);
        const int rows = UseAll();
        if (size < header) {
            EXPECT_EQ(rows, -1) << size;
        } else {
            const auto left = (size - header) / record;
            EXPECT_EQ(rows, static_cast<int>(left)) << size;
            // A new row comes behind what is left, not where the count says.
            folder.Write("t.dbf", table.substr(0, size));
            Tables(folder).Run("Insert Into t (ID) Values (77)");
            EXPECT_EQ(std::filesystem::file_size(folder.Path("t.dbf")),
                      std::max(header + (left + 1) * record + 1, size))
                << size;
        }
    }
}

TEST_F(Damaged, EveryTruncatedMemoFileLeavesTheRows) {
    for (std::size_t size = 0; size < memo.size(); size += 23) {
        folder.Write("t.dbf", table);
        folder.Write("t.fpt", memo.substr(0, size));
        EXPECT_EQ(UseAll(), 20) << size;
    }
}

TEST_F(Damaged, GarbageInTheHeaderIsAnErrorOrARowCount) {
    std::mt19937 random(20201031);
    for (int i = 0; i < 150; ++i) {
        std::string bytes = table;
        const int changes = 1 + static_cast<int>(random() % 4);
        for (int k = 0; k < changes; ++k) bytes[random() % 600] = static_cast<char>(random());
        std::string blocks = memo;
        blocks[random() % blocks.size()] = static_cast<char>(random());
        folder.Write("t.dbf", bytes);
        folder.Write("t.fpt", blocks);
        EXPECT_LT(UseAll(), 10'000) << i;
    }
}

TEST_F(Damaged, PointersThatAllLeadToOneHugeBlockAreFound) {
    ForeignTable many(0x30);
    many.Column("M", 'M', 4);
    for (int i = 0; i < 3000; ++i) many.Row(std::string("\x08\0\0\0", 4));
    many.Save(folder, "many.dbf");
    std::string big(1U << 20U, 'b');
    big.replace(0, 8, std::string("\0\0\0\x08\0\0\0\x40", 8));
    big.replace(512, 8, std::string("\0\0\0\1\x7F\xFF\xFF\xFF", 8));
    folder.Write("many.fpt", big);
    EXPECT_EQ(Tables(folder).Fault("Select * From many").substr(0, 2), "41");
}

/// Sends a statement until nobody else has the table; false for any other fault.
bool Insist(Tables &tables, const std::string &statement) {
    const std::string taken = std::to_string(ado::error_number::kInUseByAnother) + " ";
    for (;;) {
        const std::string fault = tables.Fault(statement);
        if (fault.empty()) return true;
        if (fault.substr(0, taken.size()) != taken) return false;
    }
}

TEST(Sharing, AnotherProcessReadsWholeStatementsOnly) {
    const ScratchFolder folder;
    Tables tables(folder);
    constexpr int kWrites = 150;
    // More rows than are read or written at a time.
    tables.Run("Create Table t (ID int, ShapeID int, a int, b int, name Char(250))");
    tables.Run("Insert Into t (ID,ShapeID,a,b) Values (0,0,0,0)");
    for (int rows = 1; rows < 4096; rows *= 2) {
        tables.Run("Insert Into t Select ID,ShapeID+" + std::to_string(rows) + ",a,b,name From t");
    }
    const pid_t child = ::fork();
    if (child == 0) {
        Tables writer(folder);
        bool good = true;
        for (int i = 1; i <= kWrites && good; ++i) {
            const std::string n = std::to_string(i);
            good = Insist(writer, "Update t Set a=" + n + ",b=" + n) &&
                   Insist(writer, "Insert Into t Values (0," + std::to_string(10'000 + i) + "," + n + "," + n + ",'')");
            ::usleep(1000);
        }
        ::_exit(good ? 0 : 1);
    }
    int status = 0;
    int reads = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        EXPECT_EQ(tables.Rows("Select Count(0) From t Where a <> b"), "0\n");
        const std::string ends = tables.Rows("Select Max(a),Min(a) From t");
        EXPECT_EQ(ends.substr(0, ends.find('|')) + "\n", ends.substr(ends.find('|') + 1));
        ++reads;
        ::usleep(1000);
    }
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_GT(reads, 0);
    EXPECT_EQ(tables.Rows("Select a From t Where ShapeID=7"), "150\n");
    EXPECT_EQ(tables.Rows("Select a From t Where ShapeID=10150"), "150\n") << "found though another process added it";
}

TEST(Sharing, AnExclusiveTableIsClosedToOthersUntilItIsAltered) {
    const ScratchFolder folder;
    Tables tables(folder);
    Tables others(folder);
    tables.Run("Create Table t (ID int, ShapeID int)");
    tables.Run("Insert Into t Values (1,1)");
    EXPECT_EQ(others.Rows("Select * From t"), "1|1\n");
    tables.Run("Use t Exclusive");
    EXPECT_EQ(others.Fault("Select * From t").substr(0, 4), "108 ");
    EXPECT_EQ(others.Fault("Drop Table t").substr(0, 2), "3 ");
    EXPECT_EQ(tables.Rows("Select * From t"), "1|1\n");
    tables.Run("Alter Table t Add x int");
    EXPECT_EQ(others.Rows("Select * From t"), "1|1|0\n");
    tables.Run("Use t Exclusive");
    tables.Run("Use In Select('t')");
    EXPECT_EQ(others.Run("Update t Set x=1"), 1);
}

TEST(Sharing, AHeldTableIsClosedToOthersAndWrittenThrough) {
    const ScratchFolder folder;
    Tables tables(folder);
    Tables others(folder);
    tables.Run("Create Table t (ID int,ShapeID int,m memo)");
    EXPECT_EQ(others.Rows("Select Count(0) From t"), "0\n");
    {
        const auto hold = tables.Get().HoldTable("t");
        ASSERT_TRUE(hold);
        EXPECT_FALSE(tables.Get().HoldTable("T")) << "held already";
        for (char i = 1; i < 4; ++i) {
            const std::string n(1, static_cast<char>('0' + i));
            tables.Run("Insert Into t (ID,ShapeID) Values (" + n + "," + n + ")");
            tables.Run("Update t Set m='memo' Where ShapeID=" + n);
            std::ifstream file(folder.Path("t.dbf"), std::ios::binary);
            file.seekg(4);
            EXPECT_EQ(file.get(), i) << "the count in the file";
        }
        EXPECT_NE(others.Fault("Insert Into t (ID) Values (9)"), "");
        // What one statement may read of the memo file is not what all of them may.
        tables.Run("Update t Set m='" + std::string(1U << 20U, 'm') + "' Where ShapeID=1");
        for (int i = 0; i < 40; ++i) EXPECT_EQ(tables.Fault("Select m From t"), "");
        tables.Run("Update t Set m='memo' Where ShapeID=1");
    }
    EXPECT_EQ(others.Run("Insert Into t Values (4,4,'other')"), 1);
    EXPECT_EQ(tables.Rows("Select ID,m From t"), "1|memo\n2|memo\n3|memo\n4|other\n");
    EXPECT_FALSE(tables.Get().HoldTable("missing"));
}

TEST(Sharing, TwoConnectionsOfOneProcessSeeEachOthersRowsAtOnce) {
    const ScratchFolder folder;
    Tables first(folder);
    Tables second(folder);
    first.Run("Create Table t (ID int, ShapeID int)");
    for (int i = 0; i < 200; ++i) {
        const std::string n = std::to_string(i);
        first.Run("Insert Into t Values (" + n + "," + n + ")");
        EXPECT_EQ(second.Rows("Select ID From t Where ShapeID=" + n), n + "\n");
        second.Run("Update t Set ShapeID=-ShapeID-1 Where ShapeID=" + n);
        EXPECT_EQ(first.Rows("Select ID From t Where ShapeID=-" + std::to_string(i + 1)), n + "\n");
        EXPECT_EQ(first.Rows("Select ID From t Where ShapeID=" + n), "");
    }
}

TEST(Sharing, MoreTablesThanHandlesCanBeInUse) {
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit few{256, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &few);
    {
        const ScratchFolder folder;
        std::vector<std::unique_ptr<Tables>> connections;
        for (int i = 0; i < 300; ++i) {
            connections.push_back(std::make_unique<Tables>(folder));
            const std::string name = "w" + std::to_string(i);
            connections.back()->Run("Create Table " + name + " (ID int, m int)");
            connections.back()->Run("Insert Into " + name + " Values (" + std::to_string(i) + ",1)");
        }
        for (int i = 0; i < 300; ++i) {
            EXPECT_EQ(connections[static_cast<std::size_t>(i)]->Rows("Select ID From w" + std::to_string(i)),
                      std::to_string(i) + "\n");
        }
    }
    ::setrlimit(RLIMIT_NOFILE, &before);
}

TEST(Sharing, ThreadsWithConnectionsOfTheirOwnLoseNoRow) {
    const ScratchFolder folder;
    Tables tables(folder);
    tables.Run("Create Table t (ID int, ShapeID int)");
    std::vector<std::thread> threads;
    for (int part = 0; part < 4; ++part) {
        threads.emplace_back([&folder, part] {
            Tables own(folder);
            for (int i = 0; i < 100; ++i) {
                const std::string n = std::to_string(part * 100 + i);
                while (!own.Fault("Insert Into t Values (" + n + "," + n + ")").empty()) {
                }
            }
        });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(tables.Rows("Select Count(0),Sum(ID) From t"), "400|79800\n");
}

TEST(Index, AKeyIsFoundWithoutAWalkOverTheRows) {
    const ScratchFolder folder;
    FaultyFileSystem files;
    Tables tables(folder);
    tables.Run("Create Table t (ID int, ShapeID int, name Char(200))");
    for (int i = 0; i < 5000; ++i) {
        tables.Run("Insert Into t Values (" + std::to_string(i) + "," + std::to_string(i) + ",'n')");
    }
    tables.Rows("Select ID From t Where ShapeID=1 Or ID In (1)");
    tables.Rows("Select ID From t Where ShapeID=1");
    tables.Rows("Select ShapeID From t Where ID=1");
    const struct {
        const char *statement;
        int reads;
    } cases[] = {
        {"Select * From t Where ShapeID=4000", 1},
        {"Select * From t Where name='n' And ShapeID=-5", 0},
        {"Select * From t Where name='n' And 4001=ShapeID And ID<>-1", 1},
        {"Select * From t Where ID In (3,4002,77)", 3},
        {"Update t Set name='m' Where ShapeID=4003", 1},
        {"Update t Set ID=-1 Where ShapeID = 4004", 1},
        {"Delete From t Where ID=4005", 1},
        {"Select Top 1 ShapeID From t Where name Like '%n%' And ID<>-1 Order By ShapeID", 1},
        {"Insert Into t Values (7,7,'x')", 0},
    };
    for (const auto &row : cases) {
        files.FailReadsAfter(row.reads, EIO);
        EXPECT_EQ(tables.Fault(row.statement), "") << row.statement;
        files.FailReadsAfter(-1, 0);
    }
}

TEST(Index, ItFollowsAppendsUpdatesAndRepeatedKeys) {
    const ScratchFolder folder;
    Tables tables(folder);
    tables.Run("Create Table t (ID int, ShapeID int)");
    std::mt19937 random(5);
    std::vector<int> expected;
    for (int step = 0; step < 3000; ++step) {
        const int key = static_cast<int>(random() % 40) - 20;
        if (step % 3 != 0 || expected.empty()) {
            tables.Run("Insert Into t Values (1," + std::to_string(key) + ")");
            expected.push_back(key);
        } else {
            const int to = static_cast<int>(random() % 40) - 20;
            tables.Run("Update t Set ShapeID=" + std::to_string(to) + " Where ShapeID=" + std::to_string(key));
            for (int &value : expected) value = value == key ? to : value;
        }
        if (step % 50 != 0) continue;
        for (int probe = -21; probe < 21; ++probe) {
            const auto count = std::count(expected.begin(), expected.end(), probe);
            ASSERT_EQ(tables.Rows("Select Count(0) From t Where ShapeID=" + std::to_string(probe)),
                      std::to_string(count) + "\n")
                << step;
        }
    }
}

}  // namespace
}  // namespace ktl::test
