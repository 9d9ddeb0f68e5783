// The host application's list-communication object, as the portable core sees it.
//
// The host hands the control one object per thread ("ListCommRef"); the COM layer
// wraps it in a HostLink. Every operation returns false when the host raised an
// error (or answered with junk that cannot be read); the core then treats the call
// as failed and tells nobody. A HostLink never throws.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tq {

// A value the host returns: nothing, a number, a text, or a vector of values. A
// vector is held by position whatever its bounds were on the host's side: its k-th
// element (k from 1) is items[k - 1] and its size is items.size(), so 1-based host
// vectors and 0-based script arrays read alike.
struct HostValue {
  enum class Kind { Empty, Number, Text, Vector };
  Kind kind = Kind::Empty;
  double number = 0;
  std::string text;
  std::vector<HostValue> items;

  bool empty() const { return kind == Kind::Empty; }
};

class HostLink {
 public:
  virtual ~HostLink() = default;
  // Evaluates an expression of the host's command language; status 0 is success.
  virtual bool Evaluate(const std::string& expression, std::int32_t& status, HostValue& value) = 0;
  virtual bool Notify(const std::string& event_name, const std::string& text, const HostValue& value) = 0;
  virtual bool FileNotice(const std::string& text) = 0;   // a file the host should know about changed
  virtual bool RemoveFile(const std::string& path) = 0;   // a scheme file is being deleted
  virtual bool CreateFolder(const std::string& path) = 0; // a folder the control needs is missing
  virtual bool Request(const std::string& text) = 0;      // reserved for the host's own use
};

// Host call kinds.
constexpr int kHostEvaluate = 1;
constexpr int kHostFileNotice = 2;
constexpr int kHostRemoveFile = 3;
constexpr int kHostCreateFolder = 4;
constexpr int kHostRequest = 5;
constexpr int kHostEvaluateAndNotify = 6;

// One numbered call to the host. Without a host (null) nothing happens and the
// answer is false. Kind 1 answers whether the status was 0 or below; kind 6
// evaluates and, on status 0, notifies "ColorSchemeLoaded" with the value; the
// other kinds answer true once the host took the call. A host error gives false.
bool HostCall(HostLink* host, int kind, const std::string& text);

}  // namespace tq
