// The status codes a host meets: the system codes the module reports, its own failure family
// (facility 4, codes 0x12 to 0x20) and the codes of loading and registering a module. One row per
// code gives its name and the message the module's report lines carry.
#pragma once

#include <cstdint>

#include "platform/win32.h"

constexpr HRESULT E_AVI_NOVALIDFILE = static_cast<HRESULT>(0x80040012u);
constexpr HRESULT E_AVI_OPEN = static_cast<HRESULT>(0x80040013u);
constexpr HRESULT E_AVI_READ = static_cast<HRESULT>(0x80040014u);
constexpr HRESULT E_AVI_SEEK = static_cast<HRESULT>(0x80040015u);
constexpr HRESULT E_AVI_CLOSE = static_cast<HRESULT>(0x80040016u);
constexpr HRESULT E_AVI_VIDEOSTREAMHEADER = static_cast<HRESULT>(0x80040018u);
constexpr HRESULT E_AVI_VIDEOFORMATHEADER = static_cast<HRESULT>(0x80040019u);
constexpr HRESULT E_AVI_AUDIOSTREAMHEADER = static_cast<HRESULT>(0x8004001Au);
constexpr HRESULT E_AVI_AUDIOFORMATHEADER = static_cast<HRESULT>(0x8004001Bu);
constexpr HRESULT E_AVI_COLORSPACE = static_cast<HRESULT>(0x8004001Cu);
constexpr HRESULT E_AVI_STREAMINDEX = static_cast<HRESULT>(0x8004001Du);
constexpr HRESULT E_AVI_PARSE = static_cast<HRESULT>(0x8004001Eu);
constexpr HRESULT E_AVI_NOFRAME = static_cast<HRESULT>(0x8004001Fu);
constexpr HRESULT E_AVI_DECODER = static_cast<HRESULT>(0x80040020u);

struct ZeStatusCode {
    uint32_t code;
    const char* name;
    // Text of the module's report lines; null: the line carries the unknown-code text instead.
    const char* message;
};

// 0x80040017 is never raised and has no row. E_AVI_READ's message is empty on purpose, so its report
// lines show two blanks where the text would stand.
inline constexpr ZeStatusCode kZeStatusCodes[] = {
    {0x80004001u, "E_NOTIMPL", "not implemented"},
    {0x80004002u, "E_NOINTERFACE", "no such interface supported"},
    {0x80004003u, "E_POINTER", "invalid pointer"},
    {0x80004004u, "E_ABORT", "operation aborted"},
    {0x80004005u, "E_FAIL", "general access denied error"},
    {0x80070006u, "E_HANDLE", "invalid handle"},
    {0x8007000Eu, "E_OUTOFMEMORY", "out of memory"},
    {0x80070057u, "E_INVALIDARG", "one or more arguments are invalid"},
    {0x80040012u, "E_AVI_NOVALIDFILE", "no valid avi file"},
    {0x80040013u, "E_AVI_OPEN", "cant open avi file"},
    {0x80040014u, "E_AVI_READ", ""},
    {0x80040015u, "E_AVI_SEEK", "cant seek avi file"},
    {0x80040016u, "E_AVI_CLOSE", "cant close avi file"},
    {0x80040018u, "E_AVI_VIDEOSTREAMHEADER", "cant create video stream header"},
    {0x80040019u, "E_AVI_VIDEOFORMATHEADER", "cant create video format header"},
    {0x8004001Au, "E_AVI_AUDIOSTREAMHEADER", "cant create audio stream header"},
    {0x8004001Bu, "E_AVI_AUDIOFORMATHEADER", "cant create audio format header"},
    {0x8004001Cu, "E_AVI_COLORSPACE", "no valid color space"},
    {0x8004001Du, "E_AVI_STREAMINDEX", nullptr},
    {0x8004001Eu, "E_AVI_PARSE", "avi file parse failed"},
    {0x8004001Fu, "E_AVI_NOFRAME", "no frame"},
    {0x80040020u, "E_AVI_DECODER", nullptr},
    // Loading the module and registering it.
    {0x80070002u, "ERROR_FILE_NOT_FOUND", nullptr},
    {0x8007007Eu, "ERROR_MOD_NOT_FOUND", nullptr},
    {0x8007007Fu, "ERROR_PROC_NOT_FOUND", nullptr},
    {0x800700C1u, "ERROR_BAD_EXE_FORMAT", nullptr},
    {0x80040154u, "REGDB_E_CLASSNOTREG", nullptr},
    {0x80040201u, "SELFREG_E_CLASS", nullptr},
};

// The row of `code`; null when the table has none.
constexpr const ZeStatusCode* FindStatusCode(HRESULT code) {
    for (const ZeStatusCode& row : kZeStatusCodes)
        if (row.code == static_cast<uint32_t>(code)) return &row;
    return nullptr;
}

