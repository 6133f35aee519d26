#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// \file
/// Where things stand in .dbf and memo files. Numbers of a .dbf are little-endian, those of an .fpt big-endian.

namespace ktl::ado::dbase {

// The table file's header.
inline constexpr std::size_t kHeaderStart = 32;
inline constexpr std::size_t kVersionAt = 0;
inline constexpr std::size_t kDateAt = 1;
inline constexpr std::size_t kCountAt = 4;
inline constexpr std::size_t kHeaderLengthAt = 8;
inline constexpr std::size_t kRecordLengthAt = 10;
inline constexpr std::size_t kTableFlagsAt = 28;
inline constexpr std::size_t kCodePageAt = 29;
/// One column's entry.
inline constexpr std::size_t kEntrySize = 32;
inline constexpr std::size_t kNameSize = 11;
inline constexpr std::size_t kTypeAt = 11;
inline constexpr std::size_t kOffsetAt = 12;
inline constexpr std::size_t kWidthAt = 16;
inline constexpr std::size_t kDecimalsAt = 17;
inline constexpr std::size_t kFlagsAt = 18;
inline constexpr std::size_t kNextValueAt = 19;
inline constexpr std::size_t kStepAt = 23;
inline constexpr std::uint8_t kHeaderEnd = 0x0D;
/// Between the entries and the first record of the 0x30 family; may name a database.
inline constexpr std::size_t kBacklinkSize = 263;

inline constexpr std::uint8_t kVersionFoxPro = 0x30;
inline constexpr std::uint8_t kVersionAutoIncrement = 0x31;
inline constexpr std::uint8_t kVersionVarchar = 0x32;
inline constexpr std::uint8_t kVersionDbase3 = 0x03;
inline constexpr std::uint8_t kVersionDbase3Memo = 0x83;
inline constexpr std::uint8_t kVersionDbase4Memo = 0x8B;
inline constexpr std::uint8_t kVersionOldFoxPro = 0xF5;

inline constexpr std::uint8_t kTableHasIndex = 0x01;
inline constexpr std::uint8_t kTableHasMemo = 0x02;

inline constexpr std::uint8_t kColumnSystem = 0x01;
inline constexpr std::uint8_t kColumnNullable = 0x02;
inline constexpr std::uint8_t kColumnBinary = 0x04;
inline constexpr std::uint8_t kColumnAutoIncrement = 0x08;

inline constexpr char kLiveMark = ' ';
inline constexpr char kDeletedMark = '*';
inline constexpr char kEndMark = 0x1A;

inline constexpr std::uint8_t kCodePageGbk = 0x7A;

// Limits of tables that are written.
inline constexpr std::size_t kMaxColumns = 255;
inline constexpr int kMaxCharWidth = 254;
inline constexpr int kMaxNumberWidth = 20;
inline constexpr std::size_t kMaxRecordLength = 65'500;
inline constexpr std::uint32_t kMaxRecords = 1'000'000'000;

// Memo files.
inline constexpr std::size_t kMemoHeaderSize = 512;
inline constexpr std::size_t kMemoBlockSizeAt = 6;
inline constexpr std::uint32_t kNewBlockSize = 64;
inline constexpr std::size_t kMemoBlockHeader = 8;
inline constexpr std::uint32_t kMemoIsBinary = 0;
inline constexpr std::uint32_t kMemoIsText = 1;
inline constexpr std::uint32_t kDbaseBlockSize = 512;
inline constexpr std::size_t kDbase4BlockSizeAt = 20;
inline constexpr std::uint32_t kDbase4Mark = 0x0008FFFF;

/// The Julian day of 30 December 1899, day 0 of `DateTime`.
inline constexpr int kJulianDayOfZero = 2'415'019;

inline std::uint16_t LoadLittle16(const char *at) {
    const auto *b = reinterpret_cast<const unsigned char *>(at);
    return static_cast<std::uint16_t>(b[0] | b[1] << 8);
}
inline std::uint32_t LoadLittle32(const char *at) {
    return static_cast<std::uint32_t>(LoadLittle16(at)) | static_cast<std::uint32_t>(LoadLittle16(at + 2)) << 16;
}
inline std::uint64_t LoadLittle64(const char *at) {
    return LoadLittle32(at) | static_cast<std::uint64_t>(LoadLittle32(at + 4)) << 32;
}
inline std::uint32_t LoadBig32(const char *at) {
    const auto *b = reinterpret_cast<const unsigned char *>(at);
    return static_cast<std::uint32_t>(b[0]) << 24 | static_cast<std::uint32_t>(b[1]) << 16 |
           static_cast<std::uint32_t>(b[2]) << 8 | b[3];
}
inline std::uint32_t LoadBig16(const char *at) {
    const auto *b = reinterpret_cast<const unsigned char *>(at);
    return static_cast<std::uint32_t>(b[0]) << 8 | b[1];
}
inline void StoreLittle16(char *at, std::uint32_t value) {
    at[0] = static_cast<char>(value);
    at[1] = static_cast<char>(value >> 8);
}
inline void StoreLittle32(char *at, std::uint32_t value) {
    StoreLittle16(at, value);
    StoreLittle16(at + 2, value >> 16);
}
inline void StoreLittle64(char *at, std::uint64_t value) {
    StoreLittle32(at, static_cast<std::uint32_t>(value));
    StoreLittle32(at + 4, static_cast<std::uint32_t>(value >> 32));
}
inline void StoreBig16(char *at, std::uint32_t value) {
    at[0] = static_cast<char>(value >> 8);
    at[1] = static_cast<char>(value);
}
inline void StoreBig32(char *at, std::uint32_t value) {
    StoreBig16(at, value >> 16);
    StoreBig16(at + 2, value);
}

}  // namespace ktl::ado::dbase
