// This thread's state: one object per user-interface thread, made on first use and
// destroyed in one place, End(), which the control library calls when a thread
// detaches from it or the library is unloaded (tests call it to start afresh).
//
// Each layer keeps its part here: the core its language texts, the Windows side the
// editor session, its window and the host (win32/thread_state.h), as an extension
// the context owns and destroys first. The core knows nothing of that part.
#pragma once

#include <memory>

#include "support/localization.h"

namespace tq {

class ThreadContext {
 public:
  // The part of the layers above the core.
  class Extension {
   public:
    virtual ~Extension() = default;
  };

  // This thread's context, made on first use.
  static ThreadContext& This();
  // This thread's context when there is one; makes none.
  static ThreadContext* Find();
  // Destroys this thread's context, the extension first; the next This() starts afresh.
  static void End();

  LanguageTexts& Texts() { return texts_; }
  const LanguageTexts& Texts() const { return texts_; }

  // The extension of type T (the one type its layer uses), made on first use.
  template <class T>
  T& Extended() {
    if (!extension_) extension_ = std::make_unique<T>();
    return static_cast<T&>(*extension_);
  }
  Extension* FindExtension() const { return extension_.get(); }

 private:
  ThreadContext() = default;
  LanguageTexts texts_;
  std::unique_ptr<Extension> extension_;  // declared last: destroyed before the texts
};

}  // namespace tq
