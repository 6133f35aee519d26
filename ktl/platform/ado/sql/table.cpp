#include "ktl/platform/ado/sql/table.h"

#include <atomic>

namespace ktl::ado::sql {

namespace {

[[noreturn]] void ThrowReadOnly() {
    throw Error("The tables of this connection can only be read.", error_number::kReadOnly);
}

}  // namespace

std::uint64_t Table::NewIncarnation() {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

std::string_view Table::ViewText(int column, Value &scratch) {
    ReadCell(column, scratch);
    return scratch.GetKind() == Value::Kind::Text ? scratch.Text() : std::string_view();
}

bool Table::FindRows(int, long long, std::vector<RowNumber> &) {
    return false;
}

bool Table::IsAscending(int) {
    return false;
}

void Table::Append(std::span<const Value *const>) {
    ThrowReadOnly();
}

void Table::SetCell(int, const Value &) {
    ThrowReadOnly();
}

void Table::AppendToCell(int, const Value &) {
    ThrowReadOnly();
}

void Table::DeleteRow() {
    ThrowReadOnly();
}

void Table::SetRehearsal(bool) {}

void Store::CreateTable(const CString &, const std::vector<ColumnDefinition> &) {
    ThrowReadOnly();
}

void Store::DropTable(const CString &) {
    ThrowReadOnly();
}

void Store::AlterTable(const AlterTableStatement &) {
    ThrowReadOnly();
}

void Store::PackTable(const CString &) {
    ThrowReadOnly();
}

void Store::UseTable(const CString &name, bool) {
    TableUse(*this, name, Access::Read);
}

void Store::CloseTable(const CString &) {}

std::shared_ptr<void> Store::HoldTable(const CString &) {
    return nullptr;
}

}  // namespace ktl::ado::sql
