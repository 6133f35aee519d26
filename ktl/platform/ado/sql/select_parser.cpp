#include <algorithm>
#include <iterator>

#include "ktl/platform/ado/sql/row_statements.h"

namespace ktl::ado::sql {

namespace {

/// What follows a table in a Select and is no name for it.
constexpr const char *kClauses[] = {"where", "group", "having", "order", "union", "into", "inner",
                                    "left",  "right", "full",   "cross", "join",  "on",   "limit"};
constexpr const char *kJoins[] = {"inner", "left", "right", "full", "cross", "join", "on"};
constexpr const char *kUnsupported[] = {"union", "into", "limit", "having", "group", "where", "order"};

template <std::size_t count>
bool IsOneOf(const TokenStream &tokens, const char *const (&words)[count]) {
    return std::any_of(std::begin(words), std::end(words), [&](const char *word) { return tokens.IsWord(word); });
}

void ParseTop(TokenStream &tokens, SelectStatement &select) {
    Value value;
    std::size_t position = 0;
    const Token number = tokens.Current();
    if (number.kind != TokenKind::Number || !ScanNumber(number.text, position, value)) {
        tokens.Fail("a number was expected behind Top");
    }
    tokens.Advance();
    select.top = value.ToDouble();
    select.topPercent = tokens.TakeWord("percent");
    if (select.top < 0 || (!select.topPercent && !value.ToInteger()) || (select.topPercent && select.top > 100)) {
        ThrowSyntax(tokens.GetStatement(), number.begin, "a whole number of rows was expected behind Top");
    }
}

/// Distinct, Top and All, unless they are the names of columns.
void ParsePrefixes(TokenStream &tokens, SelectStatement &select) {
    while (true) {
        if (tokens.IsWord("distinct") && !tokens.IsAheadSymbol(",") && !tokens.IsAheadWord("from")) {
            tokens.Advance();
            select.distinct = true;
        } else if (tokens.IsWord("top") && tokens.Ahead().kind == TokenKind::Number) {
            tokens.Advance();
            ParseTop(tokens, select);
        } else if (tokens.IsWord("all") && tokens.Ahead().kind != TokenKind::Symbol && !tokens.IsAheadWord("from")) {
            tokens.Advance();
        } else {
            return;
        }
    }
}

SelectItem ParseItem(TokenStream &tokens, ExpressionParser &expressions) {
    SelectItem item;
    item.expression.position = tokens.Position();
    if (tokens.TakeSymbol("*")) {
        item.star = true;
        return item;
    }
    item.expression = expressions.Parse();
    const bool named = tokens.TakeWord("as");
    const bool name = tokens.Is(TokenKind::Bracketed) || (tokens.Is(TokenKind::Word) && !tokens.IsWord("from"));
    if (named || name) item.alias = tokens.ParseName("a name for the column was expected").text;
    return item;
}

void ParseFrom(TokenStream &tokens, SelectStatement &select) {
    tokens.ExpectWord("from", "a comma or From was expected");
    if (tokens.IsSymbol("(")) tokens.Fail("a Select within a statement is not supported");
    select.table = tokens.ParseTableName();
    const bool named = tokens.TakeWord("as");
    if (named || (tokens.Is(TokenKind::Word) && !IsOneOf(tokens, kClauses))) {
        select.alias = tokens.ParseName("a name for the table was expected").text;
    }
    if (tokens.IsSymbol(",") || IsOneOf(tokens, kJoins)) {
        tokens.Fail("a statement reads one table; joins are not supported");
    }
}

OrderKey ParseKey(TokenStream &tokens, ExpressionParser &expressions) {
    OrderKey key;
    key.position = tokens.Position();
    if (!tokens.Is(TokenKind::Number)) {
        key.expression = expressions.Parse();
        return key;
    }
    key.number = tokens.ParseSmallNumber();
    if (key.number < 1) ThrowSyntax(tokens.GetStatement(), key.position, "result columns are counted from 1");
    return key;
}

void ParseGroups(TokenStream &tokens, ExpressionParser &expressions, SelectStatement &select) {
    if (!tokens.TakeWord("group")) return;
    tokens.ExpectWord("by", "By was expected behind Group");
    do {
        select.groups.push_back(ParseKey(tokens, expressions));
    } while (tokens.TakeSymbol(","));
    if (tokens.TakeWord("having")) select.having.push_back(expressions.Parse());
}

void ParseOrder(TokenStream &tokens, ExpressionParser &expressions, SelectStatement &select) {
    if (!tokens.TakeWord("order")) return;
    tokens.ExpectWord("by", "By was expected behind Order");
    do {
        OrderKey key = ParseKey(tokens, expressions);
        if (tokens.TakeWord("descending")) {
            key.descending = true;
        } else if (!tokens.TakeWord("ascending")) {
            tokens.TakeWord("asc");
        }
        select.order.push_back(std::move(key));
    } while (tokens.TakeSymbol(","));
}

}  // namespace

SelectStatement ParseSelect(TokenStream &tokens, ExpressionParser &expressions) {
    SelectStatement select;
    ParsePrefixes(tokens, select);
    do {
        select.items.push_back(ParseItem(tokens, expressions));
    } while (tokens.TakeSymbol(","));
    ParseFrom(tokens, select);
    if (tokens.TakeWord("where")) select.where.push_back(expressions.Parse());
    ParseGroups(tokens, expressions, select);
    ParseOrder(tokens, expressions, select);
    if (IsOneOf(tokens, kUnsupported)) tokens.Fail("this clause is not supported here");
    return select;
}

}  // namespace ktl::ado::sql
