#include "list_comm_host.h"

#include <algorithm>

#include <iterator>
#include <utility>

namespace demo {

Variant Variant::Text(const std::wstring& text) {
  Variant out;
  out.v_.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  if (out.v_.bstrVal) out.v_.vt = VT_BSTR;
  return out;
}

Variant Variant::Int(long value) {
  Variant out;
  out.v_.vt = VT_I4;
  out.v_.lVal = value;
  return out;
}

Variant Variant::Short(short value) {
  Variant out;
  out.v_.vt = VT_I2;
  out.v_.iVal = value;
  return out;
}

Variant Variant::Bool(bool value) {
  Variant out;
  out.v_.vt = VT_BOOL;
  out.v_.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
  return out;
}

Variant Variant::Object(IDispatch* object) {
  Variant out;
  if (object) object->AddRef();
  out.v_.vt = VT_DISPATCH;
  out.v_.pdispVal = object;
  return out;
}

Variant Variant::Vector(std::vector<Variant> items) {
  Variant out;
  SAFEARRAYBOUND bound{static_cast<ULONG>(items.size()), 1};
  SAFEARRAY* array = SafeArrayCreate(VT_VARIANT, 1, &bound);
  if (!array) return out;
  for (LONG k = 1; k <= static_cast<LONG>(items.size()); ++k) SafeArrayPutElement(array, &k, items[k - 1].get());
  out.v_.vt = VT_ARRAY | VT_VARIANT;
  out.v_.parray = array;
  return out;
}

std::wstring DescribeValue(const VARIANT& value) {
  Variant plain;
  if (FAILED(VariantCopyInd(plain.get(), const_cast<VARIANT*>(&value)))) return L"";
  VARIANT& v = *plain.get();
  if (v.vt == (VT_ARRAY | VT_VARIANT) && v.parray && SafeArrayGetDim(v.parray) == 1) {
    LONG lower = 0, upper = -1;
    SafeArrayGetLBound(v.parray, 1, &lower);
    SafeArrayGetUBound(v.parray, 1, &upper);
    std::wstring text = L"[";
    for (LONG k = lower; k <= upper; ++k) {
      Variant item;
      if (k > lower) text += L", ";
      if (SUCCEEDED(SafeArrayGetElement(v.parray, &k, item.get()))) text += DescribeValue(*item.get());
    }
    return text + L"]";
  }
  if (v.vt & VT_ARRAY) return L"[array]";
  if (v.vt == VT_DISPATCH || v.vt == VT_UNKNOWN) return L"(object)";
  if (v.vt == VT_NULL) return L"Null";
  if (FAILED(VariantChangeType(&v, &v, VARIANT_ALPHABOOL, VT_BSTR)) || !v.bstrVal) return L"";
  return std::wstring(v.bstrVal, SysStringLen(v.bstrVal));
}

namespace {

enum : DISPID { kEvaluate = 1, kNotify, kFileNotice, kRemoveFile, kCreateFolder, kRequest };

struct Member {
  const wchar_t* name;
  DISPID id;
  UINT arguments;
};
constexpr Member kMembers[] = {
    {L"HostEvaluate", kEvaluate, 3},     {L"HostNotify", kNotify, 3},
    {L"HostFileNotice", kFileNotice, 1}, {L"HostRemoveFile", kRemoveFile, 1},
    {L"HostCreateFolder", kCreateFolder, 1}, {L"HostRequest", kRequest, 1},
};

// The network's voltage levels as the display's topology manager knows them.
struct Level {
  long kilovolts;
  const wchar_t* name;
};
constexpr Level kLevels[] = {{380, L"380 kV"}, {220, L"220 kV"}, {110, L"110 kV"}, {20, L"20 kV"}};
constexpr wchar_t kLevelsQuery[] = L"#return network_topology_manager(\"LEVELS\", \"POWER\")";
constexpr wchar_t kNamesQuery[] = L"#return TRANSLATION(VECTOR(";

// The control passes status and value as references to VARIANTs.
HRESULT Store(VARIANT& reference, Variant value) {
  if (reference.vt != (VT_BYREF | VT_VARIANT) || !reference.pvarVal) return DISP_E_TYPEMISMATCH;
  VariantClear(reference.pvarVal);
  *reference.pvarVal = value.Detach();
  return S_OK;
}

// Creates a folder and the folders above it; whether it exists afterwards.
bool CreateFolders(std::wstring folder) {
  while (!folder.empty() && (folder.back() == L'\\' || folder.back() == L'/')) folder.pop_back();
  for (std::size_t at = folder.find_first_of(L"\\/"); at != std::wstring::npos;
       at = folder.find_first_of(L"\\/", at + 1)) {
    const std::wstring above = folder.substr(0, at);
    if (!above.empty() && above.back() != L':') CreateDirectoryW(above.c_str(), nullptr);
  }
  CreateDirectoryW(folder.c_str(), nullptr);
  const DWORD attributes = GetFileAttributesW(folder.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

}  // namespace

ListCommHost* ListCommHost::Create(Sink log, Sink evaluated) {
  return new ListCommHost(std::move(log), std::move(evaluated));
}

STDMETHODIMP ListCommHost::QueryInterface(REFIID iid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IDispatch)) return E_NOINTERFACE;
  *out = static_cast<IDispatch*>(this);
  AddRef();
  return S_OK;
}

STDMETHODIMP_(ULONG) ListCommHost::AddRef() { return InterlockedIncrement(&refs_); }

STDMETHODIMP_(ULONG) ListCommHost::Release() {
  const ULONG left = InterlockedDecrement(&refs_);
  if (left == 0) delete this;
  return left;
}

STDMETHODIMP ListCommHost::GetTypeInfoCount(UINT* count) {
  if (!count) return E_POINTER;
  *count = 0;
  return S_OK;
}

STDMETHODIMP ListCommHost::GetTypeInfo(UINT, LCID, ITypeInfo** info) {
  if (info) *info = nullptr;
  return E_NOTIMPL;
}

STDMETHODIMP ListCommHost::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
  if (!names || !ids || count == 0) return E_INVALIDARG;
  for (UINT i = 0; i < count; ++i) ids[i] = DISPID_UNKNOWN;
  for (const Member& member : kMembers)
    if (names[0] && CompareStringOrdinal(names[0], -1, member.name, -1, TRUE) == CSTR_EQUAL) ids[0] = member.id;
  // Our members have no named arguments.
  return ids[0] != DISPID_UNKNOWN && count == 1 ? S_OK : DISP_E_UNKNOWNNAME;
}

