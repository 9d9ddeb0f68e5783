// DllRegisterServer / DllUnregisterServer: the class, its two ProgIDs and the type
// library. Registration stops at the first failing step, undoes what it wrote and
// reports the step's HRESULT; unregistration removes all of it and may be repeated.
#include <windows.h>
#include <ole2.h>

#include <string>
#include <vector>

#include "control/control.h"
#include "control/module.h"
#include "win32/guard.h"
#include "win32/handles.h"

namespace tq::com {
namespace {

constexpr wchar_t kProgId[] = L"TqColorSettingTool.ctlTqColorSetting";
constexpr wchar_t kProgIdVersioned[] = L"TqColorSettingTool.ctlTqColorSetting.1";
constexpr wchar_t kUserType[] = L"ctlTqColorSetting";
constexpr wchar_t kCatIdControl[] = L"{40FC6ED4-2438-11CF-A3DB-080036F12502}";
constexpr WORD kVersionMajor = 1, kVersionMinor = 3;
constexpr LCID kLibraryLcid = 0x0409;
#ifdef _WIN64
constexpr SYSKIND kSysKind = SYS_WIN64;
#else
constexpr SYSKIND kSysKind = SYS_WIN32;
#endif

std::wstring GuidText(REFGUID guid) {
  wchar_t text[40];
  return StringFromGUID2(guid, text, 40) ? text : L"";
}

struct RegistryValue {
  std::wstring key;        // under HKEY_CLASSES_ROOT
  const wchar_t* name;     // null: the key's default value
  std::wstring data;
};

std::vector<RegistryValue> ClassValues() {
  const std::wstring clsid = L"CLSID\\" + GuidText(CLSID_ctlTqColorSetting);
  const std::wstring misc = std::to_wstring(MiscStatus());
  return {
      {clsid, nullptr, kUserType},
      {clsid + L"\\InprocServer32", nullptr, ModulePath()},
      {clsid + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
      {clsid + L"\\ProgID", nullptr, kProgIdVersioned},
      {clsid + L"\\VersionIndependentProgID", nullptr, kProgId},
      {clsid + L"\\Control", nullptr, L""},
      {clsid + L"\\MiscStatus", nullptr, L"0"},
      {clsid + L"\\MiscStatus\\1", nullptr, misc},
      {clsid + L"\\TypeLib", nullptr, GuidText(LIBID_TqColorSettingTool)},
      {clsid + L"\\Version", nullptr, std::to_wstring(kVersionMajor) + L"." + std::to_wstring(kVersionMinor)},
      {clsid + L"\\Implemented Categories\\" + kCatIdControl, nullptr, L""},
      {kProgId, nullptr, kUserType},
      {std::wstring(kProgId) + L"\\CLSID", nullptr, GuidText(CLSID_ctlTqColorSetting)},
      {std::wstring(kProgId) + L"\\CurVer", nullptr, kProgIdVersioned},
      {kProgIdVersioned, nullptr, kUserType},
      {std::wstring(kProgIdVersioned) + L"\\CLSID", nullptr, GuidText(CLSID_ctlTqColorSetting)},
  };
}

// The roots of everything ClassValues writes.
std::vector<std::wstring> ClassRoots() {
  return {L"CLSID\\" + GuidText(CLSID_ctlTqColorSetting), kProgId, kProgIdVersioned};
}

HRESULT WriteValue(const RegistryValue& value) {
  tq::win::UniqueRegKey key;
  LSTATUS status = RegCreateKeyExW(HKEY_CLASSES_ROOT, value.key.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                   KEY_SET_VALUE, nullptr, key.put(), nullptr);
  if (status != ERROR_SUCCESS) return HRESULT_FROM_WIN32(status);
  // REG_SZ sizes count the terminating null.
  const DWORD bytes = static_cast<DWORD>((value.data.size() + 1) * sizeof(wchar_t));
  status = RegSetValueExW(key.get(), value.name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.data.c_str()), bytes);
  return HRESULT_FROM_WIN32(status);
}

HRESULT DeleteTree(const std::wstring& key) {
  const LSTATUS status = RegDeleteTreeW(HKEY_CLASSES_ROOT, key.c_str());
  return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND ? S_OK : HRESULT_FROM_WIN32(status);
}

bool TypeLibRegistered() {
  tq::win::UniqueRegKey key;
  const std::wstring path = L"TypeLib\\" + GuidText(LIBID_TqColorSettingTool);
  return RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, key.put()) == ERROR_SUCCESS;
}

HRESULT Register() {
  const std::wstring path = ModulePath();
  if (path.empty()) return HRESULT_FROM_WIN32(GetLastError());
  for (const RegistryValue& value : ClassValues())
    if (HRESULT hr = WriteValue(value); FAILED(hr)) return hr;
  ComPtr<ITypeLib> library;
  if (HRESULT hr = LoadTypeLibEx(path.c_str(), REGKIND_NONE, &library); FAILED(hr)) return hr;
  return RegisterTypeLib(library.Get(), const_cast<wchar_t*>(path.c_str()), nullptr);
}

HRESULT Unregister() {
  HRESULT result = S_OK;
  for (const std::wstring& root : ClassRoots())
    if (HRESULT hr = DeleteTree(root); FAILED(hr) && SUCCEEDED(result)) result = hr;
  if (TypeLibRegistered()) {
    const HRESULT hr = UnRegisterTypeLib(LIBID_TqColorSettingTool, kVersionMajor, kVersionMinor, kLibraryLcid, kSysKind);
    if (FAILED(hr) && SUCCEEDED(result)) result = hr;
  }
  return result;
}

}  // namespace
}  // namespace tq::com

STDAPI DllRegisterServer() {
  const HRESULT hr = tq::win::GuardCom(&tq::com::Register);
  if (FAILED(hr)) tq::win::GuardCom(&tq::com::Unregister);  // leave nothing half-registered behind
  return hr;
}

STDAPI DllUnregisterServer() { return tq::win::GuardCom(&tq::com::Unregister); }
