#pragma once

#include "ktl/shapes/shape_object.h"

/// A little drawing made of shapes, read from a symbol stream. It owns its shapes.
class KTL_API CShape_Symbol : public CShape_Object {
  public:
    CShape_Symbol() = default;
    CShape_Symbol(const CShape_Symbol &) = delete;
    CShape_Symbol &operator=(const CShape_Symbol &) = delete;
    ~CShape_Symbol() override;

    using CShape_Object::Serialize;

    CShape *Clone() override;
    /// Replaces the drawing by copies of the source's shapes.
    void Copy(CShape *source) override;
    /// Reads only; a storing archive is left alone. A kind that no class stands for ends the load.
    void Serialize(CArchive &archive, int version) override;

    /// A picture of 16 by 16 pixels with a white frame of one pixel, whatever the arguments. The caller owns the
    /// handle; null when it cannot be made.
    HBITMAP__ *GetHBitmap(int width, int height);

    int GetShapeCount() const { return ShapeArray.GetSize(); }
    /// The symbol keeps owning the shape.
    CShape *GetShapeAt(int index) const { return ShapeArray.GetAt(index); }

  protected:
    CPointD Point;
    CArray<CShape *, CShape *> ShapeArray;

  private:
    void RemoveShapes();
};
