// The module's status codes: the system codes it uses plus its own failure family
// (facility 4, codes 0x12 to 0x20).
#pragma once

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
