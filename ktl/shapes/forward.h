#pragma once

/// \file
/// Names of this folder's classes for headers that only point at them.

class CShape;
class CShape_NULL;
class CShape_Object;
class CShape_Point;
class CShape_Polygon;
class CShape_Polyline;
class CShape_Symbol;
struct STRUCT_LABEL_INFO;
