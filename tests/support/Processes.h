// The processes of the machine, by their numbers.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kx::tests {

std::int64_t OwnProcess();
std::u16string OwnCommandLine(); // as the system gave it; empty where it gives single arguments
void IgnoreRequestsToEnd();
// Its number; what it starts with is handed down, and nobody waits for it.
std::int64_t Start(const std::u16string& program, const std::vector<std::u16string_view>& arguments);
// A process that has ended but that nobody has asked about yet does not run any more.
bool IsRunning(std::u16string_view process);
void EndProcess(std::u16string_view process);

} // namespace kx::tests
