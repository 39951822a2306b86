// Pin queries for the graph manager.
#include "dshow/runtime/graph_pins.h"

namespace ze_dsrt {

std::vector<ComPtr<IPin>> FilterPins(IBaseFilter* filter) {
    std::vector<ComPtr<IPin>> pins;
    ComPtr<IEnumPins> all;
    if (filter == nullptr || FAILED(filter->EnumPins(all.Out())) || !all) return pins;
    ComPtr<IPin> pin;
    while (all->Next(1, pin.Out(), nullptr) == S_OK) pins.push_back(std::move(pin));
    return pins;
}

std::vector<ComPtr<IPin>> FilterPins(IBaseFilter* filter, PIN_DIRECTION direction, bool freeOnly) {
    std::vector<ComPtr<IPin>> pins;
    for (ComPtr<IPin>& pin : FilterPins(filter))
        if (PinDirectionIs(pin.Get(), direction) && !(freeOnly && PinConnected(pin.Get()))) pins.push_back(std::move(pin));
    return pins;
}

ComPtr<IBaseFilter> PinOwner(IPin* pin) {
    PIN_INFO info{};
    if (pin == nullptr || FAILED(pin->QueryPinInfo(&info))) return ComPtr<IBaseFilter>();
    return ComPtr<IBaseFilter>::Attach(info.pFilter);
}

bool PinDirectionIs(IPin* pin, PIN_DIRECTION direction) {
    PIN_DIRECTION actual = PINDIR_INPUT;
    return SUCCEEDED(pin->QueryDirection(&actual)) && actual == direction;
}

bool PinConnected(IPin* pin) {
    ComPtr<IPin> peer;
    return SUCCEEDED(pin->ConnectedTo(peer.Out())) && peer;
}

bool PinNotRendered(IPin* pin) {
    PIN_INFO info{};
    if (FAILED(pin->QueryPinInfo(&info))) return false;
    if (info.pFilter != nullptr) info.pFilter->Release();
    return info.achName[0] == '~';
}

std::vector<TypePair> PinTypePairs(IPin* pin) {
    std::vector<TypePair> pairs;
    ComPtr<IEnumMediaTypes> types;
    if (FAILED(pin->EnumMediaTypes(types.Out())) || !types) return pairs;
    AM_MEDIA_TYPE* type = nullptr;
    while (types->Next(1, &type, nullptr) == S_OK) {
        const TypePair pair{type->majortype, type->subtype};
        FreeMediaType(type);
        pairs.push_back(pair);
    }
    return pairs;
}

void FreeMediaType(AM_MEDIA_TYPE* type) {
    if (type == nullptr) return;
    if (type->pbFormat != nullptr) CoTaskMemFree(type->pbFormat);
    if (type->pUnk != nullptr) type->pUnk->Release();
    CoTaskMemFree(type);
}

}  // namespace ze_dsrt
