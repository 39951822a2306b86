// Task memory: the allocator through which COM callers and callees hand each other memory.
#include <cstdlib>

#include "platform/win32_com.h"

LPVOID CoTaskMemAlloc(SIZE_T size) {
    return std::malloc(size != 0 ? size : 1);  // a zero-size request still gives a block to free
}

LPVOID CoTaskMemRealloc(LPVOID block, SIZE_T size) {
    if (block == nullptr) return CoTaskMemAlloc(size);
    if (size == 0) {
        std::free(block);
        return nullptr;
    }
    return std::realloc(block, size);
}

void CoTaskMemFree(LPVOID block) { std::free(block); }
