// The pieces of an anchor: a stub kept for an interface so that the platform never unregisters
// it while the process runs.
#pragma once

#include "comptr.h"

#include <objbase.h>

namespace tqvst {

// The marshalled form of object, which holds a stub of the interface until its marshal data is
// released (CoReleaseMarshalData on the stream from its start); empty when it cannot be made.
inline tq::ComPtr<IStream> MarshalForLife(IUnknown* object, REFIID riid) noexcept
{
    tq::ComPtr<IStream> held;
    if (!object || FAILED(CreateStreamOnHGlobal(nullptr, TRUE, held.Put()))) return {};
    if (FAILED(CoMarshalInterface(held.Get(), riid, object, MSHCTX_LOCAL, nullptr,
                                  MSHLFLAGS_TABLESTRONG)))
        return {};
    return held;
}

// The reference counting and interface answer of an object that stands for an interface in an
// anchor's stub and is never called.
template <typename Interface, const IID* kIid>
class CAnchorObject : public Interface
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override
    {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (riid != IID_IUnknown && riid != *kIid) return E_NOINTERFACE;
        *object = static_cast<Interface*>(this);
        this->AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ULONG(InterlockedIncrement(&m_refCount)); }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const LONG count = InterlockedDecrement(&m_refCount);
        if (count == 0) delete this;
        return ULONG(count);
    }

protected:
    virtual ~CAnchorObject() = default;

private:
    volatile LONG m_refCount = 1;
};

} // namespace tqvst
