// The demo display's sink for the control's events (dispinterface __ctlTqColorSetting):
// it answers BrowsePressed with the display's own file dialogs, as a host does that
// sets "UseCustomFileDlg" to True. It connects through the control's connection point.
#pragma once

#include <windows.h>
#include <ole2.h>
#include <ocidl.h>

namespace demo {

// DIID___ctlTqColorSetting, the control's event interface (from its type library).
constexpr GUID kControlEvents = {0x11fdcf02, 0x54d5, 0x4d5b, {0x87, 0x3f, 0x28, 0x2c, 0x42, 0xa5, 0x22, 0x1f}};

class BrowseSink final : public IDispatch {
 public:
  // Reference count 1, owned by the caller.
  static BrowseSink* Create() { return new BrowseSink(); }

  // Advises the control's connection point; Disconnect (or the control's end) undoes it.
  HRESULT Connect(IUnknown* control);
  void Disconnect();

  STDMETHODIMP QueryInterface(REFIID iid, void** out) override;
  STDMETHODIMP_(ULONG) AddRef() override { return InterlockedIncrement(&refs_); }
  STDMETHODIMP_(ULONG) Release() override;
  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** info) override;
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*, UINT*) override;

 private:
  BrowseSink() = default;
  ~BrowseSink() = default;

  LONG refs_ = 1;
  IConnectionPoint* point_ = nullptr;
  DWORD cookie_ = 0;
};

}  // namespace demo
