// OLE automation and moniker subset (oleaut32, ole32): BSTR strings, VARIANT, SAFEARRAY, and the
// interfaces through which filters are found and described: IPersist, IPropertyBag, IErrorLog,
// IBindCtx (with CreateBindCtx), IMoniker and IEnumMoniker.
//
// BSTR: OLECHAR text preceded by its length in bytes (32-bit) and followed by a zero; SysStringLen
// reads the prefix, so a BSTR may hold zeros. SAFEARRAY elements may be any fixed-size number type,
// VARIANT_BOOL, BSTR, IUnknown* or VARIANT; bounds are kept last dimension first, as on Windows.
#pragma once

#include "platform/win32_com.h"

typedef OLECHAR* BSTR;
typedef unsigned short VARTYPE;
typedef int16_t VARIANT_BOOL;
typedef void* PVOID;

constexpr VARIANT_BOOL VARIANT_TRUE = -1;
constexpr VARIANT_BOOL VARIANT_FALSE = 0;

typedef union _ULARGE_INTEGER {
    struct {
        DWORD LowPart;
        DWORD HighPart;
    } u;
    ULONGLONG QuadPart;
} ULARGE_INTEGER;

enum VARENUM : VARTYPE {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000,
    VT_TYPEMASK = 0x0FFF,
};

constexpr HRESULT DISP_E_BADVARTYPE = static_cast<HRESULT>(0x80020008u);
constexpr HRESULT DISP_E_ARRAYISLOCKED = static_cast<HRESULT>(0x8002000Du);
constexpr HRESULT DISP_E_BADINDEX = static_cast<HRESULT>(0x8002000Bu);
constexpr HRESULT MK_E_NOTBOUND = static_cast<HRESULT>(0x800401E9u);

typedef struct tagSAFEARRAYBOUND {
    ULONG cElements;
    LONG lLbound;
} SAFEARRAYBOUND;

typedef struct tagSAFEARRAY {
    USHORT cDims;
    USHORT fFeatures;
    ULONG cbElements;
    ULONG cLocks;
    PVOID pvData;
    SAFEARRAYBOUND rgsabound[1];  // cDims entries, the last dimension first
} SAFEARRAY;

constexpr USHORT FADF_HAVEVARTYPE = 0x0080;
constexpr USHORT FADF_BSTR = 0x0100;
constexpr USHORT FADF_UNKNOWN = 0x0200;
constexpr USHORT FADF_VARIANT = 0x0800;

typedef struct tagVARIANT VARIANT;
struct tagVARIANT {
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        LONGLONG llVal;
        LONG lVal;
        BYTE bVal;
        SHORT iVal;
        float fltVal;
        double dblVal;
        VARIANT_BOOL boolVal;
        HRESULT scode;
        BSTR bstrVal;
        IUnknown* punkVal;
        SAFEARRAY* parray;
        CHAR cVal;
        USHORT uiVal;
        ULONG ulVal;
        ULONGLONG ullVal;
        INT intVal;
        UINT uintVal;
        BYTE* pbVal;
        LONG* plVal;
        BSTR* pbstrVal;
        VARIANT* pvarVal;
        PVOID byref;
        struct {
            PVOID pvRecord;
            PVOID pRecInfo;
        } brecVal;
    };
};
typedef VARIANT* LPVARIANT;
typedef VARIANT VARIANTARG;

typedef struct tagEXCEPINFO {
    WORD wCode;
    WORD wReserved;
    BSTR bstrSource;
    BSTR bstrDescription;
    BSTR bstrHelpFile;
    DWORD dwHelpContext;
    PVOID pvReserved;
    HRESULT(STDAPICALLTYPE* pfnDeferredFillIn)(struct tagEXCEPINFO*);
    HRESULT scode;
} EXCEPINFO;

// BSTR strings. Allocation failures give null.
BSTR SysAllocString(const OLECHAR* text);
BSTR SysAllocStringLen(const OLECHAR* text, UINT chars);  // null text: `chars` zero characters
void SysFreeString(BSTR text);
UINT SysStringLen(BSTR text);
UINT SysStringByteLen(BSTR text);

// Variants. VariantClear frees what the variant owns (string, array, reference) and leaves VT_EMPTY;
// VariantCopy makes a deep copy. Types outside the list above give DISP_E_BADVARTYPE.
void VariantInit(VARIANTARG* variant);
HRESULT VariantClear(VARIANTARG* variant);
HRESULT VariantCopy(VARIANTARG* destination, const VARIANTARG* source);

// Safe arrays; dimensions are numbered from 1 in the order they were given to SafeArrayCreate.
SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT dims, SAFEARRAYBOUND* bounds);
SAFEARRAY* SafeArrayCreateVector(VARTYPE vt, LONG lowerBound, ULONG elements);
HRESULT SafeArrayDestroy(SAFEARRAY* array);  // DISP_E_ARRAYISLOCKED while its data is accessed
HRESULT SafeArrayCopy(SAFEARRAY* source, SAFEARRAY** copy);
HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
HRESULT SafeArrayUnaccessData(SAFEARRAY* array);
HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dim, LONG* bound);
HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dim, LONG* bound);
UINT SafeArrayGetDim(SAFEARRAY* array);
UINT SafeArrayGetElemsize(SAFEARRAY* array);
HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* vt);

