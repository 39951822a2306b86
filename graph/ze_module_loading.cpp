#include "graph/ze_module_loading.h"

#include <cstdint>

#include "graph/ze_com_ref.h"

namespace {

const char kRegModuleFolder[] = "RegModule";

bool IsSeparator(char c) { return c == '\\' || c == '/'; }

typedef HRESULT(STDAPICALLTYPE* GetClassObjectFn)(REFCLSID, REFIID, void**);

}  // namespace

HMODULE ZeOwnModule()
{
    HMODULE self = nullptr;
    const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!GetModuleHandleExA(flags, reinterpret_cast<LPCSTR>(&ZeOwnModule), &self)) return nullptr;
    return self;
}

bool ZeRegModulePath(const char* ownFileName, const char* moduleFileName, std::string* path)
{
    const std::string own = ownFileName != nullptr ? ownFileName : "";
    // Drive ("C:") and folder (up to and including the last separator); the file name goes.
    const size_t driveLength = own.size() >= 2 && own[1] == ':' ? 2 : 0;
    size_t folderEnd = own.size();
    while (folderEnd > driveLength && !IsSeparator(own[folderEnd - 1])) --folderEnd;
    std::string result = own.substr(0, folderEnd);
    result += kRegModuleFolder;
    if (result.back() != '\\') result += '\\';
    result += moduleFileName;
    if (result.size() >= MAX_PATH) return false;
    *path = result;
    return true;
}

HRESULT LoadModuleClassObject(const char* moduleFileName, REFCLSID clsid, REFIID iid, void** object, HMODULE beside)
{
    if (moduleFileName == nullptr) return E_POINTER;
    if (object == nullptr) return E_POINTER;
    *object = nullptr;

    char ownFileName[MAX_PATH] = {};
    if (beside == nullptr || GetModuleFileNameA(beside, ownFileName, MAX_PATH) == 0) return E_FAIL;
    std::string path;
    if (!ZeRegModulePath(ownFileName, moduleFileName, &path)) return E_FAIL;

    // Instance handles below 32 were error codes once; they still count as failure. On a 64-bit
    // build the handle's whole pointer value is compared.
    const HMODULE module = LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (reinterpret_cast<uintptr_t>(module) < 32) return E_FAIL;
    // The module is never freed: objects it hands out may outlive every caller here.

    const GetClassObjectFn getClassObject =
        reinterpret_cast<GetClassObjectFn>(reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
    if (getClassObject == nullptr) return E_FAIL;

    IClassFactory* rawFactory = nullptr;
    const HRESULT hr = getClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(&rawFactory));
    if (hr != S_OK) return hr;
    if (rawFactory == nullptr) return E_FAIL;
    const ZeComRef<IClassFactory> factory(rawFactory);
    return factory->CreateInstance(nullptr, iid, object);
}
