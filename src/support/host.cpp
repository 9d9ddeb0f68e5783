#include "support/host.h"

namespace tq {

bool HostCall(HostLink* host, int kind, const std::string& text) {
  if (!host) return false;
  std::int32_t status = 0;
  HostValue value;
  switch (kind) {
    case kHostEvaluate:
      return host->Evaluate(text, status, value) && status <= 0;
    case kHostFileNotice:
      return host->FileNotice(text);
    case kHostRemoveFile:
      return host->RemoveFile(text);
    case kHostCreateFolder:
      return host->CreateFolder(text);
    case kHostRequest:
      return host->Request(text);
    case kHostEvaluateAndNotify:
      if (!host->Evaluate(text, status, value)) return false;
      if (status == 0 && !host->Notify("ColorSchemeLoaded", "", value)) return false;
      return true;
    default:
      return false;
  }
}

}  // namespace tq
