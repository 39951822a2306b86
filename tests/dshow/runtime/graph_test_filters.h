// Filters for the graph manager's tests, on the base classes and the filter harness:
//   Converter        a transform from one video subtype to another that appends its marker byte to
//                    every sample, so a rendered sample shows which converters it went through; its
//                    output pin may be given a "~" name;
//   ConverterKind    a converter class the COM runtime can create and the mapper can list;
//   Logged<Filter>   a filter that writes its Pause, Run and Stop calls to a CallLog;
//   ClockRenderer    a collecting renderer that is also a reference clock.
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "tests/dshow/runtime/runtime_test_support.h"
#include "tests/dshow/support/ze_filter_harness.h"

namespace zetest {

const GUID kSubtypeA = TestGuid(0xA1);
const GUID kSubtypeB = TestGuid(0xB2);
const GUID kSubtypeC = TestGuid(0xC3);

class Converter : public CTransformFilter {
public:
    static std::atomic<int> live;

    Converter(REFCLSID clsid, const GUID& in, const GUID& out, BYTE marker, const char* outputName = nullptr)
        : CTransformFilter("Converter", nullptr, clsid), in_(in), out_(out), marker_(marker) {
        if (outputName != nullptr)
            m_pOutput = std::make_unique<CTransformOutputPin>("Converter output", this, nullptr, outputName);
        ++live;
    }
    ~Converter() override { --live; }

    HRESULT CheckInputType(const CMediaType* in) override {
        return in->majortype == MEDIATYPE_Video && in->subtype == in_ ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
    }
    HRESULT CheckTransform(const CMediaType* in, const CMediaType* out) override {
        return in->subtype == in_ && out->subtype == out_ ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
    }
    HRESULT GetMediaType(int position, CMediaType* type) override {
        if (position < 0) return E_INVALIDARG;
        if (position > 0) return VFW_S_NO_MORE_ITEMS;
        return type->Set(PlainType(MEDIATYPE_Video, out_));
    }
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override {
        request->cBuffers = request->cBuffers > 0 ? request->cBuffers : 1;
        request->cbBuffer = request->cbBuffer > 4096 ? request->cbBuffer : 4096;
        ALLOCATOR_PROPERTIES actual{};
        return allocator->SetProperties(request, &actual);
    }
    HRESULT Transform(IMediaSample* in, IMediaSample* out) override {
        BYTE* src = nullptr;
        BYTE* dst = nullptr;
        in->GetPointer(&src);
        out->GetPointer(&dst);
        const LONG length = in->GetActualDataLength();
        if (length + 1 > out->GetSize()) return E_FAIL;
        std::memcpy(dst, src, static_cast<size_t>(length));
        dst[length] = marker_;
        return out->SetActualDataLength(length + 1);
    }

private:
    GUID in_;
    GUID out_;
    BYTE marker_;
};
inline std::atomic<int> Converter::live{0};

// A converter class: what it converts, and the class object that makes it.
struct ConverterKind {
    GUID clsid;
    const char* name;
    GUID in;
    GUID out;
    BYTE marker;
    const char* outputName;

