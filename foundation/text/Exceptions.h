// What may be thrown across the rooms, and who catches it.
#pragma once

#include <exception>
#include <string>

namespace kx {

// Base of all below; Message is the fixed English text, what() the same in UTF-8.
class EKxException : public std::exception {
public:
  explicit EKxException(std::u16string message);
  const std::u16string& Message() const { return message_; }
  const char* what() const noexcept override { return utf8_.c_str(); }

private:
  std::u16string message_;
  std::string utf8_;
};

// A reader met something that it cannot read. Caught by the actions, which log it or turn it into
// EFailAction.
class EKxParseError : public EKxException {
public:
  explicit EKxParseError(std::u16string message, std::u16string file = {}, int line = 0);
  const std::u16string& File() const { return file_; } // empty when the message already says it all
  int Line() const { return line_; }                   // from 1; 0 when not known

private:
  std::u16string file_;
  int line_;
};

// Raised by Expand when a text cannot be expanded. Caught by TryExpandExpression.
class EExpressionError : public EKxException {
public:
  using EKxException::EKxException;
};

// Fails the running action with this message. Caught by the host, as any other exception of Execute.
class EFailAction : public EKxException {
public:
  using EKxException::EKxException;
};

// "/src/App.sln, line 6": what a parse error refers to, as far as it knows; else empty.
std::u16string PlaceOf(const std::exception& error);

// The message of any exception, for a log.
std::u16string MessageOf(const std::exception& error);

} // namespace kx
