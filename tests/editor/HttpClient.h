// A program that says over a connection whatever a test wants, byte by byte.
#pragma once

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>

#include <memory>
#include <string>
#include <string_view>

namespace kx::tests {

struct THttpReply {
  int Status = 0;  // 0: the connection ended without an answer
  int Answers = 0; // that came over the connection
  std::string Head;
  std::string Body;

  std::string Header(std::string_view name) const {
    const std::size_t at = Head.find("\r\n" + std::string(name) + ": ");
    if (at == std::string::npos) return {};
    const std::size_t begin = at + name.size() + 4;
    return Head.substr(begin, Head.find("\r\n", begin) - begin);
  }
};

class THttpClient {
public:
  explicit THttpClient(int port) : io_(std::make_unique<boost::asio::io_context>()), socket_(*io_) {
    socket_.connect({boost::asio::ip::address_v4::loopback(), static_cast<unsigned short>(port)});
  }

  // False when the other side has ended the connection.
  bool Send(std::string_view bytes) {
    boost::system::error_code error;
    boost::asio::write(socket_, boost::asio::buffer(bytes.data(), bytes.size()), error);
    return !error;
  }
  // To the end of the connection.
  THttpReply Receive() {
    std::string bytes;
    boost::system::error_code error;
    boost::asio::read(socket_, boost::asio::dynamic_buffer(bytes), error);
    THttpReply reply;
    for (std::size_t at = bytes.find("HTTP/1.1 "); at != std::string::npos;
         at = bytes.find("HTTP/1.1 ", at + 1))
      ++reply.Answers;
    const std::size_t end = bytes.find("\r\n\r\n");
    if (reply.Answers == 0 || end == std::string::npos) return reply;
    reply.Status = std::stoi(bytes.substr(std::string_view("HTTP/1.1 ").size()));
    reply.Head = bytes.substr(0, end + 2);
    reply.Body = bytes.substr(end + 4);
    return reply;
  }
  THttpReply Ask(std::string_view bytes) {
    Send(bytes);
    return Receive();
  }
  void ShutDown() { // says that nothing more comes
    boost::system::error_code ignored;
    socket_.shutdown(boost::asio::ip::tcp::socket::shutdown_send, ignored);
  }
  void Close() { socket_.close(); }

private:
  std::unique_ptr<boost::asio::io_context> io_; // which stays where it is
  boost::asio::ip::tcp::socket socket_;
};

} // namespace kx::tests
