// CLSID_SystemDeviceEnum: the monikers of a category's registered instances.
//
// Only software filters (registry instances) exist here, so a request limited by the CDEF_DEVMON_*
// bits to other kinds of device gets none; CDEF_MERIT_ABOVE_DO_NOT_USE drops instances whose
// FilterData gives a merit of MERIT_DO_NOT_USE or less (or cannot be read).
#include <memory>
#include <string>
#include <vector>

#include "dshow/runtime/com_object.h"
#include "dshow/runtime/device_moniker.h"
#include "dshow/runtime/filter_data.h"
#include "dshow/runtime/registration_cache.h"
#include "dshow/runtime/runtime_classes.h"

namespace ze_dsrt {

namespace {

bool MeritAboveDoNotUse(const InstanceRecord& instance) {
    FilterRecord record;
    return instance.hasFilterData && ReadFilterData(instance.filterData.data(), instance.filterData.size(), &record) &&
           record.merit > MERIT_DO_NOT_USE;
}

class DeviceEnumerator final : public ComObject<DeviceEnumerator, ICreateDevEnum> {
public:
    void* FindInterface(REFIID iid) {
        return IsEqualIID(iid, IID_ICreateDevEnum) ? static_cast<ICreateDevEnum*>(this) : nullptr;
    }

    HRESULT STDMETHODCALLTYPE CreateClassEnumerator(REFCLSID clsidDeviceClass, IEnumMoniker** ppEnumMoniker,
                                                    DWORD dwFlags) override {
        if (ppEnumMoniker == nullptr) return E_POINTER;
        *ppEnumMoniker = nullptr;
        return Guarded([&]() -> HRESULT {
            EnsureSystemFiltersRegistered();
            auto list = std::make_shared<MonikerList>();
            const bool softwareWanted =
                (dwFlags & CDEF_DEVMON_SELECTIVE_MASK) == 0 || (dwFlags & CDEF_DEVMON_FILTER) != 0;
            if (softwareWanted) {
                for (const InstanceRecord& instance : *CachedInstances(clsidDeviceClass)) {
                    if ((dwFlags & CDEF_MERIT_ABOVE_DO_NOT_USE) != 0 && !MeritAboveDoNotUse(instance)) continue;
                    list->push_back(NewDeviceMoniker(clsidDeviceClass, instance.name));
                }
            }
            // An empty or unknown category gives S_FALSE and no enumerator.
            if (list->empty()) return S_FALSE;
            *ppEnumMoniker = NewMonikerEnumerator(std::move(list)).Detach();
            return S_OK;
        });
    }
};

}  // namespace

HRESULT CreateDeviceEnumerator(IUnknown* outer, REFIID iid, void** object) {
    return CreateObject<DeviceEnumerator>(outer, iid, object);
}

}  // namespace ze_dsrt
