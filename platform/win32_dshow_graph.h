// DirectShow interfaces of the graph level (strmif.h, control.h subset) for non-Windows builds: the filter
// graph (IFilterGraph, IGraphBuilder, IFilterGraph2), its automation control and event interfaces on a
// minimal IDispatch, the filter mapper, the system device enumerator and the graph builder callback.
// Methods are declared in the order of the Windows vtables.
#pragma once

#include "platform/win32_dshow_filters.h"

// ---- automation base (oaidl.h subset): only what IDispatch's signatures name ----

typedef DWORD LCID;
typedef LONG DISPID;
struct ITypeInfo;

typedef struct tagDISPPARAMS {
    VARIANTARG* rgvarg;
    DISPID* rgdispidNamedArgs;
    UINT cArgs;
    UINT cNamedArgs;
} DISPPARAMS;

extern "C" const IID IID_IDispatch;

struct IDispatch : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* rgszNames, UINT cNames, LCID lcid,
                                                    DISPID* rgDispId) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID dispIdMember, REFIID riid, LCID lcid, WORD wFlags,
                                             DISPPARAMS* pDispParams, VARIANT* pVarResult, EXCEPINFO* pExcepInfo,
                                             UINT* puArgErr) = 0;

protected:
    ~IDispatch() = default;
};

// ---- graph ----

typedef LONG OAFilterState;
typedef LONG_PTR OAHWND;
typedef LONG_PTR OAEVENT;

extern "C" const IID IID_IFilterGraph;
extern "C" const IID IID_IGraphBuilder;
extern "C" const IID IID_IFilterGraph2;
extern "C" const IID IID_IMediaControl;
extern "C" const IID IID_IMediaEvent;
extern "C" const IID IID_IMediaEventEx;
extern "C" const IID IID_IFilterMapper2;
extern "C" const IID IID_ICreateDevEnum;
extern "C" const IID IID_IAMGraphBuilderCallback;

struct IFilterGraph : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE AddFilter(IBaseFilter* pFilter, LPCWSTR pName) = 0;
    virtual HRESULT STDMETHODCALLTYPE RemoveFilter(IBaseFilter* pFilter) = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumFilters(IEnumFilters** ppEnum) = 0;
    virtual HRESULT STDMETHODCALLTYPE FindFilterByName(LPCWSTR pName, IBaseFilter** ppFilter) = 0;
    virtual HRESULT STDMETHODCALLTYPE ConnectDirect(IPin* ppinOut, IPin* ppinIn, const AM_MEDIA_TYPE* pmt) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reconnect(IPin* ppin) = 0;
    virtual HRESULT STDMETHODCALLTYPE Disconnect(IPin* ppin) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDefaultSyncSource() = 0;

protected:
    ~IFilterGraph() = default;
};

