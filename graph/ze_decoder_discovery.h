// Decoder discovery through the system's filter mapper: the decoders whose input pins take a stream's
// media types, as filter records with their friendly names and registration data. Nothing here is
// reported through the error reporting; failures are returned.
#pragma once

#include <vector>

#include "graph/ze_filter_record.h"
#include "platform/win32_dshow.h"

// Asks the filter mapper for the filters with an input pin taking one of `types` (major type and
// subtype of each entry), of at least `merit`; `render` asks for a rendered input pin, `exactMatch`
// stops GUID_NULL in a registration from matching everything. The records found are appended to
// `records`. E_FAIL for an empty type list, E_POINTER for a null list or records; the mapper's own
// failures as it answers them.
HRESULT EnumerateDecoders(const std::vector<AM_MEDIA_TYPE>& types, CZeFilterList* records, DWORD merit, BOOL render,
                          BOOL exactMatch);

// Appends a record for every moniker of `monikers` whose property bag can be bound: its FriendlyName,
// CLSID and FilterData values (a value missing from the bag stays empty). The enumerator is reset
// first. E_POINTER for a null enumerator or record list.
HRESULT CollectFilterRecords(IEnumMoniker* monikers, CZeFilterList* records);
