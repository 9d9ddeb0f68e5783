#include "control/control.h"

#include <algorithm>

#include "control/dispatch.h"
#include "control/host_link.h"
#include "control/values.h"
#include "support/custom_file_dlg.h"
#include "win32/guard.h"
#include "win32/thread_state.h"

namespace tq::com {
namespace {

template <auto Member, class Interface>
IUnknown* AdapterOf(void* self) {
  return static_cast<Interface*>(&(static_cast<ctlTqColorSetting*>(self)->*Member));
}

// A vtable argument as Invoke would receive it; a null optional pointer is "missing".
VARIANT Ref(VARTYPE type, void* pointer) {
  VARIANT v;
  VariantInit(&v);
  if (pointer) {
    v.vt = VT_BYREF | type;
    v.byref = pointer;
  } else {
    v.vt = VT_ERROR;
    v.scode = DISP_E_PARAMNOTFOUND;
  }
  return v;
}

}  // namespace

ctlTqColorSetting::ctlTqColorSetting() {
  // The control's own file-dialog object: its BrowsePressed goes on to the host.
  instance_.CustomFileDlg = std::make_shared<clsCustomFileDlg>();
  instance_.CustomFileDlg->OnBrowsePressed([this](std::int32_t owner, std::int16_t mode, const std::string& title,
                                                  const std::string& filter, const std::string& further,
                                                  HostValue& file_name, bool& cancel) {
    const BrowseAnswer answer = FireBrowsePressed({owner, mode, title, filter, further});
    file_name = ToHostValue(*answer.value.get());
    cancel = answer.cancel;
  });
  // The thread's host object is dropped with the last control of the thread, so that no
  // reference to the host outlives the host's use of the control.
  ++tq::win::ThreadState::This().controls;  // last: a constructor that throws counts no control
}

ctlTqColorSetting::~ctlTqColorSetting() {
  // The session may keep the file-dialog object longer than this control lives.
  instance_.CustomFileDlg->OnBrowsePressed(nullptr);
  int& controls = tq::win::ThreadState::This().controls;
  if (controls > 0) --controls;  // none counted when the thread's state was ended meanwhile
  if (controls > 0) return;
  // Run by Release, a COM entry: out of memory, the host stays until the thread ends.
  tq::win::GuardCom([] {
    InstallThreadHost(nullptr);
    return S_OK;
  });
}

HRESULT ctlTqColorSetting::Create(REFIID iid, void** out) {
  ctlTqColorSetting* control = new ctlTqColorSetting();
  const HRESULT hr = control->QueryInterface(iid, out);
  control->Release();
  return hr;
}

STDMETHODIMP ctlTqColorSetting::QueryInterface(REFIID iid, void** out) {
  using C = ctlTqColorSetting;
  static const InterfaceEntry table[] = {
      {&IID_IUnknown, &InterfaceOf<C, _ctlTqColorSetting>},
      {&IID_IDispatch, &InterfaceOf<C, _ctlTqColorSetting>},
      {&IID__ctlTqColorSetting, &InterfaceOf<C, _ctlTqColorSetting>},
      {&IID_IOleObject, &AdapterOf<&C::ole_object_, IOleObject>},
      {&IID_IOleWindow, &AdapterOf<&C::in_place_object_, IOleInPlaceObject>},
      {&IID_IOleInPlaceObject, &AdapterOf<&C::in_place_object_, IOleInPlaceObject>},
      {&IID_IOleControl, &AdapterOf<&C::ole_control_, IOleControl>},
      {&IID_IViewObject, &AdapterOf<&C::view_object_, IViewObject2>},
      {&IID_IViewObject2, &AdapterOf<&C::view_object_, IViewObject2>},
      {&IID_IPersist, &AdapterOf<&C::persist_stream_, IPersistStreamInit>},
      {&IID_IPersistStreamInit, &AdapterOf<&C::persist_stream_, IPersistStreamInit>},
      {&IID_IPersistPropertyBag, &AdapterOf<&C::persist_bag_, IPersistPropertyBag>},
      {&IID_IProvideClassInfo, &AdapterOf<&C::class_info_, IProvideClassInfo2>},
      {&IID_IProvideClassInfo2, &AdapterOf<&C::class_info_, IProvideClassInfo2>},
      {&IID_IConnectionPointContainer, &AdapterOf<&C::connection_points_, IConnectionPointContainer>},
  };
  return QueryTable(this, table, iid, out);
}

STDMETHODIMP ctlTqColorSetting::GetTypeInfoCount(UINT* count) {
  if (!count) return E_POINTER;
  *count = 1;
  return S_OK;
}

STDMETHODIMP ctlTqColorSetting::GetTypeInfo(UINT index, LCID, ITypeInfo** info) {
  if (!info) return E_POINTER;
  *info = nullptr;
  if (index != 0) return DISP_E_BADINDEX;
  return tq::win::GuardCom([&] { return LoadTypeInfo(IID__ctlTqColorSetting, info); });
}

STDMETHODIMP ctlTqColorSetting::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
  return LookUpNames(ControlMembers(), names, count, ids);
}

