#include "control/client.h"

#include <algorithm>

namespace test {

std::wstring ControlDllPath() {
  wchar_t path[MAX_PATH];
  const DWORD n = GetModuleFileNameW(nullptr, path, MAX_PATH);
  std::wstring folder(path, n);
  return folder.substr(0, folder.find_last_of(L'\\') + 1) + L"TqColorSettingTool.dll";
}

DWORD RunRegsvr32(bool unregister) {
  std::wstring command = std::wstring(L"regsvr32.exe /s ") + (unregister ? L"/u " : L"") + L"\"" + ControlDllPath() + L"\"";
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

bool ClassesKeyExists(const std::wstring& key) {
  HKEY handle;
  if (RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &handle) != ERROR_SUCCESS) return false;
  RegCloseKey(handle);
  return true;
}

ArgList::~ArgList() {
  for (VARIANT& v : args_)
    if (!(v.vt & VT_BYREF)) VariantClear(&v);
  for (VARIANT& v : targets_) VariantClear(&v);
}

ArgList& ArgList::Push(VARIANT v) {
  args_.push_back(v);
  return *this;
}

ArgList& ArgList::Str(const wchar_t* text) {
  VARIANT v{};
  v.vt = VT_BSTR;
  v.bstrVal = SysAllocString(text);
  return Push(v);
}
ArgList& ArgList::I2(short value) {
  VARIANT v{};
  v.vt = VT_I2;
  v.iVal = value;
  return Push(v);
}
ArgList& ArgList::I4(long value) {
  VARIANT v{};
  v.vt = VT_I4;
  v.lVal = value;
  return Push(v);
}
ArgList& ArgList::R8(double value) {
  VARIANT v{};
  v.vt = VT_R8;
  v.dblVal = value;
  return Push(v);
}
ArgList& ArgList::Decimal(long value) {
  VARIANT v{};
  VarDecFromI4(value, &v.decVal);
  v.vt = VT_DECIMAL;
  return Push(v);
}
ArgList& ArgList::Var(const VARIANT& value) {
  VARIANT v{};
  VariantCopy(&v, const_cast<VARIANT*>(&value));
  return Push(v);
}
ArgList& ArgList::Null() {
  VARIANT v{};
  v.vt = VT_NULL;
  return Push(v);
}
ArgList& ArgList::Missing() {
  VARIANT v{};
  v.vt = VT_ERROR;
  v.scode = DISP_E_PARAMNOTFOUND;
  return Push(v);
}
ArgList& ArgList::Object(IDispatch* object) {
  VARIANT v{};
  v.vt = VT_DISPATCH;
  v.pdispVal = object;
  object->AddRef();
  return Push(v);
}
ArgList& ArgList::Array() {
  SAFEARRAYBOUND bound{2, 1};
  VARIANT v{};
  v.vt = VT_ARRAY | VT_VARIANT;
  v.parray = SafeArrayCreate(VT_VARIANT, 1, &bound);
  return Push(v);
}
ArgList& ArgList::RefStr(const wchar_t* text) {
  Str(text);
  targets_.push_back(args_.back());
  args_.back().vt = VT_BYREF | VT_BSTR;
  args_.back().pbstrVal = &targets_.back().bstrVal;
  return *this;
}
ArgList& ArgList::RefI2(short value) {
  I2(value);
  targets_.push_back(args_.back());
  args_.back().vt = VT_BYREF | VT_I2;
  args_.back().piVal = &targets_.back().iVal;
  return *this;
}
ArgList& ArgList::RefR8(double value) {
  R8(value);
  targets_.push_back(args_.back());
  args_.back().vt = VT_BYREF | VT_R8;
  args_.back().pdblVal = &targets_.back().dblVal;
  return *this;
}
ArgList& ArgList::RefVar() {
  targets_.push_back(args_.back());
  args_.back().vt = VT_BYREF | VT_VARIANT;
  args_.back().pvarVal = &targets_.back();
  return *this;
}
ArgList& ArgList::Named(DISPID id) {
  named_.resize(args_.size() - 1, DISPID_UNKNOWN);
  named_.push_back(id);
  return *this;
}

HRESULT ArgList::Invoke(IDispatch* object, const wchar_t* member, VARIANT* result, UINT* arg_err,
                        EXCEPINFO* exception) {
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
  const HRESULT hr = object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, result, exception, arg_err);
  return hr;
}

ComPtr<IDispatch> CreateControl() {
  CLSID clsid;
  ComPtr<IDispatch> control;
  if (SUCCEEDED(CLSIDFromProgID(L"TqColorSettingTool.ctlTqColorSetting", &clsid)))
    CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&control));
  return control;
}

std::wstring GetText(IDispatch* control, const wchar_t* key, HRESULT* hr) {
  ArgList args;
  args.Str(key);
  VARIANT result{};
  HRESULT status = args.Invoke(control, L"GetObjectValue", &result, nullptr);
  if (SUCCEEDED(status)) status = VariantChangeType(&result, &result, 0, VT_BSTR);
  if (hr) *hr = status;
  std::wstring text = SUCCEEDED(status) && result.bstrVal ? result.bstrVal : L"";
  VariantClear(&result);
  return text;
}

HRESULT SetValue(IDispatch* control, const wchar_t* key, VARIANT value) {
  ArgList args;
  args.Str(key);
  args.Var(value);
  return args.Invoke(control, L"SetObjectValue", nullptr, nullptr);
}

}  // namespace test
