#pragma once

#include <memory>

#include "ktl/platform/export.h"

class CArchive;
class CShape_Symbol;

/// \file
/// What a point legend needs of the symbol shape that it owns. The shape's class stands in a folder above this one,
/// which defines these functions.

namespace ktl {

/// A deep copy that the caller owns.
KTL_API CShape_Symbol *CloneSymbol(CShape_Symbol &symbol);
/// Null is allowed.
KTL_API void DeleteSymbol(CShape_Symbol *symbol);
/// The symbol's own `Serialize`.
KTL_API void SerializeSymbol(CShape_Symbol &symbol, CArchive &archive, int version);

struct SymbolDeleter {
    void operator()(CShape_Symbol *symbol) const { DeleteSymbol(symbol); }
};
using SymbolPtr = std::unique_ptr<CShape_Symbol, SymbolDeleter>;

}  // namespace ktl
