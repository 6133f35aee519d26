#include "tests/support/tds_server/token.h"

#include <algorithm>

namespace ktl::test::tds {
namespace {

enum Token : unsigned {
    kReturnStatus = 0x79,
    kColumns = 0x81,
    kError = 0xAA,
    kInfo = 0xAB,
    kReturnValue = 0xAC,
    kLoginAck = 0xAD,
    kRow = 0xD1,
    kRowWithBitmap = 0xD2,
    kEnvironment = 0xE3
};

constexpr std::string_view kProgram = "Test SQL Server";
constexpr std::string_view kServer = "TESTSERVER";
constexpr unsigned kColumnNullable = 0x01;
constexpr unsigned kColumnWritable = 0x08;

/// A token whose body stands behind its length in two bytes.
void PutSized(ByteWriter &writer, Token token, const ByteWriter &body) {
    writer.U8(token);
    writer.U16(body.View().size());
    writer.Bytes(body.View());
}

void PutMessage(ByteWriter &writer, Token token, int number, int severity, std::string_view message) {
    ByteWriter body;
    body.I32(number);
    body.U8(1);
    body.U8(static_cast<unsigned>(severity));
    body.LongText(message);
    body.ShortText(kServer);
    body.ShortText("");
    body.I32(1);
    PutSized(writer, token, body);
}

bool IsNull(const Cell &cell) {
    return std::holds_alternative<std::monostate>(cell);
}

void PutNullBitmap(ByteWriter &writer, const std::vector<Cell> &row) {
    std::string bitmap((row.size() + 7) / 8, '\0');
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (IsNull(row[i])) bitmap[i / 8] = static_cast<char>(bitmap[i / 8] | 1 << (i % 8));
    }
    writer.Bytes(bitmap);
}

}  // namespace

void PutLoginAck(ByteWriter &writer) {
    ByteWriter body;
    body.U8(1);
    body.Bytes(std::string_view("\x74\x00\x00\x04", 4));
    body.ShortText(kProgram);
    body.Bytes(std::string_view("\x0B\x00\x0B\xB8", 4));
    PutSized(writer, kLoginAck, body);
}

void PutError(ByteWriter &writer, const SqlError &error) {
    PutMessage(writer, kError, error.number, error.severity, error.what());
}

void PutInfo(ByteWriter &writer, int number, std::string_view message) {
    PutMessage(writer, kInfo, number, 0, message);
}

void PutEnvironment(ByteWriter &writer, Environment kind, std::string_view now, std::string_view before) {
    ByteWriter body;
    body.U8(static_cast<unsigned>(kind));
    for (const std::string_view value : {now, before}) {
        if (kind >= Environment::Collation) {
            body.U8(static_cast<unsigned>(value.size()));
            body.Bytes(value);
        } else {
            body.ShortText(value);
        }
    }
    PutSized(writer, kEnvironment, body);
}

void PutColumns(ByteWriter &writer, const Result &result) {
    writer.U8(kColumns);
    writer.U16(result.columns.size());
    for (const ResultColumn &column : result.columns) {
        writer.U32(0);
        writer.U16((column.nullable ? kColumnNullable : 0) | kColumnWritable);
        WriteTypeInfo(writer, column.type, column.table);
        writer.ShortText(column.name);
    }
}

void PutRow(ByteWriter &writer, const Result &result, const std::vector<Cell> &row) {
    const bool withBitmap = std::any_of(row.begin(), row.end(), IsNull);
    writer.U8(withBitmap ? kRowWithBitmap : kRow);
    if (withBitmap) PutNullBitmap(writer, row);
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (!IsNull(row[i])) WriteValue(writer, result.columns[i].type, row[i]);
    }
}

void PutReturnStatus(ByteWriter &writer, int status) {
    writer.U8(kReturnStatus);
    writer.I32(status);
}

void PutReturnInteger(ByteWriter &writer, int ordinal, std::string_view name, int value) {
    const SqlType type = *ParseType("int");
    writer.U8(kReturnValue);
    writer.U16(static_cast<std::size_t>(ordinal));
    writer.ShortText(name);
    writer.U8(1);
    writer.U32(0);
    writer.U16(0);
    WriteTypeInfo(writer, type, "");
    WriteValue(writer, type, static_cast<long long>(value));
}

void PutDone(ByteWriter &writer, DoneToken token, unsigned flags, long long count) {
    writer.U8(static_cast<unsigned>(token));
    writer.U16(flags);
    writer.U16(0);
    writer.U64(static_cast<std::uint64_t>(count));
}

}  // namespace ktl::test::tds
