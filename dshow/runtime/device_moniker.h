// Monikers of registered filters, as the system device enumerator and the filter mapper hand them
// out. A moniker names one key HKCR\CLSID\{category}\Instance\{name}:
//   GetDisplayName  "@device:sw:{category}\name"
//   BindToStorage   IID_IPropertyBag: a bag backed by that key. Read gives REG_SZ as VT_BSTR,
//                   REG_DWORD as VT_I4 and REG_BINARY as VT_ARRAY|VT_UI1, whatever type the caller
//                   put in the VARIANT; a missing value gives HRESULT_FROM_WIN32 of the registry's
//                   error. Write stores those three types the same way round.
//   BindToObject    reads the CLSID value, creates the object with CoCreateInstance, lets it load
//                   itself from the bag when it implements IPersistPropertyBag, then asks for `iid`.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "dshow/runtime/com_object.h"
#include "platform/win32_dshow.h"

namespace ze_dsrt {

// IPersistPropertyBag (ocidl.h): objects that initialise themselves from a property bag.
struct IPersistPropertyBag : public IPersist {
    virtual HRESULT STDMETHODCALLTYPE InitNew() = 0;
    virtual HRESULT STDMETHODCALLTYPE Load(IPropertyBag* bag, IErrorLog* log) = 0;
    virtual HRESULT STDMETHODCALLTYPE Save(IPropertyBag* bag, BOOL clearDirty, BOOL saveAll) = 0;

protected:
    ~IPersistPropertyBag() = default;
};
constexpr IID kIID_IPersistPropertyBag = {0x37D84F60, 0x42CB, 0x11CE, {0x81, 0x35, 0x00, 0xAA, 0x00, 0x4B, 0xB8, 0x51}};
// The class of the device monikers (IPersist::GetClassID).
constexpr CLSID kCLSID_CDeviceMoniker = {0x4315D437, 0x5B8C, 0x11D0, {0xBD, 0x3B, 0x00, 0xA0, 0xC9, 0x11, 0xCE, 0x86}};

// The moniker of the instance `name` of `category`.
ComPtr<IMoniker> NewDeviceMoniker(REFCLSID category, const std::string& name);

// An IEnumMoniker over a fixed list; clones share the list.
using MonikerList = std::vector<ComPtr<IMoniker>>;
ComPtr<IEnumMoniker> NewMonikerEnumerator(std::shared_ptr<const MonikerList> monikers);

}  // namespace ze_dsrt
