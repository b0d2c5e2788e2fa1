// Serves an editing session to the browser of the user who started it, and to nobody else.
#pragma once

#include "program/editor/EditorSession.h"

#include <chrono>
#include <memory>
#include <string>

namespace kx::editor {

// Listens on the loopback address, on a port that the system picks. The address holds a random folder and a
// token that is good for one use: whoever brings it first gets a cookie, which the browser sends to this
// folder only, never to another server's pages. Every request must name this server as its host and, where
// the browser says where a request comes from, come from a page of this server. Pages of other origins can
// neither read nor ask for anything; there is no file behind an address but those compiled in.
class TEditorServer {
public:
  // Listens from now on. The session outlives the server. Raises EKxException.
  explicit TEditorServer(TEditorSession& session);
  ~TEditorServer();
  TEditorServer(const TEditorServer&) = delete;
  TEditorServer& operator=(const TEditorServer&) = delete;

  const std::string& Address() const;               // to open, once
  std::chrono::steady_clock::duration Idle() const; // since the last request of a page
  // Serves nobody any more. False when a request is still being worked on after this time; the destructor
  // waits for its end.
  bool Close(std::chrono::milliseconds wait);

private:
  struct TState;
  std::unique_ptr<TState> state_;
};

} // namespace kx::editor
