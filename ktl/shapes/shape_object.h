#pragma once

#include "ktl/shapes/shape.h"

/// A shape with a place in a layer and the flags of an object that can be selected and deleted.
class KTL_API CShape_Object : public CShape {
  public:
    CShape_Object() = default;

    int GetIndex() override;
    void Select(int selected) override;
    void Copy(CShape *source) override;

    /// The owner's numbering of its shapes.
    void SetIndex(int index) { Index = index; }

  protected:
    int Index = -1;

  public:
    /// The look that drawing asks of a legend: false normal, true hover. The host alone sets it.
    bool State = false;
    /// Part of the selection.
    bool Selected = false;
    /// Flagged as gone: left out of every query, count and save.
    bool Deleted = false;
    /// Copied, and otherwise unused.
    bool Reserved = false;
};
