// The frame delivery slots of IZEVideoStream and IZEColorFormatSupport. Decoding pictures is not part
// of this build of the module: every request for a picture, a stream position or a colour format
// change is answered with E_NOTIMPL, reported under the method's own name, after the usual argument
// checks and under the object lock. CloseVideoStream has nothing to tear down and succeeds.
#include "reader/ze_avi_reader_internal.h"

using ze_reader::Report;

HRESULT STDMETHODCALLTYPE CZEAviReader::InitVideoStream(LPCSTR path, const GUID*, DWORD, DWORD, DWORD, void*) {
    if (!path) return Report("InitVideoStream", E_POINTER);
    LockGuard lock(*this);
    return Report("InitVideoStream", E_NOTIMPL);
}

HRESULT STDMETHODCALLTYPE CZEAviReader::CloseVideoStream() {
    LockGuard lock(*this);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEAviReader::GetVideoFrame(DWORD, const LONGLONG* time, void*, void** target, void*,
                                                      DWORD) {
    if (!time || !target) return Report("GetVideoFrame", E_POINTER);
    LockGuard lock(*this);
    return Report("GetVideoFrame", E_NOTIMPL);
}

HRESULT STDMETHODCALLTYPE CZEAviReader::GetSpecialStreamPos(DWORD, LONGLONG*, DWORD) {
    LockGuard lock(*this);
    return Report("GetSpecialStreamPos", E_NOTIMPL);
}

HRESULT STDMETHODCALLTYPE CZEAviReader::HandleColorFormat(DWORD, const GUID*, DWORD, DWORD, void*, void*) {
    LockGuard lock(*this);
    return Report("HandleColorFormat", E_NOTIMPL);
}
