// IOleObject: siting, verbs, extent and the OLE advise sinks of the control.
#include "control/control.h"

namespace tq::com {

// Invisible at run time, like a toolbox-only component: recompose on resize, no
// linking inside, inside-out activation when visible, the client site first.
constexpr DWORD kMiscStatus = OLEMISC_RECOMPOSEONRESIZE | OLEMISC_CANTLINKINSIDE | OLEMISC_INSIDEOUT |
                              OLEMISC_ACTIVATEWHENVISIBLE | OLEMISC_INVISIBLEATRUNTIME | OLEMISC_SETCLIENTSITEFIRST;
DWORD MiscStatus() { return kMiscStatus; }

STDMETHODIMP OleObject::SetClientSite(IOleClientSite* site) {
  control_.site().client = site;
  return S_OK;
}

STDMETHODIMP OleObject::GetClientSite(IOleClientSite** site) {
  if (!site) return E_POINTER;
  return control_.site().client.CopyTo(site);
}

STDMETHODIMP OleObject::Close(DWORD) {
  control_.DeactivateInPlace();
  if (auto& holder = control_.site().advise_holder) holder->SendOnClose();
  return S_OK;
}

STDMETHODIMP OleObject::GetMoniker(DWORD, DWORD, IMoniker** moniker) {
  if (moniker) *moniker = nullptr;
  return E_NOTIMPL;
}

STDMETHODIMP OleObject::GetClipboardData(DWORD, IDataObject** data) {
  if (data) *data = nullptr;
  return E_NOTIMPL;
}

STDMETHODIMP OleObject::DoVerb(LONG verb, LPMSG, IOleClientSite* site, LONG, HWND, LPCRECT) {
  switch (verb) {
    case OLEIVERB_PRIMARY:
    case OLEIVERB_SHOW:
    case OLEIVERB_INPLACEACTIVATE:
    case OLEIVERB_UIACTIVATE:
      return control_.ActivateInPlace(site);
    case OLEIVERB_HIDE:
      return control_.DeactivateInPlace();
    default:
      return verb < 0 ? E_NOTIMPL : OLEOBJ_S_INVALIDVERB;
  }
}

STDMETHODIMP OleObject::EnumVerbs(IEnumOLEVERB** verbs) {
  if (!verbs) return E_POINTER;
  *verbs = nullptr;
  return OLEOBJ_E_NOVERBS;
}

STDMETHODIMP OleObject::GetUserClassID(CLSID* clsid) {
  if (!clsid) return E_POINTER;
  *clsid = CLSID_ctlTqColorSetting;
  return S_OK;
}

STDMETHODIMP OleObject::GetUserType(DWORD form, LPOLESTR* type) {
  return OleRegGetUserType(CLSID_ctlTqColorSetting, form, type);
}

STDMETHODIMP OleObject::SetExtent(DWORD aspect, SIZEL* size) {
  if (!size) return E_POINTER;
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  control_.site().extent = *size;
  return S_OK;
}

STDMETHODIMP OleObject::GetExtent(DWORD aspect, SIZEL* size) {
  if (!size) return E_POINTER;
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  *size = control_.site().extent;
  return S_OK;
}

STDMETHODIMP OleObject::Advise(IAdviseSink* sink, DWORD* cookie) {
  auto& holder = control_.site().advise_holder;
  if (!holder)
    if (HRESULT hr = CreateOleAdviseHolder(&holder); FAILED(hr)) return hr;
  return holder->Advise(sink, cookie);
}

STDMETHODIMP OleObject::Unadvise(DWORD cookie) {
  auto& holder = control_.site().advise_holder;
  return holder ? holder->Unadvise(cookie) : OLE_E_NOCONNECTION;
}

STDMETHODIMP OleObject::EnumAdvise(IEnumSTATDATA** advise) {
  if (!advise) return E_POINTER;
  *advise = nullptr;
  auto& holder = control_.site().advise_holder;
  return holder ? holder->EnumAdvise(advise) : E_FAIL;
}

STDMETHODIMP OleObject::GetMiscStatus(DWORD, DWORD* status) {
  if (!status) return E_POINTER;
  *status = kMiscStatus;
  return S_OK;
}

}  // namespace tq::com
