#include "ktl/platform/ado/sql/row_statements.h"

namespace ktl::ado::sql {

namespace {

std::vector<Expression> ParseWhere(TokenStream &tokens, ExpressionParser &expressions) {
    std::vector<Expression> where;
    if (tokens.TakeWord("where")) where.push_back(expressions.Parse());
    return where;
}

void ParseValues(TokenStream &tokens, ExpressionParser &expressions, InsertStatement &insert) {
    tokens.ExpectWord("values", "Values or Select was expected");
    tokens.ExpectSymbol("(", "the list of values was expected");
    expressions.SetBracketsAreText(true);
    do {
        if (tokens.IsSymbol(",") || tokens.IsSymbol(")")) tokens.Fail("a value is missing in the list");
        insert.values.push_back(expressions.Parse());
    } while (tokens.TakeSymbol(","));
    expressions.SetBracketsAreText(false);
    tokens.ExpectSymbol(")", "a comma or the end of the list of values was expected");
}

bool ParseReplaceScope(TokenStream &tokens, ReplaceStatement &replace) {
    using Scope = ReplaceStatement::Scope;
    if (tokens.TakeWord("all")) {
        replace.scope = Scope::All;
    } else if (tokens.TakeWord("rest")) {
        replace.scope = Scope::Rest;
    } else if (tokens.TakeWord("next")) {
        replace.scope = Scope::Next;
        replace.count = tokens.ParseSmallNumber();
    } else if (tokens.TakeWord("record")) {
        replace.scope = Scope::Record;
        replace.count = tokens.ParseSmallNumber();
    } else {
        return false;
    }
    return true;
}

void ParseCondition(TokenStream &tokens, ExpressionParser &expressions, std::vector<Expression> &condition) {
    if (!condition.empty()) tokens.Fail("a second condition of the same kind");
    condition.push_back(expressions.Parse());
}

void ParseReplaceTail(TokenStream &tokens, ExpressionParser &expressions, ReplaceStatement &replace) {
    while (tokens.Is(TokenKind::Word)) {
        if (tokens.TakeWord("for")) {
            ParseCondition(tokens, expressions, replace.forCondition);
        } else if (tokens.TakeWord("while")) {
            ParseCondition(tokens, expressions, replace.whileCondition);
        } else if (tokens.TakeWord("in")) {
            replace.table = tokens.ParseTableName();
        } else if (!ParseReplaceScope(tokens, replace)) {
            tokens.Fail("For, While, In or a scope was expected");
        }
    }
}

}  // namespace

InsertStatement ParseInsert(TokenStream &tokens, ExpressionParser &expressions) {
    InsertStatement insert;
    tokens.ExpectWord("into", "Into was expected");
    insert.table = tokens.ParseTableName();
    if (tokens.TakeSymbol("(")) {
        do {
            insert.columns.push_back(tokens.ParseName("a column's name was expected"));
        } while (tokens.TakeSymbol(","));
        tokens.ExpectSymbol(")", "a comma or the end of the list of columns was expected");
    }
    if (tokens.TakeWord("select")) {
        insert.select.push_back(ParseSelect(tokens, expressions));
    } else {
        ParseValues(tokens, expressions, insert);
    }
    return insert;
}

UpdateStatement ParseUpdate(TokenStream &tokens, ExpressionParser &expressions) {
    UpdateStatement update;
    update.table = tokens.ParseTableName();
    tokens.ExpectWord("set", "Set was expected");
    do {
        Assignment assignment;
        assignment.column = tokens.ParseName("a column's name was expected");
        tokens.ExpectSymbol("=", "an equals sign was expected behind the column");
        assignment.value = expressions.Parse();
        update.assignments.push_back(std::move(assignment));
    } while (tokens.TakeSymbol(","));
    update.where = ParseWhere(tokens, expressions);
    return update;
}

DeleteStatement ParseDelete(TokenStream &tokens, ExpressionParser &expressions) {
    DeleteStatement remove;
    tokens.TakeWord("from");
    remove.table = tokens.ParseTableName();
    remove.where = ParseWhere(tokens, expressions);
    return remove;
}

ReplaceStatement ParseReplace(TokenStream &tokens, ExpressionParser &expressions) {
    ReplaceStatement replace;
    ParseReplaceScope(tokens, replace);
    do {
        Assignment assignment;
        assignment.column = tokens.ParseName("a column's name was expected");
        tokens.ExpectWord("with", "With was expected behind the column");
        assignment.value = expressions.Parse();
        assignment.additive = tokens.TakeWord("additive");
        replace.assignments.push_back(std::move(assignment));
    } while (tokens.TakeSymbol(","));
    ParseReplaceTail(tokens, expressions, replace);
    return replace;
}

}  // namespace ktl::ado::sql
