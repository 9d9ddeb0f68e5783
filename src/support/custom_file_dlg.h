// clsCustomFileDlg: file dialogs shown by the host instead of by the control. The
// editor calls RaiseBrowse; the control listens to BrowsePressed and passes it on to
// the host's event sinks, whose answers come back through fileName and cancel.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "support/host.h"

namespace tq {

class clsCustomFileDlg {
 public:
  // The BrowsePressed event: owner window, mode (3 import / open, 4 export / save),
  // title, filter ("|"-separated), a further text of the editor's, then the host's
  // answers: the file name (a text when one was chosen) and whether it cancelled.
  using BrowsePressed = std::function<void(std::int32_t owner, std::int16_t mode, const std::string& title,
                                           const std::string& filter, const std::string& further,
                                           HostValue& fileName, bool& cancel)>;
  void OnBrowsePressed(BrowsePressed listener) { listener_ = std::move(listener); }

  // Raises BrowsePressed. Without a listener nothing answers: fileName and cancel
  // keep what they held.
  void RaiseBrowse(std::int32_t owner, std::int16_t mode, const std::string& title, const std::string& filter,
                   const std::string& further, HostValue& fileName, bool& cancel) {
    if (listener_) listener_(owner, mode, title, filter, further, fileName, cancel);
  }

 private:
  BrowsePressed listener_;
};

}  // namespace tq
