#include "control/client.h"

#include <gtest/gtest.h>

#include "TqColorSettingTool_h.h"

namespace test {

DWORD RunRegsvr32(bool unregister) {
  wchar_t path[MAX_PATH];
  std::wstring folder(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
  std::wstring command = std::wstring(L"regsvr32.exe /s ") + (unregister ? L"/u " : L"") + L"\"" +
                         folder.substr(0, folder.find_last_of(L'\\') + 1) + L"TqColorSettingTool.dll\"";
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
    return GetLastError();
  WaitForSingleObject(process.hProcess, 60000);
  DWORD code = 1;
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return code;
}

STDMETHODIMP StackDispatch::QueryInterface(REFIID iid, void** out) {
  *out = nullptr;
  if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IDispatch) && !IsEqualIID(iid, also_)) return E_NOINTERFACE;
  *out = static_cast<IDispatch*>(this);
  AddRef();
  return S_OK;
}

BrowseSink::BrowseSink() : StackDispatch(DIID___ctlTqColorSetting) {}

STDMETHODIMP BrowseSink::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT*, EXCEPINFO*, UINT*) {
  seen.push_back(id);
  if (id != 3 || p->cArgs != 7) return DISP_E_BADPARAMCOUNT;
  // rgvarg reversed: Cancel, vRetVal, dlgFile, dlgFilter, dlgTitle, dlgType, dlgParent.
  parents.push_back(p->rgvarg[6].lVal);
  args.push_back(std::to_wstring(p->rgvarg[5].iVal) + L"|" + p->rgvarg[4].bstrVal + L"|" + p->rgvarg[3].bstrVal +
                 L"|" + p->rgvarg[2].bstrVal);
  VariantClear(p->rgvarg[1].pvarVal);
  p->rgvarg[1].pvarVal->vt = VT_BSTR;
  p->rgvarg[1].pvarVal->bstrVal = SysAllocString(file.c_str());
  *p->rgvarg[0].pboolVal = cancel ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

void BrowseSink::Connect(IDispatch* control) {
  ComPtr<IConnectionPointContainer> container;
  ComPtr<IConnectionPoint> point;
  DWORD cookie = 0;
  ArgList use;
  if (FAILED(control->QueryInterface(IID_PPV_ARGS(&container))) ||
      FAILED(container->FindConnectionPoint(DIID___ctlTqColorSetting, &point)) || FAILED(point->Advise(this, &cookie)) ||
      FAILED(use.Str(L"UseCustomFileDlg").I2(-1).Invoke(control, L"SetObjectValue")))
    ADD_FAILURE() << "cannot connect to the control's events";
}

ArgList::~ArgList() {
  for (VARIANT& v : args_)
    if (!(v.vt & VT_BYREF)) VariantClear(&v);
  for (VARIANT& v : targets_) VariantClear(&v);
}

ArgList& ArgList::Str(const wchar_t* text) { return Push(VT_BSTR, [&](VARIANT& v) { v.bstrVal = SysAllocString(text); }); }
ArgList& ArgList::I2(short value) { return Push(VT_I2, [&](VARIANT& v) { v.iVal = value; }); }
ArgList& ArgList::I4(long value) { return Push(VT_I4, [&](VARIANT& v) { v.lVal = value; }); }
ArgList& ArgList::R8(double value) { return Push(VT_R8, [&](VARIANT& v) { v.dblVal = value; }); }
ArgList& ArgList::Null() { return Push(VT_NULL, [](VARIANT&) {}); }
ArgList& ArgList::Missing() { return Push(VT_ERROR, [](VARIANT& v) { v.scode = DISP_E_PARAMNOTFOUND; }); }
ArgList& ArgList::Object(IDispatch* object) {
  if (object) object->AddRef();
  return Push(VT_DISPATCH, [&](VARIANT& v) { v.pdispVal = object; });
}
ArgList& ArgList::Array() {
  SAFEARRAYBOUND bound{2, 1};
  return Push(VT_ARRAY | VT_VARIANT, [&](VARIANT& v) { v.parray = SafeArrayCreate(VT_VARIANT, 1, &bound); });
}
ArgList& ArgList::Ref(VARTYPE type) {
  VARIANT& target = targets_.emplace_back(args_.back());
  args_.back().vt = VT_BYREF | type;
  // Every scalar and BSTR member of the union starts at the same place.
  args_.back().byref = type == VT_VARIANT ? static_cast<void*>(&target) : &target.bstrVal;
  return *this;
}
ArgList& ArgList::RefStr(const wchar_t* text) { return Str(text).Ref(VT_BSTR); }
ArgList& ArgList::RefR8(double value) { return R8(value).Ref(VT_R8); }
ArgList& ArgList::RefVar() { return Ref(VT_VARIANT); }
ArgList& ArgList::Named(DISPID id) {
  named_.resize(args_.size() - 1, DISPID_UNKNOWN);
  named_.push_back(id);
  return *this;
}

HRESULT ArgList::Invoke(IDispatch* object, const wchar_t* member, VARIANT* result, UINT* arg_err) {
  LPOLESTR names[] = {const_cast<LPOLESTR>(member)};
  DISPID id;
  if (HRESULT hr = object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id); FAILED(hr)) return hr;
  // rgvarg: named arguments first, then the positional ones in reverse order.
  std::vector<VARIANT> rgvarg;
  std::vector<DISPID> ids;
  for (std::size_t i = 0; i < named_.size(); ++i)
    if (named_[i] != DISPID_UNKNOWN) {
      rgvarg.push_back(args_[i]);
      ids.push_back(named_[i]);
    }
  for (std::size_t i = args_.size(); i-- > 0;)
    if (i >= named_.size() || named_[i] == DISPID_UNKNOWN) rgvarg.push_back(args_[i]);
  DISPPARAMS params{rgvarg.data(), ids.data(), static_cast<UINT>(rgvarg.size()), static_cast<UINT>(ids.size())};
  return object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, result, nullptr, arg_err);
}

ComPtr<IDispatch> CreateControl() {
  CLSID clsid;
  ComPtr<IDispatch> control;
  if (SUCCEEDED(CLSIDFromProgID(L"TqColorSettingTool.ctlTqColorSetting", &clsid)))
    CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&control));
  return control;
}

std::wstring GetText(IDispatch* control, const wchar_t* key) {
  ArgList args;
  VARIANT result{};
  HRESULT status = args.Str(key).Invoke(control, L"GetObjectValue", &result);
  if (SUCCEEDED(status)) status = VariantChangeType(&result, &result, 0, VT_BSTR);
  std::wstring text = SUCCEEDED(status) && result.bstrVal ? result.bstrVal : L"";
  VariantClear(&result);
  return text;
}

}  // namespace test