STDMETHODIMP ctlTqColorSetting::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params, VARIANT* result,
                                       EXCEPINFO* exception, UINT* arg_err) {
  // A sink or host may release the control while a member runs.
  ComPtr<_ctlTqColorSetting> keep(this);
  ControlCall call;
  return InvokeMember(ControlMembers(), *this, id, flags, params, result, exception, arg_err);
}

HRESULT ctlTqColorSetting::CallFromVtable(DISPID id, VARIANT* args, UINT count, VARIANT* result) {
  ComPtr<_ctlTqColorSetting> keep(this);
  ControlCall call;
  DISPPARAMS params{args, nullptr, count, 0};
  ExcepInfo exception;
  UINT arg_err = 0;
  const HRESULT hr = InvokeMember(ControlMembers(), *this, id, DISPATCH_METHOD, &params, result, &exception, &arg_err);
  // Early-bound callers read the description through IErrorInfo.
  ComPtr<ICreateErrorInfo> create;
  if (hr == DISP_E_EXCEPTION && SUCCEEDED(CreateErrorInfo(&create))) {
    create->SetGUID(IID__ctlTqColorSetting);
    create->SetSource(exception.bstrSource);
    create->SetDescription(exception.bstrDescription);
    ComPtr<IErrorInfo> info;
    if (SUCCEEDED(create.As(&info))) SetErrorInfo(0, info.Get());
    return exception.scode ? exception.scode : E_FAIL;
  }
  return hr;
}

STDMETHODIMP ctlTqColorSetting::Show(BSTR* ClutFile, short* TabNumber, short* CategoryNumber,
                                     VARIANT_BOOL* EnableChanges, VARIANT_BOOL* Result) {
  if (!ClutFile || !Result) return E_POINTER;
  VARIANT args[] = {Ref(VT_BOOL, EnableChanges), Ref(VT_I2, CategoryNumber), Ref(VT_I2, TabNumber),
                    Ref(VT_BSTR, ClutFile)};
  Variant out;
  const HRESULT hr = CallFromVtable(DISPID_TQ_SHOW, args, 4, out.get());
  *Result = SUCCEEDED(hr) ? out->boolVal : VARIANT_FALSE;
  return hr;
}

STDMETHODIMP ctlTqColorSetting::Show2(BSTR* ClutFile, BSTR* TabName, short* CategoryNumber,
                                      VARIANT_BOOL* EnableChanges, VARIANT_BOOL* Result) {
  if (!ClutFile || !Result) return E_POINTER;
  VARIANT args[] = {Ref(VT_BOOL, EnableChanges), Ref(VT_I2, CategoryNumber), Ref(VT_BSTR, TabName),
                    Ref(VT_BSTR, ClutFile)};
  Variant out;
  const HRESULT hr = CallFromVtable(DISPID_TQ_SHOW2, args, 4, out.get());
  *Result = SUCCEEDED(hr) ? out->boolVal : VARIANT_FALSE;
  return hr;
}

STDMETHODIMP ctlTqColorSetting::SetObjectValue(BSTR* key, VARIANT* Value) {
  if (!key || !Value) return E_POINTER;
  VARIANT args[] = {Ref(VT_VARIANT, Value), Ref(VT_BSTR, key)};
  return CallFromVtable(DISPID_TQ_SETOBJECTVALUE, args, 2, nullptr);
}

