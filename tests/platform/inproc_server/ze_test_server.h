// A small in-process server for the activation tests: one class that adds numbers.
#pragma once

#include "platform/win32.h"

// {5E0C7A91-3B2D-4C6E-8F10-2A4B6C8D0E12}
inline constexpr CLSID CLSID_ZeTestAdder = {
    0x5e0c7a91, 0x3b2d, 0x4c6e, {0x8f, 0x10, 0x2a, 0x4b, 0x6c, 0x8d, 0x0e, 0x12}};
// {5E0C7A92-3B2D-4C6E-8F10-2A4B6C8D0E12}
inline constexpr IID IID_IZeTestAdder = {0x5e0c7a92, 0x3b2d, 0x4c6e, {0x8f, 0x10, 0x2a, 0x4b, 0x6c, 0x8d, 0x0e, 0x12}};

struct IZeTestAdder : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Add(LONG a, LONG b, LONG* sum) = 0;
    // Objects of the server alive now, across all its instances.
    virtual LONG STDMETHODCALLTYPE LiveObjects() = 0;

protected:
    ~IZeTestAdder() = default;
};
