// What a call that fails has to say.
#pragma once

#include <exception>
#include <string>

namespace kx::tests {

// The message of the exception that ends it; empty when none does.
template <typename TDo>
std::string FailureOf(const TDo& what) {
  try {
    what();
  } catch (const std::exception& error) {
    return error.what();
  }
  return {};
}

} // namespace kx::tests
