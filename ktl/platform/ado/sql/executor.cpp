#include "ktl/platform/ado/sql/executor.h"

#include <algorithm>
#include <limits>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/sql/row_scan.h"
#include "ktl/platform/ado/sql/select_plan.h"
#include "ktl/platform/ado/sql/token.h"
#include "ktl/platform/ado/static_recordset.h"

namespace ktl::ado::sql {

namespace {

/// Rows of a page: enough to make opening and locking cheap beside them, few beside a table.
constexpr std::size_t kPageRows = 1000;

int FindColumn(const std::vector<Column> &columns, const Name &name, const ParsedStatement &parsed) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (EqualNames(columns[i].name.View(), name.text.View())) return static_cast<int>(i);
    }
    ThrowAt(parsed.text, name.position, "Column \"" + name.text + "\" is not found", error_number::kColumnNotFound);
}

/// Numbers may go into logical columns, texts into byte blocks; otherwise the classes have to be the same.
void RequireAssignable(TypeClass given, const Column &column, const ParsedStatement &parsed, std::size_t position) {
    const TypeClass taken = ClassOf(column.type);
    if (given == TypeClass::Null || given == taken) return;
    if (given == TypeClass::Number && taken == TypeClass::Bool) return;
    if (given == TypeClass::Text && taken == TypeClass::Bytes) return;
    ThrowAt(parsed.text, position,
            CString("Column \"") + column.name + "\" takes a " + ClassName(taken) + ", not a " + ClassName(given) + ",",
            error_number::kOperandTypes);
}

/// A plan that is good for one state of one table.
class BoundPlan : public Plan {
  public:
    explicit BoundPlan(const Table &table) : m_incarnation(table.GetIncarnation()) {}
    bool IsGoodFor(const Table &table) const { return m_incarnation == table.GetIncarnation(); }

  private:
    std::uint64_t m_incarnation;
};

std::vector<int> TargetColumns(const ParsedStatement &parsed, const InsertStatement &insert, const Table &table) {
    const auto &columns = table.GetColumns();
    std::vector<int> targets;
    for (const Name &name : insert.columns) {
        const int column = FindColumn(columns, name, parsed);
        if (std::find(targets.begin(), targets.end(), column) != targets.end()) {
            ThrowAt(parsed.text, name.position, "Column \"" + name.text + "\" stands twice in the list",
                    error_number::kSyntax);
        }
        targets.push_back(column);
    }
    if (insert.columns.empty()) {
        for (std::size_t i = 0; i < columns.size(); ++i) targets.push_back(static_cast<int>(i));
    }
    return targets;
}

void RequireCount(std::size_t given, std::size_t wanted, const ParsedStatement &parsed, std::size_t position) {
    if (given == wanted) return;
    CString text;
    text.Format("%d values stand for %d columns", static_cast<int>(given), static_cast<int>(wanted));
    ThrowAt(parsed.text, position, text, error_number::kSyntax);
}

class InsertPlan : public BoundPlan {
  public:
    InsertPlan(const ParsedStatement &parsed, const InsertStatement &insert, Table &table)
        : BoundPlan(table), m_cells(table.GetColumns().size(), nullptr) {
        const std::vector<int> targets = TargetColumns(parsed, insert, table);
        RequireCount(insert.values.size(), targets.size(), parsed, insert.values.front().position);
        m_computed.reserve(insert.values.size());
        for (std::size_t i = 0; i < targets.size(); ++i) {
            const auto target = static_cast<std::size_t>(targets[i]);
            BoundExpression value(insert.values[i], {parsed, nullptr, {}, {}, false});
            RequireAssignable(value.GetType(), table.GetColumns()[target], parsed, insert.values[i].position);
            if (const Value *literal = value.GetLiteral()) {
                m_cells[target] = literal;
            } else {
                m_computed.emplace_back(target, std::move(value));
            }
        }
    }

    void Run(Table &table) {
        for (auto &[target, expression] : m_computed) {
            expression.Prepare();
            m_cells[target] = &expression.Evaluate(table);
        }
        table.Append(m_cells);
    }

  private:
    /// A value a column: the statement's own literal, a computed one, or null for a column left out.
    std::vector<const Value *> m_cells;
    std::vector<std::pair<std::size_t, BoundExpression>> m_computed;
};

struct BoundAssignment {
    int column;
    BoundExpression value;
};

std::vector<BoundAssignment> BindAssignments(const std::vector<Assignment> &assignments, const BindScope &scope) {
    std::vector<BoundAssignment> bound;
    bound.reserve(assignments.size());
    for (const Assignment &assignment : assignments) {
        const int column = FindColumn(*scope.columns, assignment.column, scope.statement);
        bound.push_back({column, BoundExpression(assignment.value, scope)});
        RequireAssignable(bound.back().value.GetType(), (*scope.columns)[static_cast<std::size_t>(column)],
                          scope.statement, assignment.value.position);
    }
    return bound;
}

