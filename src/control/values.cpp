#include "control/values.h"

#include <dispex.h>

#include <limits>
#include <memory>
#include <type_traits>

namespace tq::com {
namespace {

// Deeper nesting than any host vector gets; it stops self-referencing script objects.
constexpr int kMaxDepth = 16;

constexpr VARTYPE kNumberTypes[] = {VT_I1, VT_I2, VT_I4, VT_I8, VT_UI1, VT_UI2, VT_UI4, VT_UI8, VT_INT,
                                    VT_UINT, VT_R4, VT_R8, VT_CY, VT_DECIMAL, VT_BOOL, VT_DATE};

bool IsNumberType(VARTYPE type) {
  for (VARTYPE t : kNumberTypes)
    if (t == type) return true;
  return false;
}

HostValue Convert(const VARIANT& value, int depth);

HostValue FromSafeArray(SAFEARRAY* array, VARTYPE element_type, int depth) {
  HostValue result;
  LONG lower = 0, upper = -1;
  if (!array || SafeArrayGetDim(array) != 1 || FAILED(SafeArrayGetLBound(array, 1, &lower)) ||
      FAILED(SafeArrayGetUBound(array, 1, &upper)))
    return result;
  result.kind = HostValue::Kind::Vector;
  for (LONG k = 1; lower + k - 1 <= upper; ++k) {
    LONG index = lower + k - 1;
    Variant element;
    VARIANT* v = element.get();
    HRESULT hr;
    if (element_type == VT_VARIANT) {
      hr = SafeArrayGetElement(array, &index, v);
    } else if (element_type == VT_DECIMAL) {
      hr = SafeArrayGetElement(array, &index, &v->decVal);
      if (SUCCEEDED(hr)) v->vt = VT_DECIMAL;  // decVal overlays vt: set it afterwards
    } else if (element_type == VT_BSTR || element_type == VT_DISPATCH || element_type == VT_UNKNOWN ||
               IsNumberType(element_type)) {
      hr = SafeArrayGetElement(array, &index, &v->lVal);
      if (SUCCEEDED(hr)) v->vt = element_type;
    } else {
      hr = E_FAIL;  // records and other exotic elements read as Empty
    }
    result.items.push_back(SUCCEEDED(hr) ? Convert(*v, depth + 1) : HostValue{});
  }
  return result;
}

// A script array (JScript's [..]) arrives as an object with "length" and members "0", "1", ...
HostValue FromScriptArray(IDispatch* object, int depth) {
  HostValue result;
  auto get = [&](const std::wstring& name, Variant& out) {
    LPOLESTR names[] = {const_cast<LPOLESTR>(name.c_str())};
    DISPID id = DISPID_UNKNOWN;
    if (FAILED(object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id))) return false;
    DISPPARAMS none{};
    return SUCCEEDED(object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                                    out.put(), nullptr, nullptr));
  };
  Variant length;
  if (!get(L"length", length) || FAILED(VariantChangeType(length.get(), length.get(), 0, VT_I4)) ||
      length->lVal < 0 || length->lVal > 1000000)
    return result;
  result.kind = HostValue::Kind::Vector;
  for (LONG i = 0; i < length->lVal; ++i) {
    Variant element;
    result.items.push_back(get(std::to_wstring(i), element) ? Convert(*element.get(), depth + 1) : HostValue{});
  }
  return result;
}

HostValue Convert(const VARIANT& value, int depth) {
  HostValue result;
  if (depth > kMaxDepth) return result;
  Variant plain;
  if (FAILED(CopyDereferenced(value, plain))) return result;
  const VARTYPE type = plain.vt();
  if (type & VT_ARRAY) return FromSafeArray(plain->parray, type & VT_TYPEMASK, depth);
  if (type == VT_BSTR) {
    result.kind = HostValue::Kind::Text;
    result.text = FromBstr(plain->bstrVal);
  } else if (IsNumberType(type)) {
    Variant number;
    if (SUCCEEDED(VariantChangeType(number.get(), plain.get(), 0, VT_R8))) {
      result.kind = HostValue::Kind::Number;
      result.number = number->dblVal;
    }
  } else if (type == VT_DISPATCH && plain->pdispVal) {
    return FromScriptArray(plain->pdispVal, depth);
  }
  return result;
}

}  // namespace

HRESULT ToVariant(const SessionValue& value, Variant& out) {
  VARIANT* v = out.put();
  return std::visit(
      [v](const auto& x) -> HRESULT {
        using T = std::decay_t<decltype(x)>;
        if constexpr (std::is_same_v<T, std::monostate>) {
          return S_OK;
        } else if constexpr (std::is_same_v<T, bool>) {
          v->vt = VT_BOOL;
          v->boolVal = x ? VARIANT_TRUE : VARIANT_FALSE;
        } else if constexpr (std::is_same_v<T, std::int16_t>) {
          v->vt = VT_I2;
          v->iVal = x;
        } else if constexpr (std::is_same_v<T, std::int32_t>) {
          v->vt = VT_I4;
          v->lVal = x;
        } else if constexpr (std::is_same_v<T, std::string>) {
          v->bstrVal = NewBstr(x);
          if (!v->bstrVal) return E_OUTOFMEMORY;
          v->vt = VT_BSTR;
        } else {
          std::unique_ptr<SAFEARRAY, SafeArrayDeleter> array(SafeArrayCreateVector(VT_I4, 0, static_cast<ULONG>(x.size())));
          if (!array) return E_OUTOFMEMORY;
          void* data = nullptr;
          if (HRESULT hr = SafeArrayAccessData(array.get(), &data); FAILED(hr)) return hr;
          std::copy(x.begin(), x.end(), static_cast<LONG*>(data));
          SafeArrayUnaccessData(array.get());
          v->vt = VT_ARRAY | VT_I4;
          v->parray = array.release();
        }
        return S_OK;
      },
      value);
}

HostValue ToHostValue(const VARIANT& value) { return Convert(value, 0); }

HRESULT FromHostValue(const HostValue& value, Variant& out) {
  VARIANT* v = out.put();
  switch (value.kind) {
    case HostValue::Kind::Empty:
      return S_OK;
    case HostValue::Kind::Number:
      v->vt = VT_R8;
      v->dblVal = value.number;
      return S_OK;
    case HostValue::Kind::Text:
      v->bstrVal = NewBstr(value.text);
      if (!v->bstrVal) return E_OUTOFMEMORY;
      v->vt = VT_BSTR;
      return S_OK;
    case HostValue::Kind::Vector:
      break;
  }
  SAFEARRAYBOUND bound{static_cast<ULONG>(value.items.size()), 1};
  std::unique_ptr<SAFEARRAY, SafeArrayDeleter> array(SafeArrayCreate(VT_VARIANT, 1, &bound));
  if (!array) return E_OUTOFMEMORY;
  for (LONG k = 1; k <= static_cast<LONG>(value.items.size()); ++k) {
    Variant item;
    if (HRESULT hr = FromHostValue(value.items[k - 1], item); FAILED(hr)) return hr;
    if (HRESULT hr = SafeArrayPutElement(array.get(), &k, item.get()); FAILED(hr)) return hr;
  }
  v->vt = VT_ARRAY | VT_VARIANT;
  v->parray = array.release();
  return S_OK;
}

bool SameHostValue(const HostValue& a, const HostValue& b) {
  if (a.kind != b.kind || a.number != b.number || a.text != b.text || a.items.size() != b.items.size()) return false;
  for (std::size_t i = 0; i < a.items.size(); ++i)
    if (!SameHostValue(a.items[i], b.items[i])) return false;
  return true;
}

}  // namespace tq::com
