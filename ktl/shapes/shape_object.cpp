#include "ktl/shapes/shape_object.h"

int CShape_Object::GetIndex() {
    return Index;
}
void CShape_Object::Select(int selected) {
    Selected = selected != 0;
}

void CShape_Object::Copy(CShape *source) {
    CShape::Copy(source);
    const auto *object = dynamic_cast<const CShape_Object *>(source);
    if (!object) return;
    State = object->State;
    Selected = object->Selected;
    Deleted = object->Deleted;
    Reserved = object->Reserved;
}