class UpdatePlan : public BoundPlan {
  public:
    UpdatePlan(const ParsedStatement &parsed, const UpdateStatement &update, Table &table)
        : BoundPlan(table),
          m_scope{parsed, &table.GetColumns(), update.table.text.View(), {}, false},
          m_assignments(BindAssignments(update.assignments, m_scope)),
          m_scan(update.where, m_scope) {}

    long long Run(Table &table) {
        for (BoundAssignment &assignment : m_assignments) assignment.value.Prepare();
        long long count = 0;
        for (m_scan.Start(table); m_scan.Next(table); ++count) {
            for (BoundAssignment &assignment : m_assignments) {
                table.SetCell(assignment.column, assignment.value.Evaluate(table));
            }
        }
        return count;
    }

  private:
    BindScope m_scope;
    std::vector<BoundAssignment> m_assignments;
    RowScan m_scan;
};

class DeletePlan : public BoundPlan {
  public:
    DeletePlan(const ParsedStatement &parsed, const DeleteStatement &remove, Table &table)
        : BoundPlan(table), m_scan(remove.where, {parsed, &table.GetColumns(), remove.table.text.View(), {}, false}) {}

    long long Run(Table &table) {
        long long count = 0;
        for (m_scan.Start(table); m_scan.Next(table); ++count) table.DeleteRow();
        return count;
    }

  private:
    RowScan m_scan;
};

class BoundSelectPlan : public BoundPlan {
  public:
    BoundSelectPlan(const ParsedStatement &parsed, const SelectStatement &select, Table &table)
        : BoundPlan(table), plan(parsed, select, table) {}
    SelectPlan plan;
};

/// Replace walks records from a work area's current one on, unlike Update, and leaves the area where it ended.
class ReplaceWalk {
  public:
    ReplaceWalk(const ParsedStatement &parsed, const ReplaceStatement &replace, const BindScope &scope)
        : m_replace(replace),
          m_assignments(BindAssignments(replace.assignments, scope)),
          m_for(replace.forCondition, scope),
          m_while(replace.whileCondition, scope) {
        for (std::size_t i = 0; i < m_assignments.size(); ++i) {
            const Column &column = (*scope.columns)[static_cast<std::size_t>(m_assignments[i].column)];
            if (replace.assignments[i].additive && column.type != DataType::LongVarChar) {
                ThrowSyntax(parsed.text, replace.assignments[i].column.position, "only a memo takes Additive");
            }
        }
    }

    long long Run(Table &table, RowNumber &current) {
        for (BoundAssignment &assignment : m_assignments) assignment.value.Prepare();
        m_for.Prepare();
        m_while.Prepare();
        const RowNumber first = FirstRow(current);
        const long long limit = Limit();
        long long count = 0;
        long long visited = 0;
        for (table.Rewind(); visited < limit && table.Next();) {
            if (table.GetRow() < first) continue;
            // A single record that is deleted is not replaced by the one behind it.
            if (limit == 1 && table.GetRow() != first) break;
            current = table.GetRow();
            if (!m_while.Accepts(table)) break;
            ++visited;
            if (!m_for.Accepts(table)) continue;
            Assign(table);
            ++count;
        }
        return count;
    }

  private:
    using Scope = ReplaceStatement::Scope;

    bool HasFor() const { return !m_replace.forCondition.empty(); }
    bool HasWhile() const { return !m_replace.whileCondition.empty(); }

    RowNumber FirstRow(RowNumber current) const {
        const bool all = m_replace.scope == Scope::All;
        if (all || (m_replace.scope == Scope::Default && HasFor() && !HasWhile())) return 0;
        if (m_replace.scope != Scope::Record) return current;
        return static_cast<RowNumber>(std::max<long long>(m_replace.count - 1, 0));
    }
    long long Limit() const {
        if (m_replace.scope == Scope::Next) return m_replace.count;
        const bool one = m_replace.scope == Scope::Default && !HasFor() && !HasWhile();
        return one || m_replace.scope == Scope::Record ? 1 : std::numeric_limits<long long>::max();
    }
    void Assign(Table &table) {
        for (std::size_t i = 0; i < m_assignments.size(); ++i) {
            const Value value = m_assignments[i].value.Evaluate(table);
            if (m_replace.assignments[i].additive) {
                table.AppendToCell(m_assignments[i].column, value);
            } else {
                table.SetCell(m_assignments[i].column, value);
            }
        }
    }