    HRESULT Create(REFIID iid, void** object) const {
        Converter* converter = new Converter(clsid, in, out, marker, outputName);
        converter->AddRef();
        const HRESULT hr = converter->QueryInterface(iid, object);
        converter->Release();
        return hr;
    }
    // Registers the class with the mapper: one input of `in`, one output of `out`.
    HRESULT Register(IFilterMapper2* mapper, DWORD merit) const {
        const REGPINTYPES inType = {&MEDIATYPE_Video, &in};
        const REGPINTYPES outType = {&MEDIATYPE_Video, &out};
        const REGFILTERPINS2 pins[] = {{0, 1, 1, &inType, 0, nullptr, nullptr},
                                       {REG_PINFLAG_B_OUTPUT, 1, 1, &outType, 0, nullptr, nullptr}};
        REGFILTER2 description{};
        description.dwVersion = 2;
        description.dwMerit = merit;
        description.cPins2 = 2;
        description.rgPins2 = pins;
        return mapper->RegisterFilter(clsid, Ole(name).c_str(), nullptr, nullptr, nullptr, &description);
    }
};

// The converter classes the tests use, each a built-in class of the COM runtime.
inline const ConverterKind kConverterKinds[] = {
    {TestGuid(0x9001), "A to B", kSubtypeA, kSubtypeB, 0xAB, nullptr},
    {TestGuid(0x9002), "B to C", kSubtypeB, kSubtypeC, 0xBC, nullptr},
    {TestGuid(0x9003), "A to B, second choice", kSubtypeA, kSubtypeB, 0x2B, nullptr},
    {TestGuid(0x9004), "A to C", kSubtypeA, kSubtypeC, 0xAC, nullptr},
};
inline const ConverterKind& kAtoB = kConverterKinds[0];
inline const ConverterKind& kBtoC = kConverterKinds[1];
inline const ConverterKind& kAtoBSecond = kConverterKinds[2];
inline const ConverterKind& kAtoC = kConverterKinds[3];

class ConverterFactory final : public IClassFactory {
public:
    explicit ConverterFactory(const ConverterKind* kind) : kind_(kind) {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IClassFactory)) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        return kind_->Create(iid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

private:
    const ConverterKind* kind_;
};

inline HRESULT STDAPICALLTYPE ConverterClassObject(REFCLSID clsid, REFIID iid, LPVOID* object) {
    static ConverterFactory factories[] = {ConverterFactory(&kConverterKinds[0]), ConverterFactory(&kConverterKinds[1]),
                                           ConverterFactory(&kConverterKinds[2]), ConverterFactory(&kConverterKinds[3])};
    for (size_t i = 0; i < std::size(kConverterKinds); ++i)
        if (IsEqualCLSID(kConverterKinds[i].clsid, clsid)) return factories[i].QueryInterface(iid, object);
    return CLASS_E_CLASSNOTAVAILABLE;
}

inline void RegisterConverterClasses() {
    for (const ConverterKind& kind : kConverterKinds) ZeRegisterBuiltinClass(kind.clsid, ConverterClassObject);
}

// Pause, Run and Stop calls of all logged filters, in order, as "<call> <name>".
class CallLog {
public:
    void Add(const std::string& call) {
        std::lock_guard<std::mutex> lock(mutex_);
        calls_.push_back(call);
    }
    std::vector<std::string> Take() {
        std::lock_guard<std::mutex> lock(mutex_);
        return std::move(calls_);
    }

private:
    std::mutex mutex_;
    std::vector<std::string> calls_;
};

template <class Filter>
class Logged : public Filter {
public:
    template <class... Args>
    explicit Logged(CallLog* log, std::string name, Args&&... args)
        : Filter(std::forward<Args>(args)...), log_(log), name_(std::move(name)) {}

    HRESULT STDMETHODCALLTYPE Pause() override {
        log_->Add("Pause " + name_);
        return Filter::Pause();
    }
    HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) override {
        log_->Add("Run " + name_);
        return Filter::Run(start);
    }
    HRESULT STDMETHODCALLTYPE Stop() override {
        log_->Add("Stop " + name_);
        return Filter::Stop();
    }

private:
    CallLog* log_;
    std::string name_;
};

// A renderer that hands out a clock of its own as its IReferenceClock.
class ClockRenderer : public CollectingRenderer {
public:
    ClockRenderer() { clock_.Assign(new ManualClock(0)); }
    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override {
        if (object != nullptr && IsEqualIID(iid, IID_IReferenceClock)) return clock_->QueryInterface(iid, object);
        return CollectingRenderer::NonDelegatingQueryInterface(iid, object);
    }
    IReferenceClock* Clock() const { return clock_.Get(); }

private:
    CInterfacePtr<IReferenceClock> clock_;
};

// A renderer check that takes video of one subtype only.
inline CollectingRenderer::TypeCheck AcceptOnly(const GUID& subtype) {
    return [subtype](const CMediaType* type) {
        return type->majortype == MEDIATYPE_Video && type->subtype == subtype ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
    };
}

// The reference count an object has besides the caller's own.
inline ULONG OtherReferences(IUnknown* object) {
    object->AddRef();
    return object->Release() - 1;
}

}  // namespace zetest
