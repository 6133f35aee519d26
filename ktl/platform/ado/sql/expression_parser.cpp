#include "ktl/platform/ado/sql/expression_parser.h"

#include <algorithm>
#include <iterator>

#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/sql/functions.h"

namespace ktl::ado::sql {

namespace {

struct SymbolOp {
    const char *symbol;
    Op op;
};

constexpr SymbolOp kComparisons[] = {
    {"=", Op::Equal},      {"==", Op::Equal}, {"<>", Op::NotEqual}, {"!=", Op::NotEqual},     {"#", Op::NotEqual},
    {"<=", Op::LessEqual}, {"<", Op::Less},   {">", Op::Greater},   {">=", Op::GreaterEqual},
};
constexpr SymbolOp kProducts[] = {{"*", Op::Multiply}, {"/", Op::Divide}, {"%", Op::Modulo}};
constexpr SymbolOp kPowers[] = {{"^", Op::Power}, {"**", Op::Power}};
constexpr SymbolOp kSums[] = {{"+", Op::Add}, {"-", Op::Subtract}};

/// Words that stand for a column only where what follows goes on behind an operand.
constexpr const char *kReserved[] = {"from", "where", "order", "and", "or", "set", "values", "into", "like", "is"};
constexpr const char *kBehindOperands[] = {"from", "where", "order", "and", "or",         "like",   "is",
                                           "in",   "not",   "as",    "asc", "descending", "between"};

/// The table's operator that is the current token, or null.
template <std::size_t count>
const SymbolOp *FindOp(const TokenStream &tokens, const SymbolOp (&table)[count]) {
    const auto *found = std::find_if(std::begin(table), std::end(table),
                                     [&](const SymbolOp &row) { return tokens.IsSymbol(row.symbol); });
    return found == std::end(table) ? nullptr : found;
}

Expression Node(Op op, std::uint32_t position) {
    Expression node;
    node.op = op;
    node.position = position;
    return node;
}

/// Puts a right operand behind `left`; `joins` adds it to the chain that `left` is.
void Append(Expression &left, Op op, Expression right, std::uint32_t position, bool joins) {
    if (!joins) {
        Expression node = Node(op, position);
        node.operands.push_back(std::move(left));
        left = std::move(node);
    }
    left.operands.push_back(std::move(right));
}

/// A reserved word that is in the place of an operand and cannot be a column's name there.
bool IsMisplaced(TokenStream &tokens) {
    const auto isCurrent = [&](const char *word) { return EqualNames(tokens.Current().text, word); };
    if (std::none_of(std::begin(kReserved), std::end(kReserved), isCurrent)) return false;
    if (tokens.Ahead().kind == TokenKind::Symbol) return tokens.IsAheadSymbol("(");
    return std::none_of(std::begin(kBehindOperands), std::end(kBehindOperands),
                        [&](const char *word) { return tokens.IsAheadWord(word); });
}

void RefuseSelect(const TokenStream &tokens) {
    if (tokens.IsWord("select")) tokens.Fail("a Select within a statement is not supported");
}

/// A chain of operators is a tree as deep as it is long.
void CountLink(const TokenStream &tokens, int &chain) {
    if (++chain > kMaxDepth) tokens.Fail("the statement is nested too deeply");
}

}  // namespace

Expression ExpressionParser::ParseOr() {
    const TokenStream::Depth depth(m_tokens);
    Expression left = ParseAnd();
    for (bool joins = false; m_tokens.IsWord("or") || m_tokens.IsWord(".or."); joins = true) {
        const std::uint32_t position = m_tokens.Position();
        m_tokens.Advance();
        Append(left, Op::Or, ParseAnd(), position, joins);
    }
    return left;
}

Expression ExpressionParser::ParseAnd() {
    Expression left = ParseNot();
    for (bool joins = false; m_tokens.IsWord("and") || m_tokens.IsWord(".and."); joins = true) {
        const std::uint32_t position = m_tokens.Position();
        m_tokens.Advance();
        Append(left, Op::And, ParseNot(), position, joins);
    }
    return left;
}

Expression ExpressionParser::ParseNot() {
    if (!m_tokens.IsWord("not") && !m_tokens.IsWord(".not.") && !m_tokens.IsSymbol("!")) return ParseComparison();
    const TokenStream::Depth depth(m_tokens);
    Expression node = Node(Op::Not, m_tokens.Position());
    m_tokens.Advance();
    node.operands.push_back(ParseNot());
    return node;
}

Expression ExpressionParser::ParseComparison() {
    Expression left = ParseSum();
    if (!m_tokens.Is(TokenKind::Symbol)) return ParsePredicate(std::move(left));
    const SymbolOp *comparison = FindOp(m_tokens, kComparisons);
    if (!comparison) return left;
    Expression node = Node(comparison->op, m_tokens.Position());
    m_tokens.Advance();
    node.operands.push_back(std::move(left));
    node.operands.push_back(ParseSum());
    return node;
}

bool ExpressionParser::TakeNotOfPredicate() {
    if (!m_tokens.IsWord("not")) return false;
    const bool follows = m_tokens.IsAheadWord("like") || m_tokens.IsAheadWord("in") || m_tokens.IsAheadWord("between");
    if (follows) m_tokens.Advance();
    return follows;
}

Expression ExpressionParser::ParsePredicate(Expression left) {
    const std::uint32_t position = m_tokens.Position();
    bool negated = TakeNotOfPredicate();
    Expression node;
    if (m_tokens.TakeWord("like")) {
        node = Node(Op::Like, position);
        node.operands.push_back(std::move(left));
        node.operands.push_back(ParseSum());
        if (m_tokens.TakeWord("escape")) node.operands.push_back(ParsePrimary());
    } else if (m_tokens.IsWord("in") && m_tokens.IsAheadSymbol("(")) {
        node = ParseIn(std::move(left), position);
    } else if (m_tokens.TakeWord("between")) {
        node = ParseBetween(std::move(left), position);
    } else if (m_tokens.TakeWord("is")) {
        negated = m_tokens.TakeWord("not");
        if (!m_tokens.TakeWord(".null.")) m_tokens.ExpectWord("null", "Null was expected");
        node = Node(Op::IsNull, position);
        node.operands.push_back(std::move(left));
    } else {
        if (negated) m_tokens.Fail("a list in brackets was expected");
        return left;
    }
    node.flag = negated;
    return node;
}

Expression ExpressionParser::ParseIn(Expression left, std::uint32_t position) {
    Expression node = Node(Op::In, position);
    node.operands.push_back(std::move(left));
    m_tokens.Advance();
    m_tokens.ExpectSymbol("(", "a list in brackets was expected");
    RefuseSelect(m_tokens);
    do {
        node.operands.push_back(ParseSum());
    } while (m_tokens.TakeSymbol(","));
    m_tokens.ExpectSymbol(")", "a comma or the end of the list was expected");
    return node;
}

Expression ExpressionParser::ParseBetween(Expression left, std::uint32_t position) {
    Expression node = Node(Op::Between, position);
    node.operands.push_back(std::move(left));
    node.operands.push_back(ParseSum());
    if (!m_tokens.TakeWord(".and.")) m_tokens.ExpectWord("and", "And was expected");
    node.operands.push_back(ParseSum());
    return node;
}

Expression ExpressionParser::ParseSum() {
    Expression left = ParseProduct();
    int chain = 0;
    bool joins = false;
    while (const SymbolOp *found = FindOp(m_tokens, kSums)) {
        const std::uint32_t position = m_tokens.Position();
        joins = joins && found->op == Op::Add;
        if (!joins) CountLink(m_tokens, chain);
        m_tokens.Advance();
        Append(left, found->op, ParseProduct(), position, joins);
        joins = found->op == Op::Add;
    }
    return left;
}

Expression ExpressionParser::ParseProduct() {
    Expression left = ParsePower();
    int chain = 0;
    while (const SymbolOp *found = FindOp(m_tokens, kProducts)) {
        const std::uint32_t position = m_tokens.Position();
        CountLink(m_tokens, chain);
        m_tokens.Advance();
        Append(left, found->op, ParsePower(), position, false);
    }
    return left;
}

Expression ExpressionParser::ParsePower() {
    Expression left = ParseUnary();
    int chain = 0;
    while (FindOp(m_tokens, kPowers)) {
        const std::uint32_t position = m_tokens.Position();
        CountLink(m_tokens, chain);
        m_tokens.Advance();
        Append(left, Op::Power, ParseUnary(), position, false);
    }
    return left;
}

Expression ExpressionParser::ParseUnary() {
    if (!FindOp(m_tokens, kSums)) return ParsePrimary();
    const TokenStream::Depth depth(m_tokens);
    const bool minus = m_tokens.IsSymbol("-");
    const std::uint32_t position = m_tokens.Position();
    m_tokens.Advance();
    if (m_tokens.Is(TokenKind::Number)) {
        const std::size_t number = m_tokens.Current().begin;
        const bool adjacent = minus && number == position + 1;
        return m_literals.ParseNumberOrText(minus, adjacent ? position : number);
    }
    Expression operand = ParseUnary();
    if (!minus) return operand;
    Expression node = Node(Op::Negate, position);
    node.operands.push_back(std::move(operand));
    return node;
}

Expression ExpressionParser::ParsePrimary() {
    switch (m_tokens.Current().kind) {
        case TokenKind::Number:
        case TokenKind::String:
            return m_literals.ParseNumberOrText(false, m_tokens.Current().begin);
        case TokenKind::Date:
            return m_literals.ParseDate();
        case TokenKind::Bracketed:
            return m_bracketsAreText ? m_literals.ParseBracketedText() : ParseColumn();
        case TokenKind::Word:
            return ParseWordPrimary();
        case TokenKind::Symbol:
            if (m_tokens.IsSymbol("(")) return ParseBracket();
            break;
        case TokenKind::End:
            break;
    }
    m_tokens.Fail("a value or a column was expected");
}

Expression ExpressionParser::ParseBracket() {
    m_tokens.ExpectSymbol("(", "a bracket was expected");
    RefuseSelect(m_tokens);
    Expression inner = ParseOr();
    m_tokens.ExpectSymbol(")", "a closing bracket was expected");
    return inner;
}

Expression ExpressionParser::ParseWordPrimary() {
    Expression constant;
    if (m_literals.ParseWord(constant)) return constant;
    if (IsMisplaced(m_tokens)) m_tokens.Fail("a value or a column was expected");
    return m_tokens.IsAheadSymbol("(") ? ParseCall() : ParseColumn();
}

Expression ExpressionParser::ParseColumn() {
    const Name name = m_tokens.ParseName("a value or a column was expected");
    Expression node = Node(Op::Column, name.position);
    node.name = name.text;
    while (m_tokens.TakeSymbol(".")) {
        node.qualifier = node.name;
        node.name = m_tokens.ParseName("a column's name was expected").text;
    }
    return node;
}

Expression ExpressionParser::ParseCall() {
    const FunctionFacts *function = FindFunction(m_tokens.Current().text);
    if (!function) m_tokens.Fail("no function has this name");
    Expression node = Node(function->aggregate ? Op::Aggregate : Op::Function, m_tokens.Position());
    node.function = function->id;
    m_tokens.Advance();
    m_tokens.ExpectSymbol("(", "a bracket was expected");
    if (function->id == FunctionId::Count && m_tokens.TakeSymbol("*")) {
        node.flag = true;
    } else {
        do {
            node.operands.push_back(ParseOr());
        } while (m_tokens.TakeSymbol(","));
        if (node.operands.size() < function->minArguments || node.operands.size() > function->maxArguments) {
            ThrowSyntax(m_tokens.GetStatement(), node.position, "a function has the wrong number of arguments");
        }
    }
    m_tokens.ExpectSymbol(")", "a closing bracket was expected");
    return node;
}

}  // namespace ktl::ado::sql
