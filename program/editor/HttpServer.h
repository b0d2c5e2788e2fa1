// HTTP for the one user of a page, with anybody of this machine at the door.
#pragma once

#include "contract/Process.h"
#include "program/editor/HttpRequest.h"

#include <chrono>
#include <memory>
#include <optional>

namespace kx::editor {

// What those who have not shown who they are may take up, all of them together, is Strangers * HeadBytes: the
// one who came first gives way to the next, so that the owner, who sends a head at once, always gets in.
struct THttpLimits {
  std::size_t HeadBytes = std::size_t{16} << 10;
  std::size_t BodyBytes = std::size_t{8} << 20;
  std::size_t Strangers = 128; // connections whose head was not let in (yet)
  std::size_t Guests = 32;     // requests that were let in, at once
  // From the first byte to the last, however often one comes in between.
  std::chrono::milliseconds HeadTime = std::chrono::seconds(10);
  std::chrono::milliseconds BodyTime = std::chrono::seconds(30);
  std::chrono::milliseconds AnswerTime = std::chrono::seconds(60);
  std::chrono::milliseconds FarewellTime = std::chrono::seconds(2); // to take the answer before the end
};

class IHttpService {
public:
  virtual ~IHttpService() = default;
  // Decides by the head alone, before anything else of the request is read: an answer ends it. On the thread
  // that serves everybody: it never waits.
  virtual std::optional<THttpAnswer> AtTheDoor(const THttpRequest& head) = 0;
  // The whole request of somebody who was let in. May take its time, but ends soon after `gone` is raised:
  // nobody waits for the answer any more then. On several threads at once.
  virtual THttpAnswer Answer(const THttpRequest& request, TKxEvent& gone) = 0;
};

// One request a connection: what follows a request is never taken for another one. Each connection has limits
// in bytes and in time for each of its steps.
class THttpServer {
public:
  // Takes a port of the loopback address that the system picks. The service outlives the server. Raises
  // EKxException.
  explicit THttpServer(IHttpService& service, const THttpLimits& limits = {});
  ~THttpServer(); // closes, and waits for requests that are being answered
  THttpServer(const THttpServer&) = delete;
  THttpServer& operator=(const THttpServer&) = delete;

  int Port() const;
  void Start();
  // Lets nobody in any more and tells those who answer that nobody waits. False when one of them has not
  // ended within this time.
  bool Close(std::chrono::milliseconds wait);

private:
  struct TState;
  struct TConnection;
  class TBusy;
  std::unique_ptr<TState> state_;
};

} // namespace kx::editor
