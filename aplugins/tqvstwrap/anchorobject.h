// The reference counting and interface answer of an object that stands for an interface in an
// anchor's stub and is never called.
#pragma once

#include <objbase.h>

namespace tqvst {

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
