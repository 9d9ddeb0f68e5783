// ctlTqColorSetting: the control object. It is the COM identity and holds the state
// of this one control (its site, sinks and file-dialog object); the IDispatch / dual
// interface is its own, every other interface is an adapter (adapters.h) that calls
// back into it. The four members run on the thread's editor session
// (src/editor/session.h), which all controls of the thread share.
#pragma once

#include <windows.h>
#include <ocidl.h>
#include <olectl.h>
#include <oleidl.h>

#include <cstdint>
#include <string>
#include <vector>

#include "TqColorSettingTool_h.h"
#include "control/adapters.h"
#include "control/com_util.h"
#include "control/module.h"
#include "editor/session.h"

namespace tq::com {

// BrowsePressed's arguments, and what the host's sinks left in vRetVal and Cancel.
struct BrowseRequest {
  std::int32_t parent_window = 0;
  std::int16_t dialog_type = 0;
  std::string title;
  std::string filter;
  std::string file;
};
struct BrowseAnswer {
  Variant value;
  bool cancel = false;
};

class ctlTqColorSetting final : public _ctlTqColorSetting, public RefCounted {
 public:
  // Throws std::bad_alloc when out of memory (the class factory's guard answers it).
  static HRESULT Create(REFIID iid, void** out);

  // IUnknown
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override;
  STDMETHODIMP_(ULONG) AddRef() override { return AddRefCount(); }
  STDMETHODIMP_(ULONG) Release() override { return ReleaseCount(); }
  // IDispatch
  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) override;
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override;
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params, VARIANT* result,
                      EXCEPINFO* exception, UINT* arg_err) override;
  // _ctlTqColorSetting, for clients that bind to the vtable
  STDMETHODIMP Show(BSTR* ClutFile, short* TabNumber, short* CategoryNumber, VARIANT_BOOL* EnableChanges,
                    VARIANT_BOOL* Result) override;
  STDMETHODIMP Show2(BSTR* ClutFile, BSTR* TabName, short* CategoryNumber, VARIANT_BOOL* EnableChanges,
                     VARIANT_BOOL* Result) override;
  STDMETHODIMP SetObjectValue(BSTR* key, VARIANT* Value) override;
  STDMETHODIMP GetObjectValue(BSTR* key, VARIANT* Param, VARIANT* Result) override;

  // Raises BrowsePressed to every connected sink and returns what they left in
  // vRetVal and Cancel. Events are not raised while the container froze them.
  BrowseAnswer FireBrowsePressed(const BrowseRequest& request);

  ControlInstanceState& Instance() { return instance_; }

  // State the adapters work on.
  struct Site {
    ComPtr<IOleClientSite> client;
    ComPtr<IOleInPlaceSite> in_place;  // set while in-place active
    ComPtr<IOleAdviseHolder> advise_holder;
    ComPtr<IAdviseSink> view_sink;
    DWORD view_aspects = 0;
    DWORD view_flags = 0;
    SIZEL extent{847, 847};  // HIMETRIC, 32 pixels at 96 dpi
    LONG freeze_count = 0;
  };
  Site& site() { return site_; }

  // Connect throws std::bad_alloc when out of memory (the connection point's guard answers it).
  HRESULT Connect(IUnknown* sink, DWORD* cookie);
  HRESULT Disconnect(DWORD cookie);
  // The connected sinks with their cookies, in the order they connected.
  std::vector<std::pair<DWORD, ComPtr<IUnknown>>> Connections() const;
  HRESULT ActivateInPlace(IOleClientSite* site);
  HRESULT DeactivateInPlace();

 private:
  ctlTqColorSetting();
  ~ctlTqColorSetting() override;
  // Runs a member through the dispatch path from a vtable call (args reversed).
  HRESULT CallFromVtable(DISPID id, VARIANT* args, UINT count, VARIANT* result);

  struct Sink {
    DWORD cookie;
    ComPtr<IDispatch> sink;
  };
  ControlInstanceState instance_;
  Site site_;
  std::vector<Sink> sinks_;
  DWORD next_cookie_ = 1;

  OleObject ole_object_{*this};
  OleInPlaceObject in_place_object_{*this};
  OleControl ole_control_{*this};
  ViewObject view_object_{*this};
  PersistStreamInit persist_stream_{*this};
  PersistPropertyBag persist_bag_{*this};
  ProvideClassInfo class_info_{*this};
  ConnectionPointContainer connection_points_{*this};

 public:
  ConnectionPoint event_point{*this};
};

// The type information of our own type library (the TYPELIB resource).
HRESULT LoadTypeInfo(REFGUID guid, ITypeInfo** info);
// The OLEMISC_ bits of the control, for IOleObject and the registry.
DWORD MiscStatus();

template <class Interface>
STDMETHODIMP Adapter<Interface>::QueryInterface(REFIID iid, void** out) {
  return control_.QueryInterface(iid, out);
}
template <class Interface>
STDMETHODIMP_(ULONG) Adapter<Interface>::AddRef() {
  return control_.AddRef();
}
template <class Interface>
STDMETHODIMP_(ULONG) Adapter<Interface>::Release() {
  return control_.Release();
}

}  // namespace tq::com
