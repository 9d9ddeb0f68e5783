// The host's list-communication object ("ListCommRef") behind tq::HostLink: a
// late-bound IDispatch whose members are found by name, so that a script class
// with HostEvaluate, HostNotify, ... is as good a host as the process display.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <memory>

#include "control/com_util.h"
#include "support/host.h"

namespace tq::com {

// The value of "ListCommRef" as a host: an object answering to HostEvaluate. A
// non-object or an object without HostEvaluate is DISP_E_TYPEMISMATCH; Nothing
// (a null object) or Null gives a null host, which forgets the thread's host.
// Throws std::bad_alloc when out of memory.
HRESULT BindHost(const VARIANT& value, std::shared_ptr<HostLink>& host);

// Makes `host` this thread's host (null forgets it). A host replaced while a call
// of the control is running stays alive until the outermost call returns: the
// session may still be inside one of its calls.
void InstallThreadHost(std::shared_ptr<HostLink> host);

// Marks a call of the control in progress on this thread.
class ControlCall {
 public:
  ControlCall();
  ~ControlCall();
  ControlCall(const ControlCall&) = delete;
  ControlCall& operator=(const ControlCall&) = delete;
};

}  // namespace tq::com
