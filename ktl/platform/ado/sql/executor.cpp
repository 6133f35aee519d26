#include "ktl/platform/ado/sql/executor.h"

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/sql/cell_storer.h"
#include "ktl/platform/ado/sql/change_plans.h"
#include "ktl/platform/ado/sql/replace_walk.h"
#include "ktl/platform/ado/sql/select_plan.h"
#include "ktl/platform/ado/static_recordset.h"

namespace ktl::ado::sql {

namespace {

/// Rows of a page: enough to make opening and locking cheap beside them, few beside a table.
constexpr std::size_t kPageRows = 1000;

class BoundSelectPlan : public BoundPlan {
  public:
    BoundSelectPlan(const ParsedStatement &parsed, const SelectStatement &select, Table &table)
        : BoundPlan(table), plan(parsed, select, table) {}
    SelectPlan plan;
};

/// The statement's plan for that table, made anew where there is none or the table has changed.
template <class PlanType, class StatementType>
PlanType &PlanFor(PreparedStatement &prepared, std::string_view text, Table &table) {
    auto *plan = static_cast<PlanType *>(prepared.plan.get());
    if (!plan || !plan->IsGoodFor(table)) {
        if (prepared.reused) StatementCache::Refresh(prepared, text);
        auto made =
            std::make_unique<PlanType>(*prepared.parsed, std::get<StatementType>(prepared.parsed->statement), table);
        plan = made.get();
        prepared.plan = std::move(made);
    }
    return *plan;
}

/// Runs a walk over a table's rows; an Error that a row's values raise is told with the row.
template <class Walk>
auto AtRow(const Table &table, const CString &name, Walk walk) {
    try {
        return walk();
    } catch (const Error &error) {
        const int number = error.GetNumber();
        const bool ofRow = number == error_number::kNumericOverflow || number == error_number::kOperandTypes ||
                           number == error_number::kNullNotAllowed;
        if (!ofRow) throw;
        CString what = error.GetDescription();
        CString place;
        if (table.GetRecordNumber() > 0) place.Format(" in record %u of", table.GetRecordNumber());
        place += (place.IsEmpty() ? " in table \"" : " table \"") + name + "\".";
        throw Error(what.TrimRight('.') + place, number);
    }
}

}  // namespace

/// An Update or a Delete.
template <class PlanType, class ChangeStatement>
long long Executor::Change(PreparedStatement &prepared, std::string_view text, const ChangeStatement &statement) {
    const CString name = statement.table.text;
    const TableUse table(*m_store, name, Access::Write);
    PlanType &plan = PlanFor<PlanType, ChangeStatement>(prepared, text, *table);
    const long long count = AtRow(*table, name, [&] { return plan.Run(*table); });
    table->Commit();
    return count;
}

long long Executor::Execute(std::string_view statement) {
    PreparedStatement &prepared = m_cache.Get(statement);
    const Statement &tree = prepared.parsed->statement;
    if (const auto *insert = std::get_if<InsertStatement>(&tree)) return Run(prepared, statement, *insert);
    if (const auto *update = std::get_if<UpdateStatement>(&tree)) {
        return Change<UpdatePlan>(prepared, statement, *update);
    }
    if (const auto *remove = std::get_if<DeleteStatement>(&tree)) {
        return Change<DeletePlan>(prepared, statement, *remove);
    }
    if (const auto *select = std::get_if<SelectStatement>(&tree)) {
        return Run(prepared, statement, *select)->GetRecordCount();
    }
    if (const auto *create = std::get_if<CreateTableStatement>(&tree)) {
        m_store->CreateTable(create->table.text, create->columns);
    } else if (const auto *drop = std::get_if<DropTableStatement>(&tree)) {
        m_store->DropTable(drop->table.text);
    } else if (const auto *alter = std::get_if<AlterTableStatement>(&tree)) {
        m_store->AlterTable(*alter);
    } else if (const auto *replace = std::get_if<ReplaceStatement>(&tree)) {
        return Run(*prepared.parsed, *replace);
    } else if (const auto *use = std::get_if<UseStatement>(&tree)) {
        Run(*use);
    } else if (const auto *pack = std::get_if<PackStatement>(&tree)) {
        m_store->PackTable(TableOrArea(pack->table));
    }
    return 0;
}

RecordsetRef Executor::Select(std::string_view statement) {
    PreparedStatement &prepared = m_cache.Get(statement);
    if (const auto *select = std::get_if<SelectStatement>(&prepared.parsed->statement)) {
        return Run(prepared, statement, *select);
    }
    Execute(statement);
    auto none = std::make_shared<StaticRecordset>(std::vector<Column>());
    none->Close();
    return none;
}

void Executor::ReadPages(std::string_view statement, const std::function<bool(const RecordsetRef &)> &use) {
    PagePlace place;
    while (use(ReadPage(statement, place)) && !place.isEnd) {
    }
}

/// Lets go of the table at the end of each page, so that whoever uses the rows may take their time.
RecordsetRef Executor::ReadPage(std::string_view statement, PagePlace &place) {
    PreparedStatement &prepared = m_cache.Get(statement);
    const auto *select = std::get_if<SelectStatement>(&prepared.parsed->statement);
    if (select) {
        const TableUse table(*m_store, select->table.text, Access::Read);
        SelectPlan &plan = PlanFor<BoundSelectPlan, SelectStatement>(prepared, statement, *table).plan;
        if (place.next > 0 && table->GetIncarnation() != place.incarnation) {
            throw Error("The table has changed while it was read.", error_number::kNoCurrentRow);
        }
        place.incarnation = table->GetIncarnation();
        const auto run = [&] { return plan.RunPage(*table, place.next, kPageRows); };
        if (const auto page = AtRow(*table, std::get<SelectStatement>(prepared.parsed->statement).table.text, run)) {
            place.isEnd = page->GetRecordCount() < static_cast<int>(kPageRows);
            return page;
        }
    }
    place.isEnd = true;
    return Select(statement);
}

RecordsetRef Executor::Run(PreparedStatement &prepared, std::string_view text, const SelectStatement &select) {
    const TableUse table(*m_store, select.table.text, Access::Read);
    const CString name = select.table.text;
    SelectPlan &plan = PlanFor<BoundSelectPlan, SelectStatement>(prepared, text, *table).plan;
    std::vector<RowNumber> rows;
    auto recordset = AtRow(*table, name, [&] { return plan.Run(*table, rows); });
    if (plan.HasRowIdentity()) {
        const auto storer = std::make_shared<CellStorer>(m_store, name, table->GetIncarnation(), plan, std::move(rows));
        recordset->SetCellWriter(
            [storer](int row, int column, const Value &value) { storer->Write(row, column, value); });
    }
    return recordset;
}

long long Executor::Run(PreparedStatement &prepared, std::string_view text, const InsertStatement &insert) {
    if (!insert.select.empty()) return InsertSelected(prepared, text);
    const TableUse table(*m_store, insert.table.text, Access::Write);
    PlanFor<InsertPlan, InsertStatement>(prepared, text, *table).Run(*table);
    table->Commit();
    return 1;
}

/// Runs seldom, and is parsed and bound each time.
long long Executor::InsertSelected(PreparedStatement &prepared, std::string_view text) {
    if (prepared.reused) StatementCache::Refresh(prepared, text);
    const ParsedStatement &parsed = *prepared.parsed;
    const auto &insert = std::get<InsertStatement>(parsed.statement);
    const SelectStatement &select = insert.select.front();
    const TableUse target(*m_store, insert.table.text, Access::Write);
    const TableUse source(*m_store, select.table.text, Access::Read);
    const std::vector<int> targets = TargetColumns(parsed, insert, *target);
    SelectPlan plan(parsed, select, *source);
    RequireCount(plan.GetColumns().size(), targets.size(), parsed, select.table.position);

    const auto &columns = target->GetColumns();
    std::vector<const Value *> cells(columns.size(), nullptr);
    std::vector<Value> converted(targets.size());
    long long count = 0;
    const auto append = [&](const std::vector<const Value *> &row) {
        for (std::size_t i = 0; i < targets.size(); ++i) {
            const auto column = static_cast<std::size_t>(targets[i]);
            const TypeClass wanted = ClassOf(columns[column].type);
            cells[column] = row[i];
            if (ClassOf(*row[i]) == wanted || row[i]->IsNull()) continue;
            converted[i] = *row[i];
            ConvertTo(wanted, converted[i]);
            cells[column] = &converted[i];
        }
        target->Append(cells);
        ++count;
    };
    AtRow(*source, select.table.text, [&] { plan.ForEachRow(*source, append); });
    target->Commit();
    return count;
}

long long Executor::Run(const ParsedStatement &parsed, const ReplaceStatement &replace) {
    const CString name = TableOrArea(replace.table);
    const TableUse table(*m_store, name, Access::Write);
    ReplaceWalk walk(parsed, replace, {parsed, &table->GetColumns(), name.View(), {}, false});
    RowNumber &current = m_records[FoldedName(name.View())];
    const long long count = AtRow(*table, name, [&] { return walk.Run(*table, current); });
    table->Commit();
    return count;
}

/// The table that a statement names, or else the one of the current work area.
CString Executor::TableOrArea(const Name &table) const {
    const CString name = table.text.IsEmpty() ? m_area : table.text;
    if (name.IsEmpty()) throw Error("No table is open in the current work area.", error_number::kAliasNotFound);
    return name;
}

void Executor::Run(const UseStatement &use) {
    if (use.table.text.IsEmpty()) {
        const CString name = use.area.text.IsEmpty() ? m_area : use.area.text;
        if (EqualNames(name.View(), m_area.View())) m_area.Empty();
        if (name.IsEmpty()) return;
        m_records.erase(FoldedName(name.View()));
        m_store->CloseTable(name);
        return;
    }
    m_store->UseTable(use.table.text, use.exclusive);
    m_records[FoldedName(use.table.text.View())] = 0;
    m_area = use.table.text;
}

}  // namespace ktl::ado::sql