// Interfaces known only by pointer here.
struct IStream;
struct IRunningObjectTable;
struct IEnumString;

extern "C" const IID IID_IPersist;
extern "C" const IID IID_IPersistStream;
extern "C" const IID IID_IPropertyBag;
extern "C" const IID IID_IErrorLog;
extern "C" const IID IID_IBindCtx;
extern "C" const IID IID_IMoniker;
extern "C" const IID IID_IEnumMoniker;

struct IPersist : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetClassID(CLSID* clsid) = 0;

protected:
    ~IPersist() = default;
};

struct IPersistStream : public IPersist {
    virtual HRESULT STDMETHODCALLTYPE IsDirty() = 0;
    virtual HRESULT STDMETHODCALLTYPE Load(IStream* stream) = 0;
    virtual HRESULT STDMETHODCALLTYPE Save(IStream* stream, BOOL clearDirty) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER* size) = 0;

protected:
    ~IPersistStream() = default;
};

struct IErrorLog : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE AddError(LPCOLESTR propertyName, EXCEPINFO* info) = 0;

protected:
    ~IErrorLog() = default;
};

struct IPropertyBag : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Read(LPCOLESTR propertyName, VARIANT* value, IErrorLog* errorLog) = 0;
    virtual HRESULT STDMETHODCALLTYPE Write(LPCOLESTR propertyName, VARIANT* value) = 0;

protected:
    ~IPropertyBag() = default;
};

typedef struct tagBIND_OPTS {
    DWORD cbStruct;
    DWORD grfFlags;
    DWORD grfMode;
    DWORD dwTickCountDeadline;
} BIND_OPTS;

constexpr DWORD STGM_READ = 0x0;
constexpr DWORD STGM_WRITE = 0x1;
constexpr DWORD STGM_READWRITE = 0x2;

struct IBindCtx : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE RegisterObjectBound(IUnknown* object) = 0;
    virtual HRESULT STDMETHODCALLTYPE RevokeObjectBound(IUnknown* object) = 0;
    virtual HRESULT STDMETHODCALLTYPE ReleaseBoundObjects() = 0;
    virtual HRESULT STDMETHODCALLTYPE SetBindOptions(BIND_OPTS* options) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBindOptions(BIND_OPTS* options) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetRunningObjectTable(IRunningObjectTable** table) = 0;
    virtual HRESULT STDMETHODCALLTYPE RegisterObjectParam(LPOLESTR key, IUnknown* object) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetObjectParam(LPOLESTR key, IUnknown** object) = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumObjectParam(IEnumString** keys) = 0;
    virtual HRESULT STDMETHODCALLTYPE RevokeObjectParam(LPOLESTR key) = 0;

protected:
    ~IBindCtx() = default;
};
typedef IBindCtx* LPBC;

struct IEnumMoniker;

struct IMoniker : public IPersistStream {
    virtual HRESULT STDMETHODCALLTYPE BindToObject(IBindCtx* context, IMoniker* left, REFIID iid, void** object) = 0;
    virtual HRESULT STDMETHODCALLTYPE BindToStorage(IBindCtx* context, IMoniker* left, REFIID iid, void** object) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reduce(IBindCtx* context, DWORD howFar, IMoniker** toLeft,
                                             IMoniker** reduced) = 0;
    virtual HRESULT STDMETHODCALLTYPE ComposeWith(IMoniker* right, BOOL onlyIfNotGeneric, IMoniker** composite) = 0;
    virtual HRESULT STDMETHODCALLTYPE Enum(BOOL forward, IEnumMoniker** monikers) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsEqual(IMoniker* other) = 0;
    virtual HRESULT STDMETHODCALLTYPE Hash(DWORD* hash) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsRunning(IBindCtx* context, IMoniker* left, IMoniker* newlyRunning) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTimeOfLastChange(IBindCtx* context, IMoniker* left, FILETIME* time) = 0;
    virtual HRESULT STDMETHODCALLTYPE Inverse(IMoniker** inverse) = 0;
    virtual HRESULT STDMETHODCALLTYPE CommonPrefixWith(IMoniker* other, IMoniker** prefix) = 0;
    virtual HRESULT STDMETHODCALLTYPE RelativePathTo(IMoniker* other, IMoniker** relativePath) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDisplayName(IBindCtx* context, IMoniker* left, LPOLESTR* displayName) = 0;
    virtual HRESULT STDMETHODCALLTYPE ParseDisplayName(IBindCtx* context, IMoniker* left, LPOLESTR displayName,
                                                       ULONG* eaten, IMoniker** result) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsSystemMoniker(DWORD* kind) = 0;

protected:
    ~IMoniker() = default;
};

struct IEnumMoniker : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG count, IMoniker** monikers, ULONG* fetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG count) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IEnumMoniker** copy) = 0;

protected:
    ~IEnumMoniker() = default;
};

// A bind context of this process: bound objects are held until ReleaseBoundObjects or its end; object
// parameters are held by key; there is no running object table (GetRunningObjectTable gives E_NOTIMPL,
// and so does EnumObjectParam, as on Windows).
HRESULT CreateBindCtx(DWORD reserved, IBindCtx** context);
