// Entry point and exports of the module: DllGetClassObject, DllCanUnloadNow, DllRegisterServer and
// DllUnregisterServer, over the class factory and the registration table.
#include "platform/win32.h"
#include "reader/module/ze_avi_reader_class.h"
#include "reader/ze_module_state.h"
#include "reader/module/ze_registration.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD, LPVOID) {
    ZeSetModuleHandle(static_cast<HMODULE>(instance));  // on every call
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, LPVOID* object) { return ZeGetClassObject(&clsid, &iid, object); }

STDAPI DllCanUnloadNow() { return ZeCanUnloadNow(); }

STDAPI DllRegisterServer() { return ZeRegisterServer(); }

STDAPI DllUnregisterServer() { return ZeUnregisterServer(); }

#ifndef _WIN32
// The dynamic loader has no entry point of this kind: run it when the library is loaded and unloaded,
// with the handle of the library that holds this code.
namespace {

__attribute__((constructor)) void ZeModuleLoaded() {
    HMODULE self = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCSTR>(&ZeModuleLoaded), &self);
    DllMain(static_cast<HINSTANCE>(self), DLL_PROCESS_ATTACH, nullptr);
}

__attribute__((destructor)) void ZeModuleUnloading() {
    DllMain(static_cast<HINSTANCE>(ZeModuleHandle()), DLL_PROCESS_DETACH, nullptr);
}

}  // namespace
#endif
