#include "reader/module/ze_reader_creation.h"

#include <new>

#include "reader/ze_avi_reader.h"

IUnknown* ZeNewAviReader(HRESULT* result, const char* name) {
    try {
        CZEAviReader* reader = new CZEAviReader(result, name);
        return static_cast<IZEVideoStream*>(reader);
    } catch (...) {  // allocation of the object or of its members
        return nullptr;
    }
}
