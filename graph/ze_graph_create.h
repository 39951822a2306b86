// Creation of the decoding graph's filters, as a class factory calls it: a new object answering
// QueryInterface(iid), aggregated by `outer` when one is given (iid must then be IID_IUnknown,
// otherwise CLASS_E_NOAGGREGATION).
#pragma once

#include "platform/win32.h"

HRESULT CreateZEVideoSourceFilter(IUnknown* outer, REFIID iid, void** object);
HRESULT CreateZEVideoRenderFilter(IUnknown* outer, REFIID iid, void** object);
