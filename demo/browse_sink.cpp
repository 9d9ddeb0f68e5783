#include "browse_sink.h"

#include <commdlg.h>

#include <string>

namespace demo {

HRESULT BrowseSink::Connect(IUnknown* control) {
  IConnectionPointContainer* container = nullptr;
  HRESULT hr = control->QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(&container));
  if (FAILED(hr)) return hr;
  hr = container->FindConnectionPoint(kControlEvents, &point_);
  container->Release();
  if (SUCCEEDED(hr)) hr = point_->Advise(static_cast<IDispatch*>(this), &cookie_);
  return hr;
}

void BrowseSink::Disconnect() {
  if (!point_) return;
  point_->Unadvise(cookie_);
  point_->Release();
  point_ = nullptr;
}

STDMETHODIMP BrowseSink::QueryInterface(REFIID iid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  if (iid != IID_IUnknown && iid != IID_IDispatch && iid != kControlEvents) return E_NOINTERFACE;
  *out = static_cast<IDispatch*>(this);
  AddRef();
  return S_OK;
}

STDMETHODIMP_(ULONG) BrowseSink::Release() {
  const ULONG left = InterlockedDecrement(&refs_);
  if (left == 0) delete this;
  return left;
}

STDMETHODIMP BrowseSink::GetTypeInfoCount(UINT* count) {
  if (!count) return E_POINTER;
  *count = 0;
  return S_OK;
}

STDMETHODIMP BrowseSink::GetTypeInfo(UINT, LCID, ITypeInfo** info) {
  if (info) *info = nullptr;
  return E_NOTIMPL;
}

// BrowsePressed (DISPID 3). rgvarg holds the arguments last first: [6] dlgParent (VT_I4),
// [5] dlgType (VT_I2: 3 Import, 4 Export), [4] dlgTitle, [3] dlgFilter, [2] dlgFile (the
// start folder, VT_BSTR each), [1] vRetVal (VT_BYREF | VT_VARIANT), [0] Cancel
// (VT_BYREF | VT_BOOL). OKPressed (1) and CancelPressed (2) are never raised.
STDMETHODIMP BrowseSink::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*, UINT*) {
  if (id != 3) return S_OK;
  if (!params || params->cArgs != 7 || params->rgvarg[1].vt != (VT_BYREF | VT_VARIANT) ||
      params->rgvarg[0].vt != (VT_BYREF | VT_BOOL))
    return DISP_E_BADVARTYPE;
  VARIANT* args = params->rgvarg;
  std::wstring filter(args[3].bstrVal ? args[3].bstrVal : L"");
  for (wchar_t& c : filter)
    if (c == L'|') c = L'\0';  // "Ini Files (*.ini)|*.ini|All Files (*.*)|*.*|"
  wchar_t file[MAX_PATH] = L"";
  OPENFILENAMEW dialog{};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = reinterpret_cast<HWND>(static_cast<LONG_PTR>(args[6].lVal));  // the editor
  dialog.lpstrFilter = filter.c_str();
  dialog.lpstrFile = file;
  dialog.nMaxFile = MAX_PATH;
  dialog.lpstrInitialDir = args[2].bstrVal;
  dialog.lpstrTitle = args[4].bstrVal;
  dialog.lpstrDefExt = L"ini";
  const bool import = args[5].iVal == 3;
  dialog.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | (import ? OFN_FILEMUSTEXIST : OFN_OVERWRITEPROMPT);
  if (import ? GetOpenFileNameW(&dialog) : GetSaveFileNameW(&dialog)) {
    VARIANT* answer = args[1].pvarVal;  // a String: the file to import or export
    VariantClear(answer);
    answer->bstrVal = SysAllocString(file);
    answer->vt = answer->bstrVal ? VT_BSTR : VT_EMPTY;
  } else {
    *args[0].pboolVal = VARIANT_TRUE;  // cancelled: the control does nothing
  }
  return S_OK;
}

}  // namespace demo
