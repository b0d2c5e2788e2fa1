#pragma once

#include <exception>
#include <string>

namespace kx::tests {

// The message of what a call raises; empty when it raises nothing.
template <class TCall>
std::string Raised(const TCall& call) {
  try {
    call();
  } catch (const std::exception& error) {
    return error.what();
  }
  return {};
}

} // namespace kx::tests
