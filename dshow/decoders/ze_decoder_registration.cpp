// The decoders as system filters: one class factory per table row, and the rows in the shape the
// runtime's registration takes (pins with their media types), built once and kept for the life of
// the process.
#include <array>
#include <deque>
#include <mutex>
#include <vector>

#include "dshow/decoders/ze_av_decoder_filter.h"
#include "dshow/decoders/ze_decoder_media_types.h"
#include "dshow/decoders/ze_decoder_table.h"
#include "dshow/decoders/ze_dshow_decoders.h"
#include "dshow/runtime/ze_dshow_runtime.h"

namespace zedec {
namespace {

// A class object that lives as long as the process: its reference count is not kept.
class DecoderClassFactory final : public IClassFactory {
public:
    explicit DecoderClassFactory(const DecoderRow& row) : m_row(row) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (!object)
            return E_POINTER;
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory)) {
            *object = static_cast<IClassFactory*>(this);
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override
    {
        return CreateDecoderFilter(m_row, outer, iid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

private:
    const DecoderRow& m_row;
};

// Everything the runtime's rows point to, kept in containers whose elements never move.
struct Registration {
    std::deque<DecoderClassFactory> factories;
    std::deque<std::vector<GUID>> subtypes;
    std::deque<std::vector<REGPINTYPES>> pinTypes;
    std::deque<std::array<REGFILTERPINS2, 2>> pins;  // input, output
    std::vector<ZeSystemFilter> rows;
};

// Answers like a module's DllGetClassObject for every class of the table.
HRESULT STDAPICALLTYPE GetDecoderClassObject(REFCLSID clsid, REFIID iid, LPVOID* object);

Registration& Build()
{
    static Registration reg;
    std::vector<GUID>& outputs = reg.subtypes.emplace_back();
    for (int i = 0;; ++i) {
        CMediaType type;
        if (!MakeOutputType(i, 16, 16, 0, &type))
            break;
        outputs.push_back(type.subtype);
    }
    std::vector<REGPINTYPES>& outputTypes = reg.pinTypes.emplace_back();
    for (const GUID& subtype : outputs)
        outputTypes.push_back({&MEDIATYPE_Video, &subtype});

    for (const DecoderRow& row : DecoderTable()) {
        reg.factories.emplace_back(row);
        std::vector<GUID>& inputs = reg.subtypes.emplace_back();
        for (DWORD fourcc : row.fourccs)
            inputs.push_back(ZeFourccSubtype(fourcc));
        std::vector<REGPINTYPES>& inputTypes = reg.pinTypes.emplace_back();
        for (const GUID& subtype : inputs)
            inputTypes.push_back({&MEDIATYPE_Video, &subtype});
        std::array<REGFILTERPINS2, 2>& pins = reg.pins.emplace_back();
        pins[0] = REGFILTERPINS2{0, 1, UINT(inputTypes.size()), inputTypes.data(), 0, nullptr, nullptr};
        pins[1] = REGFILTERPINS2{REG_PINFLAG_B_OUTPUT, 1, UINT(outputTypes.size()), outputTypes.data(), 0, nullptr,
                                 nullptr};
        reg.rows.push_back({&row.clsid, row.friendlyName.c_str(), row.merit, 2, pins.data(), &GetDecoderClassObject});
    }
    return reg;
}

Registration& TheRegistration()
{
    static Registration& reg = Build();
    return reg;
}

HRESULT STDAPICALLTYPE GetDecoderClassObject(REFCLSID clsid, REFIID iid, LPVOID* object)
{
    if (!object)
        return E_POINTER;
    *object = nullptr;
    const std::vector<DecoderRow>& table = DecoderTable();
    for (size_t i = 0; i < table.size(); ++i)
        if (IsEqualCLSID(table[i].clsid, clsid))
            return TheRegistration().factories[i].QueryInterface(iid, object);
    return CLASS_E_CLASSNOTAVAILABLE;
}

}  // namespace
}  // namespace zedec

void ZeDShowDecodersRegisterClasses()
{
    static std::once_flag once;
    std::call_once(once, [] {
        for (const zedec::DecoderRow& row : zedec::DecoderTable())
            ZeRegisterBuiltinClass(row.clsid, &zedec::GetDecoderClassObject);
    });
}

void ZeDShowDecodersInstall()
{
    static std::once_flag once;
    std::call_once(once, [] {
        const zedec::Registration& reg = zedec::TheRegistration();
        ZeAddSystemFilters(reg.rows.data(), reg.rows.size());
    });
}
