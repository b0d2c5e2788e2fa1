#include "program/editor/HttpServer.h"

#include "foundation/platform/Sockets.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"

#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/asio/write.hpp>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <list>
#include <mutex>
#include <thread>

namespace kx::editor {

namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using TError = boost::system::error_code;

constexpr std::string_view EndOfHead = "\r\n\r\n";
constexpr auto AfterRefusedAccept = std::chrono::milliseconds(100);

} // namespace

// Everything but the answers happens on one thread, which never waits.
struct THttpServer::TState {
  TState(IHttpService& service, const THttpLimits& limits)
      : Service(service), Limits(limits), Acceptor(Io), Pause(Io), Workers(limits.Guests) {}

  void Listen();
  void Serve();
  void Accept();
  void Welcome(tcp::socket socket);
  void CloseAll();
  void NoteWorker(bool begins);
  bool IsFull();

  IHttpService& Service;
  const THttpLimits Limits;
  asio::io_context Io{1};
  tcp::acceptor Acceptor;
  asio::steady_timer Pause;
  std::list<std::shared_ptr<TConnection>> Strangers; // the oldest first
  std::list<std::shared_ptr<TConnection>> Guests;
  asio::thread_pool Workers;
  std::mutex Mutex; // guards what follows
  std::condition_variable Changed;
  std::size_t Busy = 0; // workers
  std::thread Thread;
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

  TState& Server;
  tcp::socket Socket;
  asio::steady_timer Deadline;
  std::string Received;
  std::array<char, 1024> Block{};
  THttpRequest Request;
  std::string Answer;
  std::size_t Ignored = 0; // bytes that came too late
  bool IsGuest = false;
  bool IsAnswered = false;
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
  Deadline.async_wait([self = shared_from_this()](const TError& error) {
    if (!error) self->Close();
  });
}

void THttpServer::TConnection::ReadHead() {
  Socket.async_read_some(asio::buffer(Block),
                         [self = shared_from_this()](const TError& error, std::size_t size) {
                           if (error) return self->Close();
                           const std::size_t before = self->Received.size();
                           self->Received.append(self->Block.data(), size);
                           self->OnHead(before);
                         });
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
                   [self = shared_from_this()](const TError& error, std::size_t /*size*/) {
                     if (error) return self->Close();
                     self->Work();
                   });
}

void THttpServer::TConnection::Work() {
  Deadline.cancel();
  Gone = std::make_unique<TKxEvent>();
  Watch();
  Server.NoteWorker(true);
  asio::post(Server.Workers, [self = shared_from_this()] {
    THttpAnswer answer;
    try {
      answer = self->Server.Service.Answer(self->Request, *self->Gone);
    } catch (const std::exception& error) {
      answer = Refusal(500, error.what());
    }
    asio::post(self->Server.Io, [self, answer = std::move(answer)] { self->Send(answer); });
    self->Server.NoteWorker(false);
  });
}

void THttpServer::TConnection::Send(const THttpAnswer& answer) {
  if (!Socket.is_open()) return;
  Received = {};
  Answer = ToBytes(answer, Request.Method != "HEAD");
  SetTime(Server.Limits.AnswerTime);
  if (Gone == nullptr) Watch();
  asio::async_write(Socket, asio::buffer(Answer),
                    [self = shared_from_this()](TError error, std::size_t /*size*/) {
                      if (error) return self->Close();
                      self->IsAnswered = true;
                      self->Answer = {};
                      // Whoever is still sending would lose the answer if the connection were closed at once.
                      self->SetTime(self->Server.Limits.FarewellTime);
                      self->Socket.shutdown(tcp::socket::shutdown_send, error);
                    });
}

// What comes now is nothing that was asked for: the end, or the rest of a refused request.
void THttpServer::TConnection::Watch() {
  Socket.async_read_some(asio::buffer(Block),
                         [self = shared_from_this()](const TError& error, std::size_t size) {
                           self->Ignored += size;
                           if (error || self->Ignored > 2 * self->Server.Limits.BodyBytes)
                             return self->Close();
                           self->Watch();
                         });
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

// What a step raises, for want of memory, ends that step: its connection is closed when its time is over.
void THttpServer::TState::Serve() {
  for (;;) {
    try {
      Io.run();
      return;
    } catch (const std::exception&) {
    }
  }
}

void THttpServer::TState::Accept() {
  Acceptor.async_accept([this](const TError& error, tcp::socket socket) {
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
    Pause.expires_after(AfterRefusedAccept);
    Pause.async_wait([this](const TError& ended) {
      if (!ended) Accept();
    });
  });
}

void THttpServer::TState::Welcome(tcp::socket socket) {
  platform::KeepFromChildren(static_cast<std::intptr_t>(socket.native_handle()));
  if (Strangers.size() >= Limits.Strangers) Strangers.front()->Close();
  auto connection = std::make_shared<TConnection>(*this, std::move(socket));
  connection->Place = Strangers.insert(Strangers.end(), connection);
  connection->Begin();
}

void THttpServer::TState::CloseAll() {
  TError ignored;
  Acceptor.close(ignored);
  Pause.cancel();
  for (auto* list : {&Strangers, &Guests})
    while (!list->empty())
      list->front()->Close();
}

void THttpServer::TState::NoteWorker(bool begins) {
  {
    const std::lock_guard lock(Mutex);
    Busy = begins ? Busy + 1 : Busy - 1;
  }
  Changed.notify_all();
}

// Who has gone may still be worked for.
bool THttpServer::TState::IsFull() {
  const std::lock_guard lock(Mutex);
  return std::max(Guests.size(), Busy) >= Limits.Guests;
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
  state_->Workers.join();
}

} // namespace kx::editor