STDMETHODIMP ctlTqColorSetting::GetObjectValue(BSTR* key, VARIANT* Param, VARIANT* Result) {
  if (!key || !Result) return E_POINTER;
  VariantInit(Result);
  VARIANT args[] = {Ref(VT_VARIANT, Param), Ref(VT_BSTR, key)};
  return CallFromVtable(DISPID_TQ_GETOBJECTVALUE, args, 2, Result);
}

BrowseAnswer ctlTqColorSetting::FireBrowsePressed(const BrowseRequest& request) {
  BrowseAnswer answer;
  if (site_.freeze_count > 0) return answer;
  ComPtr<_ctlTqColorSetting> keep(this);
  // A sink may connect or disconnect sinks while it runs: walk a copy.
  const std::vector<Sink> sinks = sinks_;
  Bstr title(request.title), filter(request.filter), file(request.file);
  VARIANT_BOOL cancel = VARIANT_FALSE;
  for (const Sink& sink : sinks) {
    VARIANT args[7];  // reversed
    args[0].vt = VT_BYREF | VT_BOOL;
    args[0].pboolVal = &cancel;
    args[1].vt = VT_BYREF | VT_VARIANT;
    args[1].pvarVal = answer.value.get();
    args[2].vt = VT_BSTR;
    args[2].bstrVal = file.get();
    args[3].vt = VT_BSTR;
    args[3].bstrVal = filter.get();
    args[4].vt = VT_BSTR;
    args[4].bstrVal = title.get();
    args[5].vt = VT_I2;
    args[5].iVal = request.dialog_type;
    args[6].vt = VT_I4;
    args[6].lVal = request.parent_window;
    DISPPARAMS params{args, nullptr, 7, 0};
    ExcepInfo exception;
    // A sink that fails is the host's business; the others still hear the event.
    sink.sink->Invoke(DISPID_TQ_BROWSEPRESSED, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, nullptr, &exception,
                      nullptr);
  }
  answer.cancel = cancel != VARIANT_FALSE;
  return answer;
}

HRESULT ctlTqColorSetting::Connect(IUnknown* sink, DWORD* cookie) {
  if (!sink || !cookie) return E_POINTER;
  *cookie = 0;
  ComPtr<IDispatch> events;
  if (FAILED(sink->QueryInterface(DIID___ctlTqColorSetting, reinterpret_cast<void**>(events.GetAddressOf()))) &&
      FAILED(sink->QueryInterface(IID_PPV_ARGS(&events))))
    return CONNECT_E_CANNOTCONNECT;
  sinks_.push_back({next_cookie_, std::move(events)});
  *cookie = next_cookie_++;
  return S_OK;
}

std::vector<std::pair<DWORD, ComPtr<IUnknown>>> ctlTqColorSetting::Connections() const {
  std::vector<std::pair<DWORD, ComPtr<IUnknown>>> connections;
  for (const Sink& s : sinks_) connections.emplace_back(s.cookie, s.sink);
  return connections;
}

HRESULT ctlTqColorSetting::Disconnect(DWORD cookie) {
  auto found = std::find_if(sinks_.begin(), sinks_.end(), [cookie](const Sink& s) { return s.cookie == cookie; });
  if (found == sinks_.end()) return CONNECT_E_NOCONNECTION;
  sinks_.erase(found);
  return S_OK;
}

HRESULT ctlTqColorSetting::ActivateInPlace(IOleClientSite* client) {
  if (site_.in_place) return S_OK;
  if (!client) client = site_.client.Get();
  ComPtr<IOleInPlaceSite> in_place;
  if (!client || FAILED(client->QueryInterface(IID_PPV_ARGS(&in_place)))) return E_NOINTERFACE;
  if (in_place->CanInPlaceActivate() != S_OK) return E_FAIL;
  if (HRESULT hr = in_place->OnInPlaceActivate(); FAILED(hr)) return hr;
  site_.in_place = std::move(in_place);
  return S_OK;
}

HRESULT ctlTqColorSetting::DeactivateInPlace() {
  ComPtr<IOleInPlaceSite> in_place = std::move(site_.in_place);
  if (in_place) in_place->OnInPlaceDeactivate();
  return S_OK;
}

}  // namespace tq::com
