// Per-thread state (the editor session, the language, the host)
// without thread_local objects that have destructors: with the MinGW posix thread
// model such destructors run after the thread's storage has been freed and corrupt
// the heap when a thread ends. A ThreadOwned<T> is a plain pointer, safe as a
// thread_local; its object is destroyed by EndThreadState(), which the control
// library calls when a thread detaches from it.
#pragma once

#include <memory>

namespace tq {

namespace detail {
// Remembers that this thread's *slot owns an object that `destroy` frees (and nulls).
void RegisterThreadObject(void** slot, void (*destroy)(void** slot));
}  // namespace detail

// Destroys every ThreadOwned object of the calling thread, newest first.
void EndThreadState();

template <typename T>
struct ThreadOwned {
  T* object = nullptr;
  bool registered = false;

  T& Get() {
    if (!object) Reset(std::make_unique<T>());
    return *object;
  }
  T* get() const { return object; }
  void Reset(std::unique_ptr<T> value) {
    delete object;
    object = value.release();
    if (!registered) {
      registered = true;
      detail::RegisterThreadObject(reinterpret_cast<void**>(&object), [](void** slot) {
        delete static_cast<T*>(*slot);
        *slot = nullptr;
      });
    }
  }
};

}  // namespace tq
