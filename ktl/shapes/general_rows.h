#pragma once

#include <memory>
#include <span>

#include "ktl/attributes/field.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"
#include "ktl/core/extent.h"

/// \file
/// The rows of the property grid. Every kind begins with its identifier; most end with the four sides of the extent.

namespace ktl {

/// One row of a kind's own.
struct GeneralRow {
    const char *name;
    ENUM_DATA type;
    bool isReadOnly;
};

/// "ID", the own rows from index 1 on, and the sides of the extent from index `firstSide` on.
std::unique_ptr<CFields> MakeGeneralFields(std::span<const GeneralRow> rows, int firstSide);

/// The values in the order of the rows, beginning with the identifier.
class GeneralValues {
  public:
    explicit GeneralValues(int shapeID);

    void AddInteger(int value);
    void AddReal(double value);
    /// Two values: the world point's longitude and latitude.
    void AddDegrees(double x, double y);
    void AddSides(const CExtent &extent);
    /// The caller owns the record.
    CRecord *Release() { return m_record.release(); }

  private:
    std::unique_ptr<CRecord> m_record;
};

}  // namespace ktl
