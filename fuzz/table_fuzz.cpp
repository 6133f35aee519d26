// A table file of any content, with a memo file behind it: two bytes of length, the table, the memo file.

#include "fuzz/table_use.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 2) return 0;
    const std::string all(reinterpret_cast<const char *>(data), size);
    const std::size_t length = std::min<std::size_t>(static_cast<std::size_t>(data[0]) << 8U | data[1], size - 2);
    ktl::fuzz::MemoryFileSystem files;
    files.Put("t.dbf", all.substr(2, length));
    files.Put("t.fpt", all.substr(2 + length));
    files.Put("t.dbt", all.substr(2 + length));
    ktl::fuzz::UseTable();
    return 0;
}
