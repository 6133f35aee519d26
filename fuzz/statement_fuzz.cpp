// A statement of any content over two small tables.

#include "fuzz/table_use.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    ktl::fuzz::MemoryFileSystem files;
    const auto connection = ktl::fuzz::OpenMemory();
    for (const char *statement :
         {"Create Table t (ID int,ShapeID int,name Char(10),v numeric(20,10),b L,d date,s datetime,m memo)",
          "Insert Into t Values (1,1,'Tom',1.5,.T.,{^2020-01-31},{^2020-01-31 17:13:05},'memo')",
          "Insert Into t (ID,ShapeID,name) Values (-1,2,'x')", "Create Table u (a int)"}) {
        connection->Execute(statement);
    }
    const std::string text(reinterpret_cast<const char *>(data), size);
    // Twice: the second time through the statement that was kept.
    for (int i = 0; i < 2; ++i) ktl::fuzz::Try(*connection, text);
    ktl::fuzz::Try(*connection, "Select * From t");
    return 0;
}
