#pragma once

#include <string>
#include <string_view>

#include "tests/support/tds_server/bytes.h"
#include "tests/support/tds_server/databases.h"

/// \file
/// The tokens that answers are made of, one function each; the layouts are those of TDS 7.4.

namespace ktl::test::tds {

/// Flags of the DONE tokens.
enum DoneFlag : unsigned {
    kDoneFinal = 0,
    kDoneMore = 0x1,
    kDoneError = 0x2,
    kDoneCount = 0x10,
    kDoneAttention = 0x20
};
enum class DoneToken : unsigned { Done = 0xFD, DoneProc = 0xFE, DoneInProc = 0xFF };

/// Kinds of changes of the environment.
enum class Environment : unsigned {
    Database = 1,
    Language = 2,
    PacketSize = 4,
    Collation = 7,
    Begin = 8,
    Commit = 9,
    Rollback = 10
};

void PutLoginAck(ByteWriter &writer);
void PutError(ByteWriter &writer, const SqlError &error);
void PutInfo(ByteWriter &writer, int number, std::string_view message);
/// The values are text, except for collations and transactions, where they are bytes.
void PutEnvironment(ByteWriter &writer, Environment kind, std::string_view now, std::string_view before);
void PutColumns(ByteWriter &writer, const Result &result);
/// A plain row, or one with a bitmap of its nulls when it has any.
void PutRow(ByteWriter &writer, const Result &result, const std::vector<Cell> &row);
void PutReturnStatus(ByteWriter &writer, int status);
void PutReturnInteger(ByteWriter &writer, int ordinal, std::string_view name, int value);
void PutDone(ByteWriter &writer, DoneToken token, unsigned flags, long long count = 0);

}  // namespace ktl::test::tds
