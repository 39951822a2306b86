// CZEAviReader: identity (QueryInterface, reference count), construction and destruction, and the
// status interface.
#include "reader/ze_avi_reader.h"

#include <cstring>

#include "reader/ze_module_state.h"
#include "reader/ze_avi_reader_internal.h"
#include "reader/ze_host_log_sink.h"

using ze_reader::Guarded;
using ze_reader::Report;

CZEAviReader::CZEAviReader(HRESULT* result, const char* name) {
    try {
        m_source = std::make_unique<CZeReaderSource>();
    } catch (...) {
        // Every method that needs the parser then answers E_OUTOFMEMORY.
        m_source.reset();
    }
    const HRESULT hr = CoInitialize(nullptr);
    if (FAILED(hr)) {
        // Half-built on purpose: no lock, no name; the factory hands the object out all the same.
        ReportError(ze_reader::kClass, ze_reader::kClass, hr);
        if (result) *result = hr;
        return;
    }
    m_comInitialized = true;
    try {
        m_name = name ? name : "ZEAviReader";
    } catch (...) {
        m_name.clear();
    }
    InitializeCriticalSection(&m_lock);
    m_lockReady = true;
    m_preferredSubtype = ZeMediaGuid::Rgb24;
    m_yuvSubtype = ZeMediaGuid::Yuy2;
    if (result) *result = hr;
}

CZEAviReader::~CZEAviReader() {
    m_exchangeFrame.clear();
    CloseVideoStream();
    CloseAudioReader();
    if (m_lockReady) {
        DeleteCriticalSection(&m_lock);
        m_lockReady = false;
    }
    if (m_comInitialized) CoUninitialize();
    if (m_hostLog) {
        m_hostLog->Release();
        m_hostLog = nullptr;
    }
}

CZeReaderSource& CZEAviReader::Src() {
    if (!m_source) throw std::bad_alloc();
    return *m_source;
}

HRESULT STDMETHODCALLTYPE CZEAviReader::QueryInterface(REFIID iid, void** object) {
    if (!object) return Report("QueryInterface", E_POINTER);
    void* found = nullptr;
    if (IsEqualIID(iid, IID_IZEVideoStream) || IsEqualIID(iid, IID_IUnknown))
        found = static_cast<IZEVideoStream*>(this);
    else if (IsEqualIID(iid, IID_IZEVideoImportPlugIn))
        found = static_cast<IZEVideoImportPlugIn*>(this);
    else if (IsEqualIID(iid, IID_IZEStatus))
        found = static_cast<IZEStatus*>(this);
    else if (IsEqualIID(iid, IID_IZEBasicAudioReader))
        found = static_cast<IZEBasicAudioReader*>(this);
    else if (IsEqualIID(iid, IID_IZERawStream))
        found = static_cast<IZERawStream*>(this);
    else if (IsEqualIID(iid, IID_IZEColorFormatSupport))
        found = static_cast<IZEColorFormatSupport*>(this);
    else if (IsEqualIID(iid, IID_IZEClientServerExchange2))
        found = static_cast<IZEClientServerExchange2*>(this);
    // An unknown interface leaves the caller's pointer exactly as it was.
    if (!found) return E_NOINTERFACE;
    *object = found;
    AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE CZEAviReader::AddRef() {
    if (m_refCount == 0) ZeModuleAddRef();
    return static_cast<ULONG>(InterlockedIncrement(&m_refCount));
}

ULONG STDMETHODCALLTYPE CZEAviReader::Release() {
    const LONG count = InterlockedDecrement(&m_refCount);
    if (count == 0) {
        delete this;
        ZeModuleRelease();
    }
    return static_cast<ULONG>(count);
}

HRESULT STDMETHODCALLTYPE CZEAviReader::SetHostParams(const ZeHostParams* params) {
    if (!params) return Report("SetHostParams", E_POINTER);
    LockGuard lock(*this);
    if (m_hostLog) {
        m_hostLog->Release();
        m_hostLog = nullptr;
    }
    if ((params->flags & ZE_HOSTPARAM_USE_LOG) != 0 && params->hostLog) {
        params->hostLog->AddRef();
        m_hostLog = params->hostLog;
        ZeConnectHostLog(m_hostLog);
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEAviReader::GetState(DWORD* value, DWORD* detail, DWORD kind) {
    if (!detail) return Report("GetState", E_POINTER);
    LockGuard lock(*this);
    HRESULT result = S_FALSE;
    if (value) {
        if (kind == 1) {
            if (m_statusCode != 0) {
                *value = m_statusCode;
                result = S_OK;
            }
        } else if (kind >= 2 && kind <= 7) {
            *value = m_statusValue;
            result = S_OK;
        }
    } else if (kind == m_statusValue) {
        if (kind == 1) {
            detail[0] = 4;
            detail[1] = 0;
        }
        result = S_OK;
    }
    return result;
}

HRESULT STDMETHODCALLTYPE CZEAviReader::StatusReserved4(DWORD, DWORD, void*, void*) { return S_OK; }
HRESULT STDMETHODCALLTYPE CZEAviReader::VideoReserved7(DWORD, DWORD, void*) { return S_OK; }
HRESULT STDMETHODCALLTYPE CZEAviReader::VideoReserved8() { return S_OK; }
HRESULT STDMETHODCALLTYPE CZEAviReader::VideoReserved10(DWORD, DWORD, void*, void*) { return S_OK; }
HRESULT STDMETHODCALLTYPE CZEAviReader::AudioReserved7(DWORD, void*) { return S_OK; }
HRESULT STDMETHODCALLTYPE CZEAviReader::AudioReserved8() { return S_OK; }
HRESULT STDMETHODCALLTYPE CZEAviReader::ExchangeReserved6(DWORD, DWORD, DWORD, void*, void*, void*) {
    return E_NOTIMPL;
}
