#pragma once

/// \file
/// The platform's classes, for headers that only point at them.

class CArchive;
class CCriticalSection;
class CEvent;
class CFile;
class CFileFind;
class CObject;
class CString;
class CTime;
class CWinApp;
class CWnd;
struct CRuntimeClass;
