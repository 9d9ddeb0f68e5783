// One small adapter per COM interface of the control. Each only translates its
// interface's protocol into calls on the one central object, ctlTqColorSetting,
// which holds all state and the COM identity (QueryInterface, AddRef, Release).
#pragma once

#include <windows.h>
#include <ocidl.h>
#include <oleidl.h>

namespace tq::com {

class ctlTqColorSetting;

template <class Interface>
class Adapter : public Interface {
 public:
  explicit Adapter(ctlTqColorSetting& control) : control_(control) {}
  Adapter(const Adapter&) = delete;
  Adapter& operator=(const Adapter&) = delete;
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override;
  STDMETHODIMP_(ULONG) AddRef() override;
  STDMETHODIMP_(ULONG) Release() override;

 protected:
  ctlTqColorSetting& control_;
};

class OleObject final : public Adapter<IOleObject> {
 public:
  using Adapter::Adapter;
  STDMETHODIMP SetClientSite(IOleClientSite* site) override;
  STDMETHODIMP GetClientSite(IOleClientSite** site) override;
  STDMETHODIMP SetHostNames(LPCOLESTR, LPCOLESTR) override { return S_OK; }
  STDMETHODIMP Close(DWORD save_option) override;
  STDMETHODIMP SetMoniker(DWORD, IMoniker*) override { return E_NOTIMPL; }
  STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker** moniker) override;
  STDMETHODIMP InitFromData(IDataObject*, BOOL, DWORD) override { return E_NOTIMPL; }
  STDMETHODIMP GetClipboardData(DWORD, IDataObject** data) override;
  STDMETHODIMP DoVerb(LONG verb, LPMSG, IOleClientSite* site, LONG, HWND, LPCRECT) override;
  STDMETHODIMP EnumVerbs(IEnumOLEVERB** verbs) override;
  STDMETHODIMP Update() override { return S_OK; }
  STDMETHODIMP IsUpToDate() override { return S_OK; }
  STDMETHODIMP GetUserClassID(CLSID* clsid) override;
  STDMETHODIMP GetUserType(DWORD form, LPOLESTR* type) override;
  STDMETHODIMP SetExtent(DWORD aspect, SIZEL* size) override;
  STDMETHODIMP GetExtent(DWORD aspect, SIZEL* size) override;
  STDMETHODIMP Advise(IAdviseSink* sink, DWORD* cookie) override;
  STDMETHODIMP Unadvise(DWORD cookie) override;
  STDMETHODIMP EnumAdvise(IEnumSTATDATA** advise) override;
  STDMETHODIMP GetMiscStatus(DWORD aspect, DWORD* status) override;
  STDMETHODIMP SetColorScheme(LOGPALETTE*) override { return E_NOTIMPL; }
};

// Invisible at run time: in-place activation without a window of our own.
class OleInPlaceObject final : public Adapter<IOleInPlaceObject> {
 public:
  using Adapter::Adapter;
  STDMETHODIMP GetWindow(HWND* window) override;
  STDMETHODIMP ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
  STDMETHODIMP InPlaceDeactivate() override;
  STDMETHODIMP UIDeactivate() override { return S_OK; }
  STDMETHODIMP SetObjectRects(LPCRECT, LPCRECT) override { return S_OK; }
  STDMETHODIMP ReactivateAndUndo() override { return INPLACE_E_NOTUNDOABLE; }
};

class OleControl final : public Adapter<IOleControl> {
 public:
  using Adapter::Adapter;
  STDMETHODIMP GetControlInfo(CONTROLINFO* info) override;
  STDMETHODIMP OnMnemonic(MSG*) override { return E_NOTIMPL; }
  STDMETHODIMP OnAmbientPropertyChange(DISPID) override { return S_OK; }
  STDMETHODIMP FreezeEvents(BOOL freeze) override;
};

class ViewObject final : public Adapter<IViewObject2> {
 public:
  using Adapter::Adapter;
  STDMETHODIMP Draw(DWORD aspect, LONG, void*, DVTARGETDEVICE*, HDC, HDC draw, LPCRECTL bounds, LPCRECTL,
                    BOOL(STDMETHODCALLTYPE*)(ULONG_PTR), ULONG_PTR) override;
  STDMETHODIMP GetColorSet(DWORD, LONG, void*, DVTARGETDEVICE*, HDC, LOGPALETTE** colors) override;
  STDMETHODIMP Freeze(DWORD, LONG, void*, DWORD* cookie) override;
  STDMETHODIMP Unfreeze(DWORD) override { return S_OK; }
  STDMETHODIMP SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) override;
  STDMETHODIMP GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) override;
  STDMETHODIMP GetExtent(DWORD aspect, LONG, DVTARGETDEVICE*, LPSIZEL size) override;
};

// The control keeps no properties of its own: loading accepts, saving writes nothing.
class PersistStreamInit final : public Adapter<IPersistStreamInit> {
 public:
  using Adapter::Adapter;
  STDMETHODIMP GetClassID(CLSID* clsid) override;
  STDMETHODIMP IsDirty() override { return S_FALSE; }
  STDMETHODIMP Load(IStream*) override { return S_OK; }
  STDMETHODIMP Save(IStream*, BOOL) override { return S_OK; }
  STDMETHODIMP GetSizeMax(ULARGE_INTEGER* size) override;
  STDMETHODIMP InitNew() override { return S_OK; }
};

class PersistPropertyBag final : public Adapter<IPersistPropertyBag> {
 public:
  using Adapter::Adapter;
  STDMETHODIMP GetClassID(CLSID* clsid) override;
  STDMETHODIMP InitNew() override { return S_OK; }
  STDMETHODIMP Load(IPropertyBag*, IErrorLog*) override { return S_OK; }
  STDMETHODIMP Save(IPropertyBag*, BOOL, BOOL) override { return S_OK; }
};

class ProvideClassInfo final : public Adapter<IProvideClassInfo2> {
 public:
  using Adapter::Adapter;
  STDMETHODIMP GetClassInfo(ITypeInfo** info) override;
  STDMETHODIMP GetGUID(DWORD kind, GUID* guid) override;
};

// The one connection point, for the event interface. It has its own IUnknown (a
// connection point is an object of its own) but lives as long as the control.
class ConnectionPoint final : public IConnectionPoint {
 public:
  explicit ConnectionPoint(ctlTqColorSetting& control) : control_(control) {}
  ConnectionPoint(const ConnectionPoint&) = delete;
  ConnectionPoint& operator=(const ConnectionPoint&) = delete;
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override;
  STDMETHODIMP_(ULONG) AddRef() override;
  STDMETHODIMP_(ULONG) Release() override;
  STDMETHODIMP GetConnectionInterface(IID* iid) override;
  STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
  STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
  STDMETHODIMP Unadvise(DWORD cookie) override;
  STDMETHODIMP EnumConnections(IEnumConnections** connections) override;

 private:
  ctlTqColorSetting& control_;
};

class ConnectionPointContainer final : public Adapter<IConnectionPointContainer> {
 public:
  using Adapter::Adapter;
  STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** points) override;
  STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** point) override;
};

}  // namespace tq::com
