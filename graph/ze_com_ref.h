// Owning handles for the graph filters' resources: a COM interface reference that is released when
// the handle goes, and a block of COM task memory that is freed likewise.
#pragma once

#include <memory>

#include "platform/win32.h"

struct ZeComRelease {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <class T>
using ZeComRef = std::unique_ptr<T, ZeComRelease>;

struct ZeTaskMemFree {
    void operator()(void* block) const { CoTaskMemFree(block); }
};
using ZeTaskMemBlock = std::unique_ptr<BYTE, ZeTaskMemFree>;
