#include "program/editor/HttpServer.h"

#include "foundation/platform/Sockets.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"

#include <boost/asio/error.hpp>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <list>
#include <mutex>
#include <new>
#include <thread>
#include <vector>

namespace kx::editor {

namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using TError = boost::system::error_code;

constexpr std::string_view EndOfHead = "\r\n\r\n";
constexpr auto AfterRefusal = std::chrono::milliseconds(100); // by the system, of handles or memory

// Until it ends without an exception: memory that is missing now may be there soon.
template <typename TDo>
void Persist(const TDo& what) {
  for (;;) {
    try {
      return what();
    } catch (const std::exception&) {
      std::this_thread::sleep_for(AfterRefusal);
    }
  }
}

// Threads for what is posted to Io; their end does all of it first. asio's own pool waits for ever when the
// system gives it some of its threads but not all.
class TWorkers {
public:
  explicit TWorkers(std::size_t count) {
    threads_.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
      threads_.emplace_back([this] { Persist([this] { Io.run(); }); });
  }

  asio::io_context Io;

private:
  std::vector<std::jthread> threads_;
  asio::executor_work_guard<asio::io_context::executor_type> more_{Io.get_executor()}; // ends before them
};

} // namespace

// Everything but the answers happens on one thread, which never waits.
struct THttpServer::TState {
  TState(IHttpService& service, const THttpLimits& limits)
      : Service(service), Limits(limits), Acceptor(Io), Pause(Io), Workers(limits.Guests) {}

  void Listen();
  void Serve();
  void Accept();
  void Welcome(tcp::socket socket);
  void CloseConnections();
  void CloseAll();
  bool IsFull();
  THttpAnswer AnswerOf(const THttpRequest& request, TKxEvent& gone) const;

  IHttpService& Service;
  const THttpLimits Limits;
  asio::io_context Io{1};
  tcp::acceptor Acceptor;
  asio::steady_timer Pause;
  std::weak_ptr<void> Accepting; // held by the step that lets the next one in: for want of memory it may go
  std::list<std::shared_ptr<TConnection>> Strangers; // the oldest first
  std::list<std::shared_ptr<TConnection>> Guests;
  std::mutex Mutex; // guards what follows
  std::condition_variable Changed;
  std::size_t Busy = 0; // workers
  TWorkers Workers;
  std::thread Thread;
};

// One worker is busy while there is one of these.
class THttpServer::TBusy {
public:
  explicit TBusy(TState& server) : server_(server) { Add(1); }
  TBusy(const TBusy&) = delete;
  TBusy& operator=(const TBusy&) = delete;
  ~TBusy() { Add(-1); }

private:
  void Add(int change) {
    {
      const std::lock_guard lock(server_.Mutex);
      server_.Busy += static_cast<std::size_t>(change);
    }
    server_.Changed.notify_all();
  }

  TState& server_;
};

// Reads a head, asks the service, reads the body, has it answered, writes the answer; meanwhile and
// afterwards looks whether the other side has gone.
struct THttpServer::TConnection : std::enable_shared_from_this<TConnection> {
  TConnection(TState& server, tcp::socket socket)
      : Server(server), Socket(std::move(socket)), Deadline(server.Io) {}

  void Begin();
  void ReadHead();
  void OnHead(std::size_t begin);
  void ReadBody();
  void Work();
  void Send(const THttpAnswer& answer);
  void Watch();
  void SetTime(std::chrono::milliseconds time);
  void Close();

  // What follows a step: the connection lives until then. A step that ended before the connection was closed
  // is told of afterwards, and nothing follows. What is raised, for want of memory, ends the connection.
  template <typename TNext>
  auto Then(TNext next) {
    return [self = shared_from_this(), next = std::move(next)](const auto&... results) {
      if (!self->Socket.is_open()) return;
      try {
        next(results...);
      } catch (const std::exception&) {
        self->Close();
      }
    };
  }

  TState& Server;
  tcp::socket Socket;
  asio::steady_timer Deadline;
  std::string Received;
  std::array<char, 1024> Block{};
  THttpRequest Request;
  std::string Answer;
  std::size_t Ignored = 0; // bytes that came too late
  bool IsGuest = false;
  std::unique_ptr<TKxEvent> Gone; // of a guest
  std::list<std::shared_ptr<TConnection>>::iterator Place;
};

