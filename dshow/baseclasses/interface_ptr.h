// An owning COM interface pointer for the base classes: holds one reference and releases it when it is
// reset, replaced or destroyed.
#pragma once

#include <utility>

#include "platform/win32_dshow.h"

template <class T>
class CInterfacePtr {
public:
    CInterfacePtr() = default;
    // Takes a new reference to `p`.
    explicit CInterfacePtr(T* p) : m_p(p) { AddRefHeld(); }
    CInterfacePtr(const CInterfacePtr& other) : m_p(other.m_p) { AddRefHeld(); }
    CInterfacePtr(CInterfacePtr&& other) noexcept : m_p(std::exchange(other.m_p, nullptr)) {}
    ~CInterfacePtr() { Reset(); }
    CInterfacePtr& operator=(CInterfacePtr other) noexcept
    {
        std::swap(m_p, other.m_p);
        return *this;
    }

    // Replaces the held pointer with a new reference to `p`.
    void Assign(T* p) { *this = CInterfacePtr(p); }
    // Adopts a reference the caller already owns.
    void Attach(T* p)
    {
        Reset();
        m_p = p;
    }
    T* Detach() { return std::exchange(m_p, nullptr); }
    void Reset()
    {
        if (T* p = std::exchange(m_p, nullptr))
            p->Release();
    }
    // The address for an out parameter that hands over a reference; anything held is released first.
    T** Out()
    {
        Reset();
        return &m_p;
    }
    void** OutVoid() { return reinterpret_cast<void**>(Out()); }
    // A new reference for the caller (null stays null).
    T* Copy() const
    {
        if (m_p)
            m_p->AddRef();
        return m_p;
    }

    T* Get() const { return m_p; }
    T* operator->() const { return m_p; }
    explicit operator bool() const { return m_p != nullptr; }

private:
    void AddRefHeld()
    {
        if (m_p)
            m_p->AddRef();
    }

    T* m_p = nullptr;
};
