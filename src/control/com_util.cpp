#include "control/com_util.h"

#include "win32/text.h"

namespace tq::com {

BSTR NewBstr(std::string_view utf8) {
  const std::wstring wide = tq::win::Widen(utf8);
  return SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
}

std::string FromBstr(BSTR text) {
  return text ? tq::win::Narrow(std::wstring_view(text, SysStringLen(text))) : std::string();
}

HRESULT CopyDereferenced(const VARIANT& source, Variant& target) {
  const VARIANT* from = &source;
  // VBScript may hand on a reference to a variable that itself holds a reference.
  while (from->vt == (VT_BYREF | VT_VARIANT) && from->pvarVal) from = from->pvarVal;
  return VariantCopyInd(target.put(), const_cast<VARIANT*>(from));
}

}  // namespace tq::com