// --- one connection ---

void THttpServer::TConnection::Begin() {
  SetTime(Server.Limits.HeadTime);
  ReadHead();
}

void THttpServer::TConnection::SetTime(std::chrono::milliseconds time) {
  Deadline.expires_after(time);
  Deadline.async_wait(Then([this](const TError& error) {
    if (!error) Close();
  }));
}

void THttpServer::TConnection::ReadHead() {
  Socket.async_read_some(asio::buffer(Block), Then([this](const TError& error, std::size_t size) {
                           if (error) return Close();
                           const std::size_t before = Received.size();
                           Received.append(Block.data(), size);
                           OnHead(before);
                         }));
}

// Looks for the end of the head, which may have begun before what came last.
void THttpServer::TConnection::OnHead(std::size_t begin) {
  const std::size_t from = begin - std::min(begin, EndOfHead.size() - 1);
  const std::size_t end = Received.find(EndOfHead, from);
  const std::size_t size = end == std::string::npos ? Received.size() : end + EndOfHead.size();
  if (size > Server.Limits.HeadBytes) return Send(Refusal(431, "The head of the request is too large."));
  if (end == std::string::npos) return ReadHead();
  auto head = editor::ReadHead(std::string_view(Received).substr(0, size));
  if (const auto* refusal = std::get_if<THttpAnswer>(&head)) return Send(*refusal);
  Request = std::move(std::get<THttpRequest>(head));
  if (const auto answer = Server.Service.AtTheDoor(Request)) return Send(*answer);
  if (Server.IsFull()) return Send(Refusal(503, "Too much is asked at once."));
  Server.Guests.splice(Server.Guests.end(), Server.Strangers, Place);
  IsGuest = true;
  if (Request.BodySize > Server.Limits.BodyBytes)
    return Send(Refusal(413, "The body of the request is too large."));
  Request.Body = Received.substr(size, Request.BodySize);
  Received = {};
  SetTime(Server.Limits.BodyTime);
  ReadBody();
}

void THttpServer::TConnection::ReadBody() {
  const std::size_t there = Request.Body.size();
  if (there == Request.BodySize) return Work();
  Request.Body.resize(Request.BodySize);
  asio::async_read(Socket, asio::buffer(Request.Body.data() + there, Request.BodySize - there),
                   Then([this](const TError& error, std::size_t /*size*/) {
                     if (error) return Close();
                     Work();
                   }));
}

void THttpServer::TConnection::Work() {
  Deadline.cancel();
  Gone = std::make_unique<TKxEvent>();
  Watch();
  // Nobody else would end a connection for which no answer can be made or passed on.
  const auto answer = std::make_shared<THttpAnswer>(Refusal(500, text::ToUtf8(MessageOf(std::bad_alloc()))));
  asio::post(Server.Workers.Io, [self = shared_from_this(), busy = std::make_shared<TBusy>(Server), answer] {
    try {
      *answer = self->Server.AnswerOf(self->Request, *self->Gone);
    } catch (const std::bad_alloc&) { // which is the answer
    }
    const auto send = self->Then([connection = self.get(), answer] { connection->Send(*answer); });
    Persist([&] { asio::post(self->Server.Io, send); });
  });
}

void THttpServer::TConnection::Send(const THttpAnswer& answer) {
  Received = {};
  Answer = ToBytes(answer, Request.Method != "HEAD");
  SetTime(Server.Limits.AnswerTime);
  if (Gone == nullptr) Watch();
  asio::async_write(Socket, asio::buffer(Answer), Then([this](const TError& error, std::size_t /*size*/) {
                      if (error) return Close();
                      Answer = {};
                      // Whoever is still sending would lose the answer if the connection were closed at once.
                      SetTime(Server.Limits.FarewellTime);
                      TError ignored;
                      Socket.shutdown(tcp::socket::shutdown_send, ignored);
                    }));
}

// What comes now is nothing that was asked for: the end, or the rest of a refused request.
void THttpServer::TConnection::Watch() {
  Socket.async_read_some(asio::buffer(Block), Then([this](const TError& error, std::size_t size) {
                           Ignored += size;
                           if (error || Ignored > 2 * Server.Limits.BodyBytes) return Close();
                           Watch();
                         }));
}

