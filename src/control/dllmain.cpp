// Entry points of the in-process server: the module's state, the class factory
// and DllGetClassObject / DllCanUnloadNow (registration is in registration.cpp).
#include <windows.h>
#include <ole2.h>

#include "control/control.h"
#include "control/module.h"
#include "support/thread_context.h"
#include "win32/editor_window.h"
#include "win32/guard.h"

namespace tq::com {
namespace {

HINSTANCE g_instance = nullptr;
LONG g_live = 0;  // live objects plus server locks

// The library's creatable classes: one row per class.
struct ClassEntry {
  const CLSID* clsid;
  HRESULT (*create)(REFIID iid, void** out);
};
const ClassEntry kClasses[] = {
    {&CLSID_ctlTqColorSetting, &ctlTqColorSetting::Create},
};

class ClassFactory final : public IClassFactory, public RefCounted {
 public:
  explicit ClassFactory(const ClassEntry& entry) : entry_(entry) {}

  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    static const InterfaceEntry table[] = {
        {&IID_IUnknown, &InterfaceOf<ClassFactory, IClassFactory>},
        {&IID_IClassFactory, &InterfaceOf<ClassFactory, IClassFactory>},
    };
    return QueryTable(this, table, iid, out);
  }
  STDMETHODIMP_(ULONG) AddRef() override { return AddRefCount(); }
  STDMETHODIMP_(ULONG) Release() override { return ReleaseCount(); }

  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    return tq::win::GuardCom([&] { return entry_.create(iid, out); });
  }
  STDMETHODIMP LockServer(BOOL lock) override {
    lock ? LockModule() : UnlockModule();
    return S_OK;
  }

 private:
  ~ClassFactory() override = default;
  const ClassEntry& entry_;
};

}  // namespace

HINSTANCE ModuleInstance() { return g_instance; }

std::wstring ModulePath() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD n = GetModuleFileNameW(g_instance, path.data(), static_cast<DWORD>(path.size()));
    if (n == 0) return {};
    if (n < path.size()) {
      path.resize(n);
      return path;
    }
    path.resize(path.size() * 2);
  }
}

LONG LiveCount() { return InterlockedCompareExchange(&g_live, 0, 0); }
void LockModule() { InterlockedIncrement(&g_live); }
void UnlockModule() { InterlockedDecrement(&g_live); }

HRESULT QueryTable(void* self, const InterfaceEntry* table, std::size_t count, REFIID iid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  for (std::size_t i = 0; i < count; ++i) {
    if (IsEqualIID(iid, *table[i].iid)) {
      IUnknown* found = table[i].get(self);
      found->AddRef();
      *out = found;
      return S_OK;
    }
  }
  return E_NOINTERFACE;
}

}  // namespace tq::com

using namespace tq::com;

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
  if (reason == DLL_PROCESS_ATTACH) g_instance = instance;
  // A thread's context (session, window, language, host) goes with the thread (or with
  // the library when it is unloaded; at process end the system reclaims it).
  if (reason == DLL_THREAD_DETACH || (reason == DLL_PROCESS_DETACH && !reserved)) tq::ThreadContext::End();
  if (reason == DLL_PROCESS_DETACH && !reserved) tq::win::EditorWindow::UnregisterClasses();
  return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return tq::win::GuardCom([&] {
    for (const ClassEntry& entry : kClasses) {
      if (!IsEqualCLSID(clsid, *entry.clsid)) continue;
      ClassFactory* factory = new ClassFactory(entry);
      const HRESULT hr = factory->QueryInterface(iid, out);
      factory->Release();
      return hr;
    }
    return CLASS_E_CLASSNOTAVAILABLE;
  });
}

// A kept editor window's procedure lives in this library, so it holds the library too.
STDAPI DllCanUnloadNow() {
  return LiveCount() == 0 && tq::win::EditorWindow::LiveWindows() == 0 ? S_OK : S_FALSE;
}
