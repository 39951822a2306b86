// CoInitialize counting, per thread.
#include "platform/posix/com_apartment.h"

#include <atomic>

#include "platform/win32_com.h"

namespace {

struct ThreadApartment {
    ULONG count = 0;
    DWORD model = COINIT_APARTMENTTHREADED;
};

thread_local ThreadApartment t_apartment;
std::atomic<LONG> g_multithreadedThreads{0};  // threads currently in the multithreaded apartment

constexpr DWORD kModelBits = COINIT_APARTMENTTHREADED;

}  // namespace

namespace ze_posix {

bool ComUsableOnThisThread() { return t_apartment.count > 0 || g_multithreadedThreads.load() > 0; }

}  // namespace ze_posix

HRESULT CoInitialize(LPVOID reserved) { return CoInitializeEx(reserved, COINIT_APARTMENTTHREADED); }

HRESULT CoInitializeEx(LPVOID reserved, DWORD coInit) {
    if (reserved != nullptr) return E_INVALIDARG;
    const DWORD model = coInit & kModelBits;
    ThreadApartment& a = t_apartment;
    if (a.count > 0) {
        if (a.model != model) return RPC_E_CHANGED_MODE;
        ++a.count;
        return S_FALSE;
    }
    a.model = model;
    a.count = 1;
    if (model == COINIT_MULTITHREADED) ++g_multithreadedThreads;
    return S_OK;
}

void CoUninitialize() {
    ThreadApartment& a = t_apartment;
    if (a.count == 0) return;
    if (--a.count == 0 && a.model == COINIT_MULTITHREADED) --g_multithreadedThreads;
}
