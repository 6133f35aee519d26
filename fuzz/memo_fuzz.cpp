// A memo file of any content under a sound table of one of four kinds, chosen by the first byte.

#include "fuzz/table_use.h"

namespace {

/// A table whose rows point to the first twenty blocks.
std::string TableOf(char version, unsigned pointerWidth) {
    const bool backlink = version == 0x30;
    const std::size_t header = 32 + 32 + 1 + (backlink ? 263 : 0);
    std::string table(header, '\0');
    table[0] = version;
    table[4] = 20;
    table[8] = static_cast<char>(header);
    table[9] = static_cast<char>(header >> 8U);
    table[10] = static_cast<char>(pointerWidth + 1);
    table[32] = 'M';
    table[32 + 11] = 'M';
    table[32 + 16] = static_cast<char>(pointerWidth);
    table[64] = 0x0D;
    for (int block = 0; block < 20; ++block) {
        std::string digits = std::to_string(block);
        std::string pointer(1, static_cast<char>(block));
        table += ' ';
        table += pointerWidth == 4 ? pointer + std::string(3, '\0') : std::string(10 - digits.size(), ' ') + digits;
    }
    return table;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 1) return 0;
    constexpr unsigned char kVersions[] = {0x30, 0xF5, 0x83, 0x8B};
    const unsigned kind = data[0] % 4;
    const std::string memo(reinterpret_cast<const char *>(data) + 1, size - 1);
    ktl::fuzz::MemoryFileSystem files;
    files.Put("t.dbf", TableOf(static_cast<char>(kVersions[kind]), kind == 0 ? 4 : 10));
    files.Put(kind < 2 ? "t.fpt" : "t.dbt", memo);
    ktl::fuzz::UseTable();
    return 0;
}
