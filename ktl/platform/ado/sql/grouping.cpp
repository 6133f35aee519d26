#include "ktl/platform/ado/sql/grouping.h"

#include <algorithm>
#include <unordered_map>

#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/sql/token.h"

namespace ktl::ado::sql {

namespace {

BindScope WithSums(BindScope scope) {
    scope.aggregates = true;
    return scope;
}

/// The result column that a key names by its number or by its own name; null for none.
const SelectItem *FindItem(const OrderKey &key, const SelectStatement &select, const ParsedStatement &parsed) {
    if (key.number > 0) {
        const bool star =
            std::any_of(select.items.begin(), select.items.end(), [](const SelectItem &item) { return item.star; });
        if (star || key.number > static_cast<int>(select.items.size())) {
            ThrowSyntax(parsed.text, key.position, "there is no result column of this number");
        }
        return &select.items[static_cast<std::size_t>(key.number - 1)];
    }
    if (key.expression.op != Op::Column) return nullptr;
    const auto found = std::find_if(select.items.begin(), select.items.end(), [&](const SelectItem &item) {
        return !item.alias.IsEmpty() && EqualNames(item.alias.View(), key.expression.name.View());
    });
    return found == select.items.end() ? nullptr : &*found;
}

bool GoesBefore(const Group &a, const Group &b) {
    for (std::size_t i = 0; i < a.keys.size(); ++i) {
        if (const int order = CompareNullsFirst(a.keys[i], b.keys[i])) return order < 0;
    }
    return false;
}

}  // namespace

int CompareNullsFirst(const Value &a, const Value &b) {
    if (a.IsNull() || b.IsNull()) return static_cast<int>(b.IsNull()) - static_cast<int>(a.IsNull());
    return CompareValues(a, b);
}

std::string Fingerprint(const std::vector<const Value *> &cells) {
    std::string key;
    for (const Value *cell : cells) {
        const bool bytes = cell->GetKind() == Value::Kind::Text || cell->GetKind() == Value::Kind::Bytes;
        std::string text;
        if (bytes) {
            text = cell->Bytes();
        } else if (!cell->IsNull()) {
            text = cell->ToText().GetString();
        }
        key += cell->IsNull() ? 'n' : 'v';
        key += std::to_string(text.size());
        key += ':';
        key += text;
    }
    return key;
}

Grouping::Grouping(const ParsedStatement &parsed, const SelectStatement &select, const BindScope &scope)
    : m_parsed(parsed) {
    m_keys.reserve(select.groups.size());
    for (const OrderKey &key : select.groups) BindKey(key, select, scope);
    for (const Expression &having : select.having) {
        m_having.emplace_back(having, WithSums(scope));
        if (m_having.back().GetType() != TypeClass::Bool) {
            ThrowSyntax(parsed.text, having.position, "the condition behind Having is not a logical value");
        }
        RequireGrouped(having);
    }
}

void Grouping::BindKey(const OrderKey &key, const SelectStatement &select, const BindScope &scope) {
    const SelectItem *item = FindItem(key, select, m_parsed);
    const Expression &expression = item ? item->expression : key.expression;
    m_keys.emplace_back(expression, scope);
    if (item) m_items.push_back(&expression);
    if (expression.op == Op::Column) m_columns.push_back(expression.name);
}

void Grouping::RequireGrouped(const Expression &expression) const {
    if (expression.op == Op::Aggregate) return;
    if (std::find(m_items.begin(), m_items.end(), &expression) != m_items.end()) return;
    if (expression.op == Op::Column) {
        const bool known = std::any_of(m_columns.begin(), m_columns.end(), [&](const CString &column) {
            return EqualNames(column.View(), expression.name.View());
        });
        if (!known) {
            ThrowSyntax(m_parsed.text, expression.position, "a column beside sums over rows needs its Group By");
        }
    }
    for (const Expression &operand : expression.operands) RequireGrouped(operand);
}

std::vector<Group> Grouping::Gather(Table &table, RowScan &scan) {
    std::vector<Group> groups;
    std::unordered_map<std::string, std::size_t> places;
    std::vector<const Value *> cells(m_keys.size());
    for (BoundExpression &key : m_keys) key.Prepare();
    while (scan.Next(table)) {
        for (std::size_t i = 0; i < cells.size(); ++i) cells[i] = &m_keys[i].Evaluate(table);
        const auto [place, fresh] = places.emplace(Fingerprint(cells), groups.size());
        if (fresh) {
            groups.emplace_back();
            for (const Value *cell : cells) groups.back().keys.push_back(*cell);
        }
        groups[place->second].rows.push_back(table.GetRow());
    }
    std::stable_sort(groups.begin(), groups.end(), GoesBefore);
    return groups;
}

void Grouping::BeginGroup() {
    for (BoundExpression &having : m_having) having.Prepare();
}

void Grouping::TakeRow(Table &table) {
    for (BoundExpression &having : m_having) having.Accumulate(table);
}

bool Grouping::Accepts(Table &table) {
    return m_having.empty() || m_having.front().IsTrue(table);
}

}  // namespace ktl::ado::sql
