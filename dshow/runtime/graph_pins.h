// What the graph manager asks of pins: a filter's pins (all, or one direction), a pin's owner,
// direction, name and peer, and the (major, minor) pairs of the media types a pin offers.
#pragma once

#include <vector>

#include "dshow/runtime/com_object.h"
#include "dshow/runtime/filter_data.h"
#include "platform/win32_dshow.h"

namespace ze_dsrt {

// Every pin of the filter, in its own order.
std::vector<ComPtr<IPin>> FilterPins(IBaseFilter* filter);
// The pins of one direction that are not connected, in the filter's order.
std::vector<ComPtr<IPin>> FilterPins(IBaseFilter* filter, PIN_DIRECTION direction, bool freeOnly = false);

ComPtr<IBaseFilter> PinOwner(IPin* pin);
bool PinDirectionIs(IPin* pin, PIN_DIRECTION direction);
bool PinConnected(IPin* pin);
// Pins whose name starts with '~' are not meant to be rendered and are left alone when the graph
// connects on its own.
bool PinNotRendered(IPin* pin);

// The media types the pin enumerates, as (major, minor) pairs.
std::vector<TypePair> PinTypePairs(IPin* pin);

// Releases a media type an enumerator handed out (format block, its IUnknown, the record).
void FreeMediaType(AM_MEDIA_TYPE* type);

}  // namespace ze_dsrt
