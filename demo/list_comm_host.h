// The demo display's list-communication object, handed to the control as
// "ListCommRef". The control finds its members by name (GetIDsOfNames) and calls
// them late-bound, as it calls the process display's own object. It answers the
// editor's voltage-level queries itself and reports every other call to the display.
#pragma once

#include <windows.h>
#include <ole2.h>
#include <oaidl.h>

#include <functional>
#include <utility>
#include <string>
#include <vector>

namespace demo {

// A VARIANT that clears itself.
class Variant {
 public:
  Variant() { VariantInit(&v_); }
  ~Variant() { VariantClear(&v_); }
  Variant(Variant&& other) noexcept : v_(other.v_) { VariantInit(&other.v_); }
  Variant& operator=(Variant&& other) noexcept {
    if (this != &other) {
      VariantClear(&v_);
      v_ = other.v_;
      VariantInit(&other.v_);
    }
    return *this;
  }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;

  static Variant Text(const std::wstring& text);
  static Variant Int(long value);
  static Variant Short(short value);
  static Variant Bool(bool value);
  static Variant Object(IDispatch* object);  // AddRefs it
  // A 1-based vector of VARIANTs, as the process display hands vectors out.
  static Variant Vector(std::vector<Variant> items);

  VARIANT* get() { return &v_; }
  const VARIANT* get() const { return &v_; }
  VARIANT Detach() {
    VARIANT out = v_;
    VariantInit(&v_);
    return out;
  }

 private:
  VARIANT v_;
};

// Calls a member of `object` by name as a late-bound host does, arguments in their
// natural order. A failure's description, when the object gave one, goes to `error`.
HRESULT CallByName(IDispatch* object, const wchar_t* member, std::vector<VARIANT> args, VARIANT* result,
                   std::wstring* error = nullptr);

// Any argument (by reference or not) as text; arrays as "[a, b, ...]"; "" for what has no text.
std::wstring DescribeValue(const VARIANT& value);

class ListCommHost final : public IDispatch {
 public:
  // `log` gets one line per call of the control; `evaluated` every expression the
  // host evaluated other than the voltage-level queries (the colour lists).
  using Sink = std::function<void(const std::wstring&)>;
  // Reference count 1, owned by the caller (ComPtr::Attach).
  static ListCommHost* Create(Sink log, Sink evaluated);

  STDMETHODIMP QueryInterface(REFIID iid, void** out) override;
  STDMETHODIMP_(ULONG) AddRef() override;
  STDMETHODIMP_(ULONG) Release() override;
  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** info) override;
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override;
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO*,
                      UINT* arg_err) override;

 private:
  ListCommHost(Sink log, Sink evaluated) : log_(std::move(log)), evaluated_(std::move(evaluated)) {}
  ~ListCommHost() = default;
  HRESULT Evaluate(const std::wstring& expression, VARIANT& status, VARIANT& value);

  LONG refs_ = 1;
  Sink log_, evaluated_;
};

}  // namespace demo
