// A property bag over one registry key, the storage of a device moniker (see device_moniker.h for the
// value types it reads and writes).
#pragma once

#include <string>

#include "dshow/runtime/com_object.h"

namespace ze_dsrt {

// The bag over HKEY_CLASSES_ROOT\`keyPath`; the key is opened on every call, so the bag sees the
// store as it is at that moment.
ComPtr<IPropertyBag> NewRegistryPropertyBag(const std::string& keyPath);

}  // namespace ze_dsrt