void THttpServer::TConnection::Close() {
  if (!Socket.is_open()) return;
  TError ignored;
  Socket.close(ignored);
  Deadline.cancel();
  if (Gone != nullptr) Gone->Raise();
  (IsGuest ? Server.Guests : Server.Strangers).erase(Place);
}

// --- all of them ---

void THttpServer::TState::Listen() {
  TError error;
  const tcp::endpoint any(asio::ip::address_v4::loopback(), 0);
  Acceptor.open(any.protocol(), error);
  if (!error) platform::KeepFromChildren(static_cast<std::intptr_t>(Acceptor.native_handle()));
  if (!error) Acceptor.bind(any, error);
  if (!error) Acceptor.listen(asio::socket_base::max_listen_connections, error);
  if (error)
    throw EKxException(u"No port of the loopback address is free: " + text::FromUtf8(error.message()));
}

// What a step raises that no connection takes, for want of memory, may have been that of any of them: whoever
// waits for an answer learns that none comes, and the next ones are let in.
void THttpServer::TState::Serve() {
  Persist([this] {
    CloseConnections();
    Io.restart(); // it has stopped when nothing else was left to do
    if (Accepting.expired() && Acceptor.is_open()) Accept();
    Io.run();
  });
}

void THttpServer::TState::Accept() {
  const auto step = std::make_shared<char>();
  Accepting = step;
  Acceptor.async_accept([this, step](const TError& error, tcp::socket socket) {
    if (!Acceptor.is_open()) return;
    if (!error) {
      try {
        Welcome(std::move(socket));
      } catch (const std::exception&) {
        // There is no memory for this one; for the next there may be.
      }
      return Accept();
    }
    // The system has no handle left: one of those who hold them gives way.
    if (!Strangers.empty()) Strangers.front()->Close();
    Pause.expires_after(AfterRefusal);
    Pause.async_wait([this, step](const TError& ended) {
      if (!ended) Accept();
    });
  });
}

void THttpServer::TState::Welcome(tcp::socket socket) {
  platform::KeepFromChildren(static_cast<std::intptr_t>(socket.native_handle()));
  if (Strangers.size() >= Limits.Strangers) Strangers.front()->Close();
  auto connection = std::make_shared<TConnection>(*this, std::move(socket));
  connection->Place = Strangers.insert(Strangers.end(), connection);
  connection->Then([&] { connection->Begin(); })();
}

void THttpServer::TState::CloseAll() {
  TError ignored;
  Acceptor.close(ignored);
  Pause.cancel();
  CloseConnections();
}

void THttpServer::TState::CloseConnections() {
  for (auto* list : {&Strangers, &Guests})
    while (!list->empty())
      list->front()->Close();
}

// Who has gone may still be worked for.
bool THttpServer::TState::IsFull() {
  const std::lock_guard lock(Mutex);
  return std::max(Guests.size(), Busy) >= Limits.Guests;
}

THttpAnswer THttpServer::TState::AnswerOf(const THttpRequest& request, TKxEvent& gone) const {
  try {
    return Service.Answer(request, gone);
  } catch (const std::exception& error) {
    return Refusal(500, text::ToUtf8(MessageOf(error)));
  }
}

THttpServer::THttpServer(IHttpService& service, const THttpLimits& limits)
    : state_(std::make_unique<TState>(service, limits)) {
  state_->Listen();
}

int THttpServer::Port() const {
  return state_->Acceptor.local_endpoint().port();
}

void THttpServer::Start() {
  state_->Accept();
  state_->Thread = std::thread([this] { state_->Serve(); });
}

bool THttpServer::Close(std::chrono::milliseconds wait) {
  asio::post(state_->Io, [this] { state_->CloseAll(); });
  if (state_->Thread.joinable()) state_->Thread.join();
  std::unique_lock lock(state_->Mutex);
  return state_->Changed.wait_for(lock, wait, [this] { return state_->Busy == 0; });
}

THttpServer::~THttpServer() {
  Close({});
}

} // namespace kx::editor
