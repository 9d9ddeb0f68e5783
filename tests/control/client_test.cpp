// The control as a late-bound C++ client drives it (no type library): arguments in
// every variant form, registration through regsvr32, and a host object of its own.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "TqColorSettingTool_h.h"
#include "control/client.h"

namespace {

using test::ArgList;
using test::ComPtr;

std::wstring Guid(REFGUID guid) {
  wchar_t text[40];
  StringFromGUID2(guid, text, 40);
  return text;
}

class Registered : public ::testing::Environment {
 public:
  void SetUp() override { ASSERT_EQ(test::RunRegsvr32(false), 0u); }
};
const auto* const kRegistered = ::testing::AddGlobalTestEnvironment(new Registered);

TEST(Registration, RegistersAndUnregistersTwiceEach) {
  const std::wstring clsid = L"CLSID\\" + Guid(CLSID_ctlTqColorSetting);
  const std::vector<std::wstring> ours = {
      clsid, clsid + L"\\InprocServer32", clsid + L"\\Control", clsid + L"\\MiscStatus\\1",
      L"TqColorSettingTool.ctlTqColorSetting\\CurVer", L"TqColorSettingTool.ctlTqColorSetting.1\\CLSID",
      L"TypeLib\\" + Guid(LIBID_TqColorSettingTool) + L"\\1.3\\409\\win64",
      L"Interface\\" + Guid(IID__ctlTqColorSetting), L"Interface\\" + Guid(DIID___ctlTqColorSetting)};
  for (bool unregister : {false, false, true, true}) {
    ASSERT_EQ(test::RunRegsvr32(unregister), 0u) << (unregister ? "unregister" : "register");
    for (const std::wstring& key : ours)
      EXPECT_EQ(test::ClassesKeyExists(key), !unregister) << std::string(key.begin(), key.end());
  }
  for (const std::wstring& key : {std::wstring(L"TqColorSettingTool.ctlTqColorSetting"), L"TypeLib\\" + Guid(LIBID_TqColorSettingTool)})
    EXPECT_FALSE(test::ClassesKeyExists(key));
  ASSERT_EQ(test::RunRegsvr32(false), 0u);
}

class LateBound : public ::testing::Test {
 protected:
  test::Apartment apartment_;
  ComPtr<IDispatch> control_ = test::CreateControl();
};

struct CallCase {
  const char* what;
  const wchar_t* member;
  std::function<void(ArgList&)> args;
  HRESULT expected;
  int arg_err;              // expected puArgErr, -1 when not set
  const wchar_t* read_key;  // then GetObjectValue(read_key) as text ...
  const wchar_t* read;      // ... is this
};

TEST_F(LateBound, CoercesEveryArgumentForm) {
  ASSERT_TRUE(control_);
  const CallCase cases[] = {
      {"I2 value", L"SetObjectValue", [](ArgList& a) { a.Str(L"AuthorizationLevel").I2(2); }, S_OK, -1,
       L"AuthorizationLevel", L"2"},
      {"the tools level only", L"SetObjectValue", [](ArgList& a) { a.Str(L"AuthorizationLevel").I2(3); }, S_OK, -1,
       L"AuthorizationLevelGeneral", L"-1"},
      {"byref BSTR key, byref variant holding text", L"SetObjectValue",
       [](ArgList& a) { a.RefStr(L"AuthorizationLevelGeneral").Str(L"4").RefVar(); }, S_OK, -1,
       L"AuthorizationLevelGeneral", L"4"},
      {"I4", L"SetObjectValue", [](ArgList& a) { a.Str(L"AuthorizationLevel").I4(5); }, S_OK, -1,
       L"AuthorizationLevel", L"5"},
      {"decimal", L"SetObjectValue", [](ArgList& a) { a.Str(L"AuthorizationLevel").Decimal(6); }, S_OK, -1,
       L"AuthorizationLevel", L"6"},
      {"double rounds", L"SetObjectValue", [](ArgList& a) { a.Str(L"AuthorizationLevel").R8(6.6); }, S_OK, -1,
       L"AuthorizationLevel", L"7"},
      {"byref I2", L"SetObjectValue", [](ArgList& a) { a.Str(L"AuthorizationLevel").RefI2(8); }, S_OK, -1,
       L"AuthorizationLevel", L"8"},
      {"number to text", L"SetObjectValue", [](ArgList& a) { a.Str(L"UserFolder").I4(12); }, S_OK, -1,
       L"UserFolder", L"12"},
      {"text to boolean", L"SetObjectValue", [](ArgList& a) { a.Str(L"UseCustomFileDlg").Str(L"True"); }, S_OK,
       -1, L"UseCustomFileDlg", L"-1"},
      {"named arguments", L"SetObjectValue", [](ArgList& a) { a.Str(L"9").Named(1).Str(L"AuthorizationLevel").Named(0); },
       S_OK, -1, L"AuthorizationLevel", L"9"},
      {"text that is no number", L"SetObjectValue", [](ArgList& a) { a.Str(L"AuthorizationLevel").Str(L"abc"); },
       DISP_E_TYPEMISMATCH, 0, L"AuthorizationLevel", L"9"},
      {"null value", L"SetObjectValue", [](ArgList& a) { a.Str(L"AppFolder").Null(); }, DISP_E_TYPEMISMATCH, 0,
       nullptr, nullptr},
      {"out of range", L"SetObjectValue", [](ArgList& a) { a.Str(L"AuthorizationLevel").I4(70000); },
       DISP_E_OVERFLOW, 0, L"AuthorizationLevel", L"9"},
      {"array value", L"SetObjectValue", [](ArgList& a) { a.Str(L"UserName").Array(); }, DISP_E_TYPEMISMATCH, 0,
       nullptr, nullptr},
      {"null key", L"SetObjectValue", [](ArgList& a) { a.Null().Str(L"x"); }, DISP_E_TYPEMISMATCH, 1, nullptr, nullptr},
      {"missing required value", L"SetObjectValue", [](ArgList& a) { a.Str(L"UserName"); }, DISP_E_PARAMNOTFOUND, -1,
       nullptr, nullptr},
      {"too many arguments", L"SetObjectValue", [](ArgList& a) { a.Str(L"UserName").Str(L"a").Str(L"b"); },
       DISP_E_BADPARAMCOUNT, -1, nullptr, nullptr},
      {"ListCommRef not an object", L"SetObjectValue", [](ArgList& a) { a.Str(L"ListCommRef").I4(1); },
       DISP_E_TYPEMISMATCH, 0, nullptr, nullptr},
      {"Initialize in other case", L"SetObjectValue", [](ArgList& a) { a.Str(L"Initialize").Str(L"colorscheme"); },
       S_OK, -1, nullptr, nullptr},
      {"ignored keys", L"SetObjectValue", [](ArgList& a) { a.Str(L"bUseListCommRef").Null(); }, S_OK, -1, nullptr,
       nullptr},
      {"unknown key", L"SetObjectValue", [](ArgList& a) { a.Str(L"NoSuchKey").Null(); }, S_OK, -1, L"NoSuchKey", L""},
      {"index from text", L"GetObjectValue", [](ArgList& a) { a.Str(L"ColorByIndex").Str(L"300"); }, S_OK, -1,
       nullptr, nullptr},
      {"index omitted", L"GetObjectValue", [](ArgList& a) { a.Str(L"ColorByIndex").Missing(); }, DISP_E_TYPEMISMATCH,
       0, nullptr, nullptr},
      {"index out of range", L"GetObjectValue", [](ArgList& a) { a.Str(L"ColorByIndex").I4(70000); },
       DISP_E_OVERFLOW, 0, nullptr, nullptr},
      {"Param unused elsewhere", L"GetObjectValue", [](ArgList& a) { a.Str(L"AppFolder").Array(); }, S_OK, -1,
       nullptr, nullptr},
      {"unknown member case", L"getobjectVALUE", [](ArgList& a) { a.Str(L"AppFolder"); }, S_OK, -1, nullptr, nullptr},
  };
  for (const CallCase& c : cases) {
    SCOPED_TRACE(c.what);
    ArgList args;
    c.args(args);
    VARIANT result{};
    UINT arg_err = 12345;
    EXPECT_EQ(args.Invoke(control_.Get(), c.member, &result, &arg_err), c.expected);
    EXPECT_EQ(arg_err, c.arg_err < 0 ? 12345u : static_cast<UINT>(c.arg_err));
    VariantClear(&result);
    if (c.read_key) {
      EXPECT_EQ(test::GetText(control_.Get(), c.read_key), c.read);
    }
  }
}

TEST_F(LateBound, ReturnsTypedValues) {
  ArgList by_index;
  by_index.Str(L"ColorByIndex").I2(-1);
  VARIANT result{};
  ASSERT_EQ(by_index.Invoke(control_.Get(), L"GetObjectValue", &result, nullptr), S_OK);
  EXPECT_EQ(result.vt, VT_I4);
  EXPECT_EQ(result.lVal, 0xC0C0C0);

  ArgList table;
  table.Str(L"ColorsByIndexTable");
  ASSERT_EQ(table.Invoke(control_.Get(), L"GetObjectValue", &result, nullptr), S_OK);
  ASSERT_EQ(result.vt, VT_ARRAY | VT_I4);
  LONG lower = -1, upper = -1;
  SafeArrayGetLBound(result.parray, 1, &lower);
  SafeArrayGetUBound(result.parray, 1, &upper);
  EXPECT_EQ(lower, 0);
  EXPECT_EQ(upper, 285);
  VariantClear(&result);

  ArgList unknown;
  unknown.Str(L"NoSuchKey");
  ASSERT_EQ(unknown.Invoke(control_.Get(), L"GetObjectValue", &result, nullptr), S_OK);
  EXPECT_EQ(result.vt, VT_EMPTY);
}

TEST_F(LateBound, WritesByReferenceArgumentsBackInTheCallersType) {
  ArgList args;
  args.Str(L"ColorByIndex").RefVar().RefR8(1.0);
  VARIANT result{};
  ASSERT_EQ(args.Invoke(control_.Get(), L"GetObjectValue", &result, nullptr), S_OK);
  EXPECT_EQ(args.Target(0).vt, VT_BSTR);
  EXPECT_STREQ(args.Target(0).bstrVal, L"ColorByIndex");
  EXPECT_EQ(args[1].vt, VT_BYREF | VT_R8);
  EXPECT_EQ(*args[1].pdblVal, 1.0);
  VariantClear(&result);
}

TEST_F(LateBound, NamesAndTypeInformation) {
  LPOLESTR names[] = {const_cast<LPOLESTR>(L"show2"), const_cast<LPOLESTR>(L"tabname"),
                      const_cast<LPOLESTR>(L"nosuch")};
  DISPID ids[3];
  EXPECT_EQ(control_->GetIDsOfNames(IID_NULL, names, 3, 0, ids), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(ids[0], 0x60030007);
  EXPECT_EQ(ids[1], 1);
  EXPECT_EQ(ids[2], DISPID_UNKNOWN);

  ComPtr<ITypeInfo> info;
  ASSERT_EQ(control_->GetTypeInfo(0, 0, &info), S_OK);
  ComPtr<ITypeLib> library;
  UINT index;
  ASSERT_EQ(info->GetContainingTypeLib(&library, &index), S_OK);
  TLIBATTR* attributes;
  ASSERT_EQ(library->GetLibAttr(&attributes), S_OK);
  EXPECT_EQ(attributes->wMajorVerNum, 1);
  EXPECT_EQ(attributes->wMinorVerNum, 3);
  EXPECT_EQ(attributes->lcid, 0x0409u);
  library->ReleaseTLibAttr(attributes);
  BSTR doc = nullptr;
  ASSERT_EQ(library->GetDocumentation(-1, nullptr, &doc, nullptr, nullptr), S_OK);
  EXPECT_STREQ(doc, L"Corvana Color Setting Tool");
  SysFreeString(doc);
}

}  // namespace
