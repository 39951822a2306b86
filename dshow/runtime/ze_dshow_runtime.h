// The DirectShow runtime that stands in for the system's on Linux: the filter graph manager
// (CLSID_FilterGraph), the filter mapper (CLSID_FilterMapper2), the system device enumerator
// (CLSID_SystemDeviceEnum) and the system reference clock (CLSID_SystemClock), all built-in classes of
// the COM runtime, created with CoCreateInstance like any other class.
//
// System filters (the decoders that ship with the runtime) make themselves known through
// ZeAddSystemFilters: their classes become built-in classes, and the registry store is brought to
// what a Windows installation holds for them, written through the mapper's own RegisterFilter:
//   HKCR\CLSID\{clsid}                                     default value: the friendly name
//   HKCR\CLSID\{083863F1-...}\Instance\{clsid}             FriendlyName, CLSID, FilterData
//   HKCR\CLSID\{DA4E3DA0-...}\Instance\{083863F1-...}      the "DirectShow Filters" category
// Values are written only when missing or different: at once, and again before a mapper or device
// enumerator of this process first reads a registry store (ZE_REGISTRY_FILE) not yet checked, so
// EnumMatchingFilters and the device enumerator over CLSID_LegacyAmFilterCategory find them as they
// find any registered filter.
#pragma once

#include <cstddef>

#include "platform/win32_dshow.h"

// One system filter: its class, name and registration, as a DLL's filter table gives them.
struct ZeSystemFilter {
    const CLSID* clsid;
    const char* friendlyName;  // UTF-8
    DWORD merit;
    ULONG pinCount;
    const REGFILTERPINS2* pins;  // the pins, types and mediums as RegisterFilter takes them
    LPFNGETCLASSOBJECT getClassObject;  // answers like DllGetClassObject for `clsid`
};

// Registers the four runtime classes with the COM runtime. Idempotent and thread-safe; the class
// objects are static, so nothing needs to be undone.
void ZeDShowRuntimeInstall();

// Installs the runtime when needed, then adds the rows: each becomes a built-in class and its
// registration is brought into the registry as described above. A row for a class added before
// replaces the earlier one. The rows and everything they point to must stay valid for the rest of the
// process (static tables).
void ZeAddSystemFilters(const ZeSystemFilter* rows, size_t count);
