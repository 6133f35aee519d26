#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/types.h"

class CArchive;
class CObject;

/// The run-time record of a class: its name, its base's record and a factory where there is one.
struct KTL_API CRuntimeClass {
    const char *m_lpszClassName;
    int m_nObjectSize;
    UINT m_wSchema;
    /// Null for a class that cannot be created from its record; otherwise the caller owns the new object.
    CObject *(*m_pfnCreateObject)();
    const CRuntimeClass *m_pBaseClass;

    /// Null without a factory.
    CObject *CreateObject() const { return m_pfnCreateObject ? m_pfnCreateObject() : nullptr; }
    BOOL IsDerivedFrom(const CRuntimeClass *base) const;
};

/// Root of the classes that have a run-time record and can write themselves to an archive.
class KTL_API CObject {
  public:
    CObject() = default;
    CObject(const CObject &) = default;
    CObject &operator=(const CObject &) = default;
    virtual ~CObject() = default;

    static const CRuntimeClass *GetThisClass();
    virtual const CRuntimeClass *GetRuntimeClass() const;
    /// Writes nothing.
    virtual void Serialize(CArchive &archive);
    virtual void AssertValid() const {}

    BOOL IsKindOf(const CRuntimeClass *base) const { return GetRuntimeClass()->IsDerivedFrom(base); }
};
