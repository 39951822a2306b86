// DirectShow interfaces between filters (strmif.h subset) for non-Windows builds: pins, media type and
// pin enumerators, filters, memory transport (allocator, sample, input pin), clocks, quality and the
// event sink. Methods are declared in the order of the Windows vtables.
#pragma once

#include "platform/win32_dshow_types.h"

struct IPin;
struct IEnumPins;
struct IEnumMediaTypes;
struct IReferenceClock;
struct IMemAllocator;
struct IMediaSample;

extern "C" const IID IID_IPin;
extern "C" const IID IID_IEnumPins;
extern "C" const IID IID_IEnumMediaTypes;
extern "C" const IID IID_IMediaFilter;
extern "C" const IID IID_IBaseFilter;
extern "C" const IID IID_IEnumFilters;
extern "C" const IID IID_IReferenceClock;
extern "C" const IID IID_IMediaSample;
extern "C" const IID IID_IMediaSample2;
extern "C" const IID IID_IMemAllocator;
extern "C" const IID IID_IMemInputPin;
extern "C" const IID IID_IQualityControl;
extern "C" const IID IID_IMediaEventSink;
extern "C" const IID IID_IIPDVDec;

struct IPin : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Connect(IPin* pReceivePin, const AM_MEDIA_TYPE* pmt) = 0;
    virtual HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) = 0;
    virtual HRESULT STDMETHODCALLTYPE Disconnect() = 0;
    virtual HRESULT STDMETHODCALLTYPE ConnectedTo(IPin** pPin) = 0;
    virtual HRESULT STDMETHODCALLTYPE ConnectionMediaType(AM_MEDIA_TYPE* pmt) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryPinInfo(PIN_INFO* pInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryDirection(PIN_DIRECTION* pPinDir) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryId(LPWSTR* Id) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryAccept(const AM_MEDIA_TYPE* pmt) = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumMediaTypes(IEnumMediaTypes** ppEnum) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryInternalConnections(IPin** apPin, ULONG* nPin) = 0;
    virtual HRESULT STDMETHODCALLTYPE EndOfStream() = 0;
    virtual HRESULT STDMETHODCALLTYPE BeginFlush() = 0;
    virtual HRESULT STDMETHODCALLTYPE EndFlush() = 0;
    virtual HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) = 0;

protected:
    ~IPin() = default;
};

struct IEnumPins : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG cPins, IPin** ppPins, ULONG* pcFetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG cPins) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IEnumPins** ppEnum) = 0;

protected:
    ~IEnumPins() = default;
};

struct IEnumMediaTypes : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG cMediaTypes, AM_MEDIA_TYPE** ppMediaTypes, ULONG* pcFetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG cMediaTypes) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IEnumMediaTypes** ppEnum) = 0;

protected:
    ~IEnumMediaTypes() = default;
};

struct IMediaFilter : public IPersist {
    virtual HRESULT STDMETHODCALLTYPE Stop() = 0;
    virtual HRESULT STDMETHODCALLTYPE Pause() = 0;
    virtual HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME tStart) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetState(DWORD dwMilliSecsTimeout, FILTER_STATE* State) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* pClock) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** pClock) = 0;

protected:
    ~IMediaFilter() = default;
};

struct IBaseFilter : public IMediaFilter {
    virtual HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** ppEnum) = 0;
    virtual HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR Id, IPin** ppPin) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* pInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pName) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* pVendorInfo) = 0;

protected:
    ~IBaseFilter() = default;
};

struct IEnumFilters : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG cFilters, IBaseFilter** ppFilter, ULONG* pcFetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG cFilters) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IEnumFilters** ppEnum) = 0;

protected:
    ~IEnumFilters() = default;
};

