// COM plumbing shared by the runtime's classes: an interface pointer that releases itself, a
// reference-counted object base whose QueryInterface asks the class for its interfaces, the exception
// barrier every interface method runs behind, and the class factory of a built-in class.
#pragma once

#include <atomic>
#include <new>
#include <utility>

#include "platform/win32.h"

namespace ze_dsrt {

// Owns one reference to an interface.
template <class T>
class ComPtr {
public:
    ComPtr() = default;
    ComPtr(std::nullptr_t) {}
    // Takes a new reference to `p`.
    explicit ComPtr(T* p) : p_(p) {
        if (p_ != nullptr) p_->AddRef();
    }
    ComPtr(const ComPtr& other) : ComPtr(other.p_) {}
    ComPtr(ComPtr&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
    ~ComPtr() { Reset(); }
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(p_, other.p_);
        return *this;
    }

    // Adopts a reference the caller already owns.
    static ComPtr Attach(T* p) {
        ComPtr r;
        r.p_ = p;
        return r;
    }
    T* Detach() { return std::exchange(p_, nullptr); }
    void Reset() {
        if (T* p = std::exchange(p_, nullptr)) p->Release();
    }
    // The address for an out parameter; whatever was held is released first.
    T** Out() {
        Reset();
        return &p_;
    }
    void** OutVoid() { return reinterpret_cast<void**>(Out()); }

    T* Get() const { return p_; }
    T* operator->() const { return p_; }
    explicit operator bool() const { return p_ != nullptr; }

    // QueryInterface into another smart pointer.
    template <class U>
    HRESULT As(REFIID iid, ComPtr<U>* out) const {
        return p_ == nullptr ? E_POINTER : p_->QueryInterface(iid, out->OutVoid());
    }

private:
    T* p_ = nullptr;
};

// Runs `work` and turns an exception into an HRESULT, so none crosses an interface.
template <class Work>
HRESULT Guarded(Work&& work) noexcept {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

// Reference counting and QueryInterface for a class implementing `Interfaces`. The class answers
// `void* FindInterface(REFIID)` with the interface pointer for an identifier, or null; IUnknown is
// the first interface. Objects start with one reference, owned by whoever called `new`.
template <class Derived, class First, class... Rest>
class ComObject : public First, public Rest... {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        void* found = IsEqualIID(iid, IID_IUnknown) ? static_cast<IUnknown*>(static_cast<First*>(this))
                                                    : static_cast<Derived*>(this)->FindInterface(iid);
        *object = found;
        if (found == nullptr) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++refs_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --refs_;
        if (left == 0) delete static_cast<Derived*>(this);
        return left;
    }

protected:
    ComObject() = default;
    virtual ~ComObject() = default;
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

private:
    std::atomic<ULONG> refs_{1};
};

// Creates a `T` (default-constructed) and hands out the interface asked for.
template <class T>
HRESULT CreateObject(IUnknown* outer, REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    return Guarded([&] {
        ComPtr<T> created = ComPtr<T>::Attach(new T());
        return created->QueryInterface(iid, object);
    });
}

// The class object of a built-in class: a static object that creates instances through `create`.
class StaticClassFactory final : public IClassFactory {
public:
    using CreateFunction = HRESULT (*)(IUnknown* outer, REFIID iid, void** object);
    explicit constexpr StaticClassFactory(CreateFunction create) : create_(create) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IClassFactory)) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    // A static object lives as long as the process; the counts only keep COM's rules visible.
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        return create_(outer, iid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

private:
    CreateFunction create_;
};

}  // namespace ze_dsrt
