// A late-bound client of the control, as a host application drives it: members
// found by name through IDispatch, arguments built in every form a client uses.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <deque>
#include <string>
#include <vector>

namespace test {

using Microsoft::WRL::ComPtr;

// The control library beside the test programs.
std::wstring ControlDllPath();
// Runs regsvr32 (with /u to unregister) on the control library; its exit code.
DWORD RunRegsvr32(bool unregister);
bool ClassesKeyExists(const std::wstring& key);

// An apartment for the calling thread, closed with the object.
struct Apartment {
  Apartment() { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
  ~Apartment() { CoUninitialize(); }
};

// Arguments in natural order; owns what by-reference arguments point to.
class ArgList {
 public:
  ArgList() = default;
  ArgList(const ArgList&) = delete;
  ~ArgList();
  ArgList& Str(const wchar_t* text);
  ArgList& I2(short value);
  ArgList& I4(long value);
  ArgList& R8(double value);
  ArgList& Decimal(long value);
  ArgList& Var(const VARIANT& value);  // a copy
  ArgList& Null();
  ArgList& Missing();  // VT_ERROR / DISP_E_PARAMNOTFOUND, as VB passes an omitted argument
  ArgList& Object(IDispatch* object);
  ArgList& Array();    // a 1-based array of two VARIANTs
  ArgList& RefStr(const wchar_t* text);  // VT_BYREF|VT_BSTR
  ArgList& RefI2(short value);           // VT_BYREF|VT_I2
  ArgList& RefR8(double value);          // VT_BYREF|VT_R8
  ArgList& RefVar();                     // VT_BYREF|VT_VARIANT to the previous argument's value
  ArgList& Named(DISPID id);             // the previous argument is passed by name

  VARIANT& operator[](std::size_t i) { return args_[i]; }
  // The variant a by-reference argument i points to.
  VARIANT& Target(std::size_t i) { return *args_[i].pvarVal; }
  HRESULT Invoke(IDispatch* object, const wchar_t* member, VARIANT* result, UINT* arg_err, EXCEPINFO* exception = nullptr);

 private:
  ArgList& Push(VARIANT v);
  std::vector<VARIANT> args_;
  std::vector<DISPID> named_;
  std::deque<VARIANT> targets_;  // values that by-reference arguments point to
};

ComPtr<IDispatch> CreateControl();
// GetObjectValue(key) as text ("" for Empty), or the failing HRESULT in hr.
std::wstring GetText(IDispatch* control, const wchar_t* key, HRESULT* hr = nullptr);
HRESULT SetValue(IDispatch* control, const wchar_t* key, VARIANT value);

}  // namespace test
