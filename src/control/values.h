// Conversions between the session's and the host's values and VARIANTs.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include "control/com_util.h"
#include "editor/session.h"
#include "support/host.h"

namespace tq::com {

// A session result as the control returns it: strings as BSTR, booleans as
// VARIANT_BOOL, the colour table as a 0-based SAFEARRAY of VT_I4.
HRESULT ToVariant(const SessionValue& value, Variant& out);

// What the host returned, read leniently: numbers (VT_BOOL and VT_DATE included),
// strings, arrays of any element type and lower bound read by position, arrays
// nested in arrays, script arrays (objects with "length"); anything else is Empty.
HostValue ToHostValue(const VARIANT& value);

// A host value handed back to the host: vectors as 1-based arrays of VARIANT, as
// the host delivers them.
HRESULT FromHostValue(const HostValue& value, Variant& out);

bool SameHostValue(const HostValue& a, const HostValue& b);

}  // namespace tq::com
