// A late-bound client of the control, as a host application drives it: members
// found by name through IDispatch, arguments built in every form a client uses.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <deque>
#include <iterator>
#include <string>
#include <vector>

namespace test {

using Microsoft::WRL::ComPtr;

// Runs regsvr32 (with /u to unregister) on the control library beside the test programs; its exit code.
DWORD RunRegsvr32(bool unregister);

// An apartment for the calling thread, closed with the object.
struct Apartment {
  Apartment() { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
  ~Apartment() { CoUninitialize(); }
};

// An object on the test's stack that the control calls: counts its references and
// answers QueryInterface for IUnknown, IDispatch and `also`.
class StackDispatch : public IDispatch {
 public:
  explicit StackDispatch(const IID& also = IID_IDispatch) : also_(also) {}
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override;
  STDMETHODIMP_(ULONG) AddRef() override { return ++refs; }
  STDMETHODIMP_(ULONG) Release() override { return --refs; }
  STDMETHODIMP GetTypeInfoCount(UINT* count) override { return *count = 0, S_OK; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  ULONG refs = 1;

 private:
  IID also_;
};

// The host's list-communication object as a test plays it: its members are found by
// name, with the ids 1-6 in the order of kMembers.
class HostDispatch : public StackDispatch {
 public:
  static constexpr const wchar_t* kMembers[] = {L"HostEvaluate",   L"HostNotify",       L"HostFileNotice",
                                                L"HostRemoveFile", L"HostCreateFolder", L"HostRequest"};
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* id) override {
    for (DISPID i = 0; i < static_cast<DISPID>(std::size(kMembers)); ++i)
      if (_wcsicmp(names[0], kMembers[i]) == 0) return *id = i + 1, S_OK;
    return DISP_E_UNKNOWNNAME;
  }
};

// A handler of the control's events, as a host with a file dialog of its own: answers
// BrowsePressed with `file`, or cancels; notes every event's id and each BrowsePressed
// as its parent window and "type|title|filter|file".
class BrowseSink final : public StackDispatch {
 public:
  BrowseSink();
  std::wstring file = L"C:\\Schemes\\Night.clut";
  bool cancel = false;
  std::vector<DISPID> seen;
  std::vector<long> parents;
  std::vector<std::wstring> args;
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT*, EXCEPINFO*, UINT*) override;
  // Advises the control's events, then asks it to use them ("UseCustomFileDlg").
  void Connect(IDispatch* control);
};

// Arguments in natural order; owns what by-reference arguments point to.
class ArgList {
 public:
  ~ArgList();
  ArgList& Str(const wchar_t* text);
  ArgList& I2(short value);
  ArgList& I4(long value);
  ArgList& R8(double value);
  ArgList& Null();
  ArgList& Missing();  // VT_ERROR / DISP_E_PARAMNOTFOUND, as VB passes an omitted argument
  ArgList& Object(IDispatch* object);  // null: Nothing
  ArgList& Array();    // a 1-based array of two VARIANTs
  ArgList& RefStr(const wchar_t* text);  // VT_BYREF|VT_BSTR
  ArgList& RefR8(double value);          // VT_BYREF|VT_R8
  ArgList& RefVar();                     // VT_BYREF|VT_VARIANT to the previous argument's value
  ArgList& Named(DISPID id);             // the previous argument is passed by name

  VARIANT& operator[](std::size_t i) { return args_[i]; }
  // The variant a by-reference argument i points to.
  VARIANT& Target(std::size_t i) { return *args_[i].pvarVal; }
  HRESULT Invoke(IDispatch* object, const wchar_t* member, VARIANT* result = nullptr, UINT* arg_err = nullptr);

 private:
  ArgList& Push(VARTYPE type, auto set) {  // a variant of `type` whose value `set` fills in
    args_.push_back(VARIANT{});
    args_.back().vt = type;
    set(args_.back());
    return *this;
  }
  ArgList& Ref(VARTYPE type);  // the last argument becomes a reference to its value
  std::vector<VARIANT> args_;
  std::vector<DISPID> named_;
  std::deque<VARIANT> targets_;  // values that by-reference arguments point to
};

ComPtr<IDispatch> CreateControl();
// GetObjectValue(key) as text ("" for Empty).
std::wstring GetText(IDispatch* control, const wchar_t* key);

}  // namespace test
