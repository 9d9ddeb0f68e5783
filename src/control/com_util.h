// Small owners for the COM types the control passes around: every interface
// pointer, BSTR, VARIANT and SAFEARRAY is released exactly once, on every path.
#pragma once

#include <windows.h>
#include <oleauto.h>
#include <wrl/client.h>

#include <string>
#include <string_view>
#include <utility>

namespace tq::com {

using Microsoft::WRL::ComPtr;

// UTF-8 inside, BSTR at the COM edge.
BSTR NewBstr(std::string_view utf8);
std::string FromBstr(BSTR text);

class Bstr {
 public:
  Bstr() = default;
  explicit Bstr(std::string_view utf8) : value_(NewBstr(utf8)) {}
  explicit Bstr(const wchar_t* text) : value_(SysAllocString(text)) {}
  ~Bstr() { SysFreeString(value_); }
  Bstr(Bstr&& other) noexcept : value_(std::exchange(other.value_, nullptr)) {}
  Bstr& operator=(Bstr&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  BSTR get() const { return value_; }
  BSTR* put() {
    SysFreeString(std::exchange(value_, nullptr));
    return &value_;
  }
  BSTR release() { return std::exchange(value_, nullptr); }
  std::string utf8() const { return FromBstr(value_); }

 private:
  BSTR value_ = nullptr;
};

class Variant {
 public:
  Variant() { VariantInit(&value_); }
  ~Variant() { VariantClear(&value_); }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  Variant(Variant&& other) noexcept : value_(other.value_) { VariantInit(&other.value_); }
  Variant& operator=(Variant&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  VARIANT* get() { return &value_; }
  const VARIANT* get() const { return &value_; }
  VARIANT* operator->() { return &value_; }
  const VARIANT* operator->() const { return &value_; }
  VARTYPE vt() const { return value_.vt; }
  VARIANT* put() {
    VariantClear(&value_);
    return &value_;
  }
  // Hands the content to a caller-owned VARIANT (which must be empty or cleared).
  void MoveTo(VARIANT* target) {
    *target = value_;
    VariantInit(&value_);
  }

 private:
  VARIANT value_;
};

// A SAFEARRAY this code created and not yet handed on.
struct SafeArrayDeleter {
  void operator()(SAFEARRAY* array) const { SafeArrayDestroy(array); }
};

// EXCEPINFO filled by a callee: its strings are freed with it.
struct ExcepInfo : EXCEPINFO {
  ExcepInfo() : EXCEPINFO{} {}
  ~ExcepInfo() {
    SysFreeString(bstrSource);
    SysFreeString(bstrDescription);
    SysFreeString(bstrHelpFile);
  }
  ExcepInfo(const ExcepInfo&) = delete;
  ExcepInfo& operator=(const ExcepInfo&) = delete;
};

// A deep copy of a value with every VT_BYREF level resolved (VariantCopyInd).
HRESULT CopyDereferenced(const VARIANT& source, Variant& target);

}  // namespace tq::com
