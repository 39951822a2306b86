#include "graph/ze_decoder_discovery.h"

#include <new>
#include <string>

#include "graph/ze_com_ref.h"
#include "graph/ze_ole_text.h"
#include "graph/ze_system_decoders.h"

namespace {

// A variant that frees what it holds when it goes.
class ScopedVariant {
public:
    ScopedVariant() { VariantInit(&m_value); }
    ~ScopedVariant() { VariantClear(&m_value); }
    ScopedVariant(const ScopedVariant&) = delete;
    ScopedVariant& operator=(const ScopedVariant&) = delete;
    VARIANT* get() { return &m_value; }

private:
    VARIANT m_value;
};

// Reads one value of the bag; false when it is missing or of another type.
bool ReadValue(IPropertyBag* bag, const char* name, VARTYPE type, ScopedVariant& value)
{
    return SUCCEEDED(bag->Read(ZeOle(name).c_str(), value.get(), nullptr)) && value.get()->vt == type;
}

std::vector<BYTE> ArrayBytes(SAFEARRAY* array)
{
    std::vector<BYTE> bytes;
    LONG lower = 0;
    LONG upper = -1;
    if (array == nullptr || FAILED(SafeArrayGetLBound(array, 1, &lower)) ||
        FAILED(SafeArrayGetUBound(array, 1, &upper)) || upper < lower)
        return bytes;
    void* data = nullptr;
    if (FAILED(SafeArrayAccessData(array, &data))) return bytes;
    const BYTE* first = static_cast<const BYTE*>(data);
    bytes.assign(first, first + (static_cast<size_t>(upper) - static_cast<size_t>(lower) + 1));
    SafeArrayUnaccessData(array);
    return bytes;
}

CZeFilter RecordFromBag(IPropertyBag* bag)
{
    CZeFilter record;
    ScopedVariant name;
    if (ReadValue(bag, "FriendlyName", VT_BSTR, name)) record.SetFriendlyName(name.get()->bstrVal);
    ScopedVariant clsidText;
    CLSID clsid{};
    if (ReadValue(bag, "CLSID", VT_BSTR, clsidText) && SUCCEEDED(CLSIDFromString(clsidText.get()->bstrVal, &clsid)))
        record.SetClassId(clsid);
    ScopedVariant data;
    if (ReadValue(bag, "FilterData", VT_ARRAY | VT_UI1, data)) record.SetFilterData(ArrayBytes(data.get()->parray));
    return record;
}

HRESULT CollectInto(IEnumMoniker* monikers, CZeFilterList* records)
{
    monikers->Reset();
    for (;;) {
        IMoniker* raw = nullptr;
        if (monikers->Next(1, &raw, nullptr) != S_OK || raw == nullptr) break;
        const ZeComRef<IMoniker> moniker(raw);
        IPropertyBag* rawBag = nullptr;
        if (FAILED(moniker->BindToStorage(nullptr, nullptr, IID_IPropertyBag, reinterpret_cast<void**>(&rawBag))) ||
            rawBag == nullptr)
            continue;
        const ZeComRef<IPropertyBag> bag(rawBag);
        records->push_back(RecordFromBag(bag.get()));
    }
    return S_OK;
}

}  // namespace

HRESULT CollectFilterRecords(IEnumMoniker* monikers, CZeFilterList* records)
{
    if (monikers == nullptr || records == nullptr) return E_POINTER;
    try {
        return CollectInto(monikers, records);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT EnumerateDecoders(const std::vector<AM_MEDIA_TYPE>& types, CZeFilterList* records, DWORD merit, BOOL render,
                          BOOL exactMatch)
{
    if (records == nullptr) return E_POINTER;
    if (types.empty()) return E_FAIL;
    try {
        ZeEnsureSystemDecoders();

        IFilterMapper2* rawMapper = nullptr;
        HRESULT hr = CoCreateInstance(CLSID_FilterMapper2, nullptr, CLSCTX_INPROC_SERVER, IID_IFilterMapper2,
                                      reinterpret_cast<void**>(&rawMapper));
        if (FAILED(hr)) return hr;
        const ZeComRef<IFilterMapper2> mapper(rawMapper);

        std::vector<GUID> pairs;
        pairs.reserve(types.size() * 2);
        for (const AM_MEDIA_TYPE& type : types) {
            pairs.push_back(type.majortype);
            pairs.push_back(type.subtype);
        }

        IEnumMoniker* rawMonikers = nullptr;
        hr = mapper->EnumMatchingFilters(&rawMonikers, 0, exactMatch, merit, TRUE, static_cast<DWORD>(types.size()),
                                         pairs.data(), nullptr, nullptr, render, FALSE, 0, nullptr, nullptr, nullptr);
        const ZeComRef<IEnumMoniker> monikers(rawMonikers);
        if (FAILED(hr)) return hr;
        if (monikers == nullptr) return E_FAIL;
        return CollectInto(monikers.get(), records);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}
