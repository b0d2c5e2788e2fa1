// What the operating system answers: a value, or the reason why there is none. This room never throws; its
// callers decide what a failure means.
#pragma once

#include <string>
#include <utility>
#include <variant>

namespace kx::platform {

// A failure in words for the user: what was tried, on which file, and the system's reason.
struct Failure {
  std::u16string Message;
};

template <typename T>
class [[nodiscard]] Result {
public:
  Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
  Result(Failure failure) : state_(std::in_place_index<1>, std::move(failure)) {}

  explicit operator bool() const { return state_.index() == 0; }
  T& operator*() & { return std::get<0>(state_); }
  const T& operator*() const& { return std::get<0>(state_); }
  T&& operator*() && { return std::get<0>(std::move(state_)); }
  T* operator->() { return &std::get<0>(state_); }
  const T* operator->() const { return &std::get<0>(state_); }
  const std::u16string& Message() const { return std::get<1>(state_).Message; }

private:
  std::variant<T, Failure> state_;
};

struct Done {};
using Status = Result<Done>;

} // namespace kx::platform
