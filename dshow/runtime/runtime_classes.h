// The creation functions of the runtime's built-in classes (each answers like
// IClassFactory::CreateInstance), and the check that keeps the system filters registered.
#pragma once

#include "platform/win32_dshow.h"

namespace ze_dsrt {

HRESULT CreateFilterGraph(IUnknown* outer, REFIID iid, void** object);
HRESULT CreateFilterMapper(IUnknown* outer, REFIID iid, void** object);
HRESULT CreateDeviceEnumerator(IUnknown* outer, REFIID iid, void** object);
HRESULT CreateSystemClock(IUnknown* outer, REFIID iid, void** object);

// Brings the current registry store up to date with the system filters (and the category they are
// listed in) unless this process has done so for that store already. The mapper and the device
// enumerator call it before they read.
void EnsureSystemFiltersRegistered();

}  // namespace ze_dsrt