struct IReferenceClock : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTime(REFERENCE_TIME* pTime) = 0;
    virtual HRESULT STDMETHODCALLTYPE AdviseTime(REFERENCE_TIME baseTime, REFERENCE_TIME streamTime, HEVENT hEvent,
                                                 DWORD_PTR* pdwAdviseCookie) = 0;
    virtual HRESULT STDMETHODCALLTYPE AdvisePeriodic(REFERENCE_TIME startTime, REFERENCE_TIME periodTime,
                                                     HSEMAPHORE hSemaphore, DWORD_PTR* pdwAdviseCookie) = 0;
    virtual HRESULT STDMETHODCALLTYPE Unadvise(DWORD_PTR dwAdviseCookie) = 0;

protected:
    ~IReferenceClock() = default;
};

struct IMediaSample : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetPointer(BYTE** ppBuffer) = 0;
    virtual LONG STDMETHODCALLTYPE GetSize() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTime(REFERENCE_TIME* pTimeStart, REFERENCE_TIME* pTimeEnd) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetTime(REFERENCE_TIME* pTimeStart, REFERENCE_TIME* pTimeEnd) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsSyncPoint() = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSyncPoint(BOOL bIsSyncPoint) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsPreroll() = 0;
    virtual HRESULT STDMETHODCALLTYPE SetPreroll(BOOL bIsPreroll) = 0;
    virtual LONG STDMETHODCALLTYPE GetActualDataLength() = 0;
    virtual HRESULT STDMETHODCALLTYPE SetActualDataLength(LONG length) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMediaType(AM_MEDIA_TYPE** ppMediaType) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetMediaType(AM_MEDIA_TYPE* pMediaType) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsDiscontinuity() = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDiscontinuity(BOOL bDiscontinuity) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMediaTime(LONGLONG* pTimeStart, LONGLONG* pTimeEnd) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetMediaTime(LONGLONG* pTimeStart, LONGLONG* pTimeEnd) = 0;

protected:
    ~IMediaSample() = default;
};

struct IMediaSample2 : public IMediaSample {
    virtual HRESULT STDMETHODCALLTYPE GetProperties(DWORD cbProperties, BYTE* pbProperties) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetProperties(DWORD cbProperties, const BYTE* pbProperties) = 0;

protected:
    ~IMediaSample2() = default;
};

struct IMemAllocator : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE SetProperties(ALLOCATOR_PROPERTIES* pRequest, ALLOCATOR_PROPERTIES* pActual) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProperties(ALLOCATOR_PROPERTIES* pProps) = 0;
    virtual HRESULT STDMETHODCALLTYPE Commit() = 0;
    virtual HRESULT STDMETHODCALLTYPE Decommit() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBuffer(IMediaSample** ppBuffer, REFERENCE_TIME* pStartTime,
                                                REFERENCE_TIME* pEndTime, DWORD dwFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE ReleaseBuffer(IMediaSample* pBuffer) = 0;

protected:
    ~IMemAllocator() = default;
};

struct IMemInputPin : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetAllocator(IMemAllocator** ppAllocator) = 0;
    virtual HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAllocatorRequirements(ALLOCATOR_PROPERTIES* pProps) = 0;
    virtual HRESULT STDMETHODCALLTYPE Receive(IMediaSample* pSample) = 0;
    virtual HRESULT STDMETHODCALLTYPE ReceiveMultiple(IMediaSample** pSamples, LONG nSamples,
                                                      LONG* nSamplesProcessed) = 0;
    virtual HRESULT STDMETHODCALLTYPE ReceiveCanBlock() = 0;

protected:
    ~IMemInputPin() = default;
};

struct IQualityControl : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Notify(IBaseFilter* pSelf, Quality q) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSink(IQualityControl* piqc) = 0;

protected:
    ~IQualityControl() = default;
};

struct IMediaEventSink : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Notify(LONG EventCode, LONG_PTR EventParam1, LONG_PTR EventParam2) = 0;

protected:
    ~IMediaEventSink() = default;
};

// The DV video decoder's output resolution (a _DVRESOLUTION value).
struct IIPDVDec : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE get_IPDisplay(int* displayPix) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_IPDisplay(int displayPix) = 0;

protected:
    ~IIPDVDec() = default;
};
