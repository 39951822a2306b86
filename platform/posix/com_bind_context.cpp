// CreateBindCtx: the bind context passed to moniker binding. It keeps the objects bound during an
// operation alive until ReleaseBoundObjects (or its own end), holds the bind options, and keeps object
// parameters by key.
#include <atomic>
#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <string>
#include <vector>

#include "platform/win32.h"

namespace {

class BindContext final : public IBindCtx {
public:
    BindContext() {
        m_options.cbStruct = sizeof(BIND_OPTS);
        m_options.grfMode = STGM_READWRITE;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IBindCtx)) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<IBindCtx*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_refs; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --m_refs;
        if (left == 0) delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE RegisterObjectBound(IUnknown* object) override {
        if (object == nullptr) return E_INVALIDARG;
        std::lock_guard<std::mutex> lock(m_mutex);
        try {
            m_bound.push_back(object);
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        }
        object->AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE RevokeObjectBound(IUnknown* object) override {
        if (object == nullptr) return E_INVALIDARG;
        std::lock_guard<std::mutex> lock(m_mutex);
        for (auto it = m_bound.begin(); it != m_bound.end(); ++it) {
            if (*it == object) {
                m_bound.erase(it);
                object->Release();
                return S_OK;
            }
        }
        return MK_E_NOTBOUND;
    }
    HRESULT STDMETHODCALLTYPE ReleaseBoundObjects() override {
        std::vector<IUnknown*> bound;
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            bound.swap(m_bound);
        }
        for (IUnknown* object : bound) object->Release();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetBindOptions(BIND_OPTS* options) override {
        if (options == nullptr || options->cbStruct < sizeof(BIND_OPTS)) return E_INVALIDARG;
        std::lock_guard<std::mutex> lock(m_mutex);
        m_options = *options;
        m_options.cbStruct = sizeof(BIND_OPTS);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetBindOptions(BIND_OPTS* options) override {
        if (options == nullptr || options->cbStruct < sizeof(BIND_OPTS)) return E_INVALIDARG;
        std::lock_guard<std::mutex> lock(m_mutex);
        const DWORD callerSize = options->cbStruct;
        // Larger option records of later versions get their further fields zeroed.
        std::memset(reinterpret_cast<BYTE*>(options) + sizeof(BIND_OPTS), 0, callerSize - sizeof(BIND_OPTS));
        *options = m_options;
        options->cbStruct = callerSize;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetRunningObjectTable(IRunningObjectTable** table) override {
        if (table == nullptr) return E_POINTER;
        *table = nullptr;
        return E_NOTIMPL;  // no running object table on this platform
    }
    HRESULT STDMETHODCALLTYPE RegisterObjectParam(LPOLESTR key, IUnknown* object) override {
        if (key == nullptr || object == nullptr) return E_INVALIDARG;
        std::lock_guard<std::mutex> lock(m_mutex);
        try {
            IUnknown*& slot = m_params[Key(key)];
            object->AddRef();
            if (slot != nullptr) slot->Release();
            slot = object;
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetObjectParam(LPOLESTR key, IUnknown** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (key == nullptr) return E_INVALIDARG;
        std::lock_guard<std::mutex> lock(m_mutex);
        try {
            auto it = m_params.find(Key(key));
            if (it == m_params.end()) return E_FAIL;
            *object = it->second;
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        }
        (*object)->AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE EnumObjectParam(IEnumString** keys) override {
        if (keys == nullptr) return E_POINTER;
        *keys = nullptr;
        return E_NOTIMPL;  // as the system's own bind context answers
    }
    HRESULT STDMETHODCALLTYPE RevokeObjectParam(LPOLESTR key) override {
        if (key == nullptr) return E_INVALIDARG;
        IUnknown* object = nullptr;
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            try {
                auto it = m_params.find(Key(key));
                if (it == m_params.end()) return S_FALSE;
                object = it->second;
                m_params.erase(it);
            } catch (const std::bad_alloc&) {
                return E_OUTOFMEMORY;
            }
        }
        object->Release();
        return S_OK;
    }

private:
    ~BindContext() {
        ReleaseBoundObjects();
        for (auto& param : m_params) param.second->Release();
    }

    static std::u16string Key(LPCOLESTR key) {
        std::u16string text;
        for (; *key != 0; ++key) text.push_back(static_cast<char16_t>(*key));
        return text;
    }

    std::atomic<ULONG> m_refs{1};
    std::mutex m_mutex;
    BIND_OPTS m_options{};
    std::vector<IUnknown*> m_bound;
    std::map<std::u16string, IUnknown*> m_params;
};

}  // namespace

HRESULT CreateBindCtx(DWORD reserved, IBindCtx** context) {
    if (context == nullptr) return E_INVALIDARG;
    *context = nullptr;
    if (reserved != 0) return E_INVALIDARG;
    *context = new (std::nothrow) BindContext;
    return *context != nullptr ? S_OK : E_OUTOFMEMORY;
}
