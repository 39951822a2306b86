// The creation step the graph filters share: make the object, let it answer the asked interface, and
// leave it to that reference alone (an object whose construction or QueryInterface failed is gone
// again). Every failure is reported under the class and the creation function's name.
#pragma once

#include <new>

#include "reader/status/ze_error_report.h"

template <class Filter>
HRESULT ZeCreateFilter(const char* className, const char* methodName, IUnknown* outer, REFIID iid, void** object)
{
    if (object == nullptr) return ReportError(className, methodName, E_POINTER);
    *object = nullptr;
    // An aggregating object needs this one's own IUnknown and nothing else.
    if (outer != nullptr && iid != IID_IUnknown) return ReportError(className, methodName, CLASS_E_NOAGGREGATION);

    HRESULT hr = S_OK;
    Filter* filter = nullptr;
    try {
        filter = new Filter(outer, &hr);
    } catch (const std::bad_alloc&) {
        return ReportError(className, methodName, E_OUTOFMEMORY);
    }
    if (FAILED(hr)) {
        delete filter;
        return hr;  // the constructor reported it
    }
    filter->NonDelegatingAddRef();
    hr = filter->NonDelegatingQueryInterface(iid, object);
    filter->NonDelegatingRelease();
    if (FAILED(hr)) return ReportError(className, methodName, hr);
    return hr;
}
