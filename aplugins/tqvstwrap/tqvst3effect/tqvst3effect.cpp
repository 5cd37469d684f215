// VST3 effect object: construction, loading a class and wiring its objects, teardown in order,
// and the one host context of the process.
#include "tqvst3effect.h"

#include "hosting/memorystream.h"
#include "loadpluginclass.h"
#include "serverlifetime.h"
#include "vst3componenthandler.h"
#include "vst3host.h"

#include <new>

using tqvst::CallPlugin;
using namespace vst3;

tqvst::Vst3Host* g_vst3Host = nullptr;

void ReleaseVst3HostIfUnused()
{
    if (g_objectCount != 0 || !g_vst3Host) return;
    // Deleted, not released: a plug-in that kept a reference past its terminate does not keep
    // the context alive into the next generation of effects.
    delete g_vst3Host;
    g_vst3Host = nullptr;
}

CTqVst3Effect::CTqVst3Effect(const wchar_t* path, UINT32 requestedId, HRESULT* result)
{
    if (!g_vst3Host) g_vst3Host = new (std::nothrow) tqvst::Vst3Host;
    *result = LoadPlugin(path, requestedId);
    // Counted even when the load failed: the caller releases a failed object.
    AdjustObjectCount(true);
}

CTqVst3Effect::~CTqVst3Effect()
{
    ReleasePlugin();
    AdjustObjectCount(false);
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::QueryInterface(REFIID riid, void** object)
{
    if (!object) return E_POINTER;
    if (riid == IID_IUnknown || riid == IID_ITqVstEffect)
    {
        *object = static_cast<ITqVstEffect*>(this);
        AddRef();
        return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
}

ULONG STDMETHODCALLTYPE CTqVst3Effect::AddRef()
{
    return InterlockedIncrement(&m_refCount);
}

ULONG STDMETHODCALLTYPE CTqVst3Effect::Release()
{
    const ULONG count = InterlockedDecrement(&m_refCount);
    if (count == 0) delete this;
    return count;
}

HRESULT CTqVst3Effect::LoadPlugin(const wchar_t* path, UINT32 requestedId)
{
    tqvst::Vst3LoadedClass loaded;
    const HRESULT hr = tqvst::LoadPluginClass(loaded, path, requestedId);
    m_module = std::move(loaded.module);
    m_flags = loaded.flags;
    m_uniqueId = loaded.uniqueId;
    m_version = loaded.version;
    m_classCount = loaded.classCount;
    static_assert(sizeof(m_vendorName) == sizeof(loaded.vendorName));
    static_assert(sizeof(m_effectName) == sizeof(loaded.effectName));
    memcpy(m_vendorName, loaded.vendorName, sizeof(m_vendorName));
    memcpy(m_effectName, loaded.effectName, sizeof(m_effectName));
    if (hr != S_OK) return hr;

    // Set in advance, so that a failed allocation reads as a failed setup.
    bool failed = true;
    m_provider.reset(new (std::nothrow) tqvst::Vst3PlugProvider(m_module->factory(),
                                                                loaded.chosenClass, &failed, true));
    if (!m_provider || failed)
        return m_provider && m_provider->Faulted() ? TQVST_E_PLUGINFAULT : tqvst::kNoVst3Plugin;
    FinishLoad();
    return S_OK;
}

void CTqVst3Effect::FinishLoad()
{
    m_controller = m_provider->getController();
    // Registers itself with the controller.
    m_handler = new (std::nothrow) tqvst::Vst3ComponentHandler(this, m_controller.Get());
    m_component = m_provider->getComponent();
    m_processor = tqvst::QueryPlugin<IAudioProcessor>(m_component.Get());
    if (m_processor && m_controller)
    {
        ConnectPoints(true);
        // The controller learns the processor's state before the host asks it anything.
        auto* state = new (std::nothrow) MemoryStream;
        if (state)
        {
            tresult result = kResultFalse;
            CallPlugin([&] { result = m_component->getState(state); });
            if (result == kResultOk)
            {
                state->seek(0, IBStream::kIBSeekSet, nullptr);
                CallPlugin([&] { m_controller->setComponentState(state); });
            }
            state->release();
        }
        if (m_handler) m_handler->BuildParameterList();
        BuildProgramList();
    }
    m_busLayout = m_provider->Layout();
}

// The points are asked for on the processor, which is the component in every conforming plug-in.
void CTqVst3Effect::ConnectPoints(bool connect)
{
    auto processorPoint = tqvst::QueryPlugin<IConnectionPoint>(m_processor.Get());
    auto controllerPoint = tqvst::QueryPlugin<IConnectionPoint>(m_controller.Get());
    if (!processorPoint || !controllerPoint) return;
    IConnectionPoint* processorSide = processorPoint.Get();
    IConnectionPoint* controllerSide = controllerPoint.Get();
    // What the plug-in answers is not looked at: a refused connection only means no messages.
    if (connect)
    {
        CallPlugin([&] { processorSide->connect(controllerSide); });
        CallPlugin([&] { controllerSide->connect(processorSide); });
    }
    else
    {
        CallPlugin([&] { processorSide->disconnect(controllerSide); });
        CallPlugin([&] { controllerSide->disconnect(processorSide); });
    }
    m_connected = connect;
}

void CTqVst3Effect::ReleasePlugin()
{
    // The view goes before the points are cut.
    CloseEditor();
    if (m_connected && m_processor && m_controller) ConnectPoints(false);
    if (m_processor)
    {
        if (m_running)
        {
            IAudioProcessor* processor = m_processor.Get();
            IComponent* component = m_component.Get();
            CallPlugin([&] { processor->setProcessing(false); });
            if (component) CallPlugin([&] { component->setActive(false); });
            m_running = false;
        }
        m_processor.Reset();
    }
    // The handler goes before the objects that call it; the provider's end terminates the pair.
    if (m_handler) std::exchange(m_handler, nullptr)->release();
    m_component.Reset();
    m_controller.Reset();
    m_provider.reset();
    // ExitDll and FreeLibrary, once no object of the module is held any more.
    m_module.reset();
    m_master.Reset(nullptr);
}

void CTqVst3Effect::FlushToController()
{
    if (!m_controller || !m_handler) return;
    IEditController* controller = m_controller.Get();
    ParamID id = 0;
    ParamValue value = 0;
    // The sample offset means nothing to a controller.
    int32 offset = 0;
    for (ParameterChangeTransfer* ring : {&m_handler->FromProcessor(), &m_handler->ToController()})
        while (ring->getNextChange(id, value, offset))
            CallPlugin([&] { controller->setParamNormalized(id, value); });
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetMaster(IUnknown* master)
{
    return m_master.Reset(master);
}

// A VST3 processor, once started, runs until the effect goes: the transport calls change nothing.
HRESULT STDMETHODCALLTYPE CTqVst3Effect::Idle()
{
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::Suspend(INT32)
{
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::Resume(INT32)
{
    return S_OK;
}
