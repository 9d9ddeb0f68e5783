// IPersistStreamInit and IPersistPropertyBag: the control is configured by its
// host at run time (SetObjectValue), so it has nothing to save or load.
#include "control/control.h"

namespace tq::com {

STDMETHODIMP PersistStreamInit::GetClassID(CLSID* clsid) {
  if (!clsid) return E_POINTER;
  *clsid = CLSID_ctlTqColorSetting;
  return S_OK;
}

STDMETHODIMP PersistStreamInit::GetSizeMax(ULARGE_INTEGER* size) {
  if (!size) return E_POINTER;
  size->QuadPart = 0;
  return S_OK;
}

STDMETHODIMP PersistPropertyBag::GetClassID(CLSID* clsid) {
  if (!clsid) return E_POINTER;
  *clsid = CLSID_ctlTqColorSetting;
  return S_OK;
}

}  // namespace tq::com