    const ReplaceStatement &m_replace;
    std::vector<BoundAssignment> m_assignments;
    RowScan m_for;
    RowScan m_while;
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

/// Stores a cell of a recordset's row in the table that it came from.
class CellStorer {
  public:
    CellStorer(std::weak_ptr<Store> store, const CString &table, std::uint64_t incarnation, const SelectPlan &plan,
               std::vector<RowNumber> rows)
        : m_store(std::move(store)),
          m_table(table),
          m_incarnation(incarnation),
          m_sources(plan.GetSourceColumns()),
          m_rows(std::move(rows)) {}

    void Write(int row, int column, const Value &value) const {
        const std::shared_ptr<Store> store = m_store.lock();
        const int source = m_sources[static_cast<std::size_t>(column)];
        if (!store) throw Error("The recordset's connection is gone.", error_number::kClosed);
        if (source < 0) throw Error("A computed column cannot be written.", error_number::kReadOnly);
        const TableUse table(*store, m_table, Access::Write);
        if (table->GetIncarnation() != m_incarnation || !table->Seek(m_rows[static_cast<std::size_t>(row)])) {
            throw Error("The table has changed since the recordset was opened.", error_number::kNoCurrentRow);
        }
        Value converted = value;
        ConvertTo(ClassOf(table->GetColumns()[static_cast<std::size_t>(source)].type), converted);
        table->SetCell(source, converted);
        table->Commit();
    }

  private:
    std::weak_ptr<Store> m_store;
    CString m_table;
    std::uint64_t m_incarnation;
    std::vector<int> m_sources;
    std::vector<RowNumber> m_rows;
};

}  // namespace

long long Executor::Execute(std::string_view statement) {
    PreparedStatement &prepared = m_cache.Get(statement);
    const Statement &tree = prepared.parsed->statement;
    if (const auto *insert = std::get_if<InsertStatement>(&tree)) return Run(prepared, statement, *insert);
    if (const auto *update = std::get_if<UpdateStatement>(&tree)) return Run(prepared, statement, *update);
    if (const auto *remove = std::get_if<DeleteStatement>(&tree)) return Run(prepared, statement, *remove);
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
        if (const auto page = plan.RunPage(*table, place.next, kPageRows)) {
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
    auto recordset = plan.Run(*table, rows);
    if (plan.HasRowIdentity()) {
        const auto storer = std::make_shared<CellStorer>(m_store, name, table->GetIncarnation(), plan, std::move(rows));
        recordset->SetCellWriter(
            [storer](int row, int column, const Value &value) { storer->Write(row, column, value); });
    }
    return recordset;
}

long long Executor::Run(PreparedStatement &prepared, std::string_view text, const InsertStatement &insert) {
    if (!insert.select.empty()) return InsertSelected(prepared, insert);
    const TableUse table(*m_store, insert.table.text, Access::Write);
    PlanFor<InsertPlan, InsertStatement>(prepared, text, *table).Run(*table);
    table->Commit();
    return 1;
}

long long Executor::InsertSelected(PreparedStatement &prepared, const InsertStatement &insert) {
    // A plan of an earlier text would point to that text's places; such a statement runs seldom and is bound each time.
    const ParsedStatement &parsed = *prepared.parsed;
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
    plan.ForEachRow(*source, [&](const std::vector<const Value *> &row) {
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
    });
    target->Commit();
    return count;
}

long long Executor::Run(PreparedStatement &prepared, std::string_view text, const UpdateStatement &update) {
    const TableUse table(*m_store, update.table.text, Access::Write);
    const long long count = PlanFor<UpdatePlan, UpdateStatement>(prepared, text, *table).Run(*table);
    table->Commit();
    return count;
}

long long Executor::Run(PreparedStatement &prepared, std::string_view text, const DeleteStatement &remove) {
    const TableUse table(*m_store, remove.table.text, Access::Write);
    const long long count = PlanFor<DeletePlan, DeleteStatement>(prepared, text, *table).Run(*table);
    table->Commit();
    return count;
}

long long Executor::Run(const ParsedStatement &parsed, const ReplaceStatement &replace) {
    const CString name = replace.table.text.IsEmpty() ? m_area : replace.table.text;
    if (name.IsEmpty()) throw Error("No table is open in the current work area.", error_number::kAliasNotFound);
    const TableUse table(*m_store, name, Access::Write);
    ReplaceWalk walk(parsed, replace, {parsed, &table->GetColumns(), name.View(), {}, false});
    const long long count = walk.Run(*table, m_records[FoldedName(name.View())]);
    table->Commit();
    return count;
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