struct IGraphBuilder : public IFilterGraph {
    virtual HRESULT STDMETHODCALLTYPE Connect(IPin* ppinOut, IPin* ppinIn) = 0;
    virtual HRESULT STDMETHODCALLTYPE Render(IPin* ppinOut) = 0;
    virtual HRESULT STDMETHODCALLTYPE RenderFile(LPCWSTR lpcwstrFile, LPCWSTR lpcwstrPlayList) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddSourceFilter(LPCWSTR lpcwstrFileName, LPCWSTR lpcwstrFilterName,
                                                      IBaseFilter** ppFilter) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetLogFile(DWORD_PTR hFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE Abort() = 0;
    virtual HRESULT STDMETHODCALLTYPE ShouldOperationContinue() = 0;

protected:
    ~IGraphBuilder() = default;
};

struct IFilterGraph2 : public IGraphBuilder {
    virtual HRESULT STDMETHODCALLTYPE AddSourceFilterForMoniker(IMoniker* pMoniker, IBindCtx* pCtx,
                                                                LPCWSTR lpcwstrFilterName, IBaseFilter** ppFilter) = 0;
    virtual HRESULT STDMETHODCALLTYPE ReconnectEx(IPin* ppin, const AM_MEDIA_TYPE* pmt) = 0;
    virtual HRESULT STDMETHODCALLTYPE RenderEx(IPin* pPinOut, DWORD dwFlags, DWORD* pvContext) = 0;

protected:
    ~IFilterGraph2() = default;
};

struct IMediaControl : public IDispatch {
    virtual HRESULT STDMETHODCALLTYPE Run() = 0;
    virtual HRESULT STDMETHODCALLTYPE Pause() = 0;
    virtual HRESULT STDMETHODCALLTYPE Stop() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetState(LONG msTimeout, OAFilterState* pfs) = 0;
    virtual HRESULT STDMETHODCALLTYPE RenderFile(BSTR strFilename) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddSourceFilter(BSTR strFilename, IDispatch** ppUnk) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_FilterCollection(IDispatch** ppUnk) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_RegFilterCollection(IDispatch** ppUnk) = 0;
    virtual HRESULT STDMETHODCALLTYPE StopWhenReady() = 0;

protected:
    ~IMediaControl() = default;
};

struct IMediaEvent : public IDispatch {
    virtual HRESULT STDMETHODCALLTYPE GetEventHandle(OAEVENT* hEvent) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetEvent(LONG* lEventCode, LONG_PTR* lParam1, LONG_PTR* lParam2,
                                               LONG msTimeout) = 0;
    virtual HRESULT STDMETHODCALLTYPE WaitForCompletion(LONG msTimeout, LONG* pEvCode) = 0;
    virtual HRESULT STDMETHODCALLTYPE CancelDefaultHandling(LONG lEvCode) = 0;
    virtual HRESULT STDMETHODCALLTYPE RestoreDefaultHandling(LONG lEvCode) = 0;
    virtual HRESULT STDMETHODCALLTYPE FreeEventParams(LONG lEvCode, LONG_PTR lParam1, LONG_PTR lParam2) = 0;

protected:
    ~IMediaEvent() = default;
};

struct IMediaEventEx : public IMediaEvent {
    virtual HRESULT STDMETHODCALLTYPE SetNotifyWindow(OAHWND hwnd, LONG lMsg, LONG_PTR lInstanceData) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetNotifyFlags(LONG lNoNotifyFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNotifyFlags(LONG* lplNoNotifyFlags) = 0;

protected:
    ~IMediaEventEx() = default;
};

// ---- filter discovery ----

struct IFilterMapper2 : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CreateCategory(REFCLSID clsidCategory, DWORD dwCategoryMerit,
                                                     LPCWSTR Description) = 0;
    virtual HRESULT STDMETHODCALLTYPE UnregisterFilter(const CLSID* pclsidCategory, LPCOLESTR szInstance,
                                                       REFCLSID Filter) = 0;
    virtual HRESULT STDMETHODCALLTYPE RegisterFilter(REFCLSID clsidFilter, LPCWSTR Name, IMoniker** ppMoniker,
                                                     const CLSID* pclsidCategory, LPCOLESTR szInstance,
                                                     const REGFILTER2* prf2) = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumMatchingFilters(IEnumMoniker** ppEnum, DWORD dwFlags, BOOL bExactMatch,
                                                          DWORD dwMerit, BOOL bInputNeeded, DWORD cInputTypes,
                                                          const GUID* pInputTypes, const REGPINMEDIUM* pMedIn,
                                                          const CLSID* pPinCategoryIn, BOOL bRender,
                                                          BOOL bOutputNeeded, DWORD cOutputTypes,
                                                          const GUID* pOutputTypes, const REGPINMEDIUM* pMedOut,
                                                          const CLSID* pPinCategoryOut) = 0;

protected:
    ~IFilterMapper2() = default;
};

struct ICreateDevEnum : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CreateClassEnumerator(REFCLSID clsidDeviceClass, IEnumMoniker** ppEnumMoniker,
                                                            DWORD dwFlags) = 0;

protected:
    ~ICreateDevEnum() = default;
};

// Set on a graph (through its site) to veto or inspect each filter that intelligent connect picks.
struct IAMGraphBuilderCallback : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE SelectedFilter(IMoniker* pMon) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreatedFilter(IBaseFilter* pFil) = 0;

protected:
    ~IAMGraphBuilderCallback() = default;
};
