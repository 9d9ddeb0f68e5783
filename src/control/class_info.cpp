// IProvideClassInfo2 and the type information behind it and IDispatch::GetTypeInfo,
// read from the library's own TYPELIB resource (it need not be registered).
#include "control/control.h"
#include "win32/guard.h"

namespace tq::com {

HRESULT LoadTypeInfo(REFGUID guid, ITypeInfo** info) {
  if (!info) return E_POINTER;
  *info = nullptr;
  ComPtr<ITypeLib> library;
  if (HRESULT hr = LoadTypeLibEx(ModulePath().c_str(), REGKIND_NONE, &library); FAILED(hr)) return hr;
  return library->GetTypeInfoOfGuid(guid, info);
}

STDMETHODIMP ProvideClassInfo::GetClassInfo(ITypeInfo** info) {
  return tq::win::GuardCom([&] { return LoadTypeInfo(CLSID_ctlTqColorSetting, info); });
}

STDMETHODIMP ProvideClassInfo::GetGUID(DWORD kind, GUID* guid) {
  if (!guid) return E_POINTER;
  if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) return E_INVALIDARG;
  *guid = DIID___ctlTqColorSetting;
  return S_OK;
}

}  // namespace tq::com