STDMETHODIMP ListCommHost::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params, VARIANT* result,
                                  EXCEPINFO*, UINT*) {
  const Member* member = nullptr;
  for (const Member& m : kMembers)
    if (m.id == id) member = &m;
  if (!member || !(flags & DISPATCH_METHOD)) return DISP_E_MEMBERNOTFOUND;
  if (!params) return E_INVALIDARG;
  if (params->cNamedArgs != 0) return DISP_E_NONAMEDARGS;
  if (params->cArgs != member->arguments) return DISP_E_BADPARAMCOUNT;
  if (result) VariantInit(result);
  // rgvarg holds the arguments last first.
  const auto arg = [&](UINT i) -> VARIANT& { return params->rgvarg[params->cArgs - 1 - i]; };
  const std::wstring first = DescribeValue(arg(0));
  switch (id) {
    case kEvaluate:
      return Evaluate(first, arg(1), arg(2));
    case kNotify:
      log_(L"HostNotify " + first + L": \"" + DescribeValue(arg(1)) + L"\" " + DescribeValue(arg(2)));
      return S_OK;
    case kFileNotice:
      log_(L"HostFileNotice: " + first);
      return S_OK;
    case kRemoveFile:
      log_(L"HostRemoveFile: " + first + (DeleteFileW(first.c_str()) ? L" (removed)" : L" (not removed)"));
      return S_OK;
    case kCreateFolder:
      log_(L"HostCreateFolder: " + first + (CreateFolders(first) ? L" (created)" : L" (not created)"));
      return S_OK;
    case kRequest:
      log_(L"HostRequest: " + first);
      return S_OK;
  }
  return DISP_E_MEMBERNOTFOUND;
}

HRESULT ListCommHost::Evaluate(const std::wstring& expression, VARIANT& status, VARIANT& value) {
  Variant answer;
  if (expression == kLevelsQuery) {
    // The reply's third element is the vector of levels.
    std::vector<Variant> levels, reply;
    for (const Level& level : kLevels) levels.push_back(Variant::Int(level.kilovolts));
    reply.push_back(Variant::Text(L"LEVELS"));
    reply.push_back(Variant::Text(L"POWER"));
    reply.push_back(Variant::Vector(std::move(levels)));
    answer = Variant::Vector(std::move(reply));
    log_(L"HostEvaluate: voltage levels, answered " + std::to_wstring(std::size(kLevels)));
  } else if (expression.starts_with(kNamesQuery)) {
    std::vector<Variant> names;
    for (const Level& level : kLevels) names.push_back(Variant::Text(level.name));
    answer = Variant::Vector(std::move(names));
    log_(L"HostEvaluate: voltage level names, answered " + std::to_wstring(std::size(kLevels)));
  } else {
    log_(L"HostEvaluate: " + expression);
    evaluated_(expression);
    answer = Variant::Text(L"OK");
  }
  if (HRESULT hr = Store(value, std::move(answer)); FAILED(hr)) return hr;
  return Store(status, Variant::Int(0));
}

HRESULT CallByName(IDispatch* object, const wchar_t* member, std::vector<VARIANT> args, VARIANT* result,
                   std::wstring* error) {
  LPOLESTR name = const_cast<LPOLESTR>(member);
  DISPID id;
  HRESULT hr = object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
  if (FAILED(hr)) return hr;
  std::reverse(args.begin(), args.end());  // rgvarg holds the last argument first
  DISPPARAMS params{args.data(), nullptr, static_cast<UINT>(args.size()), 0};
  EXCEPINFO exception{};
  hr = object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, result, &exception, nullptr);
  if (hr == DISP_E_EXCEPTION) {
    if (exception.pfnDeferredFillIn) exception.pfnDeferredFillIn(&exception);
    if (error && exception.bstrDescription) *error = exception.bstrDescription;
  }
  SysFreeString(exception.bstrSource);
  SysFreeString(exception.bstrDescription);
  SysFreeString(exception.bstrHelpFile);
  return hr;
}

}  // namespace demo
