// Checks every target without a fuzzer: its seeds, and as many changes to them as it is told, the same ones
// in each run.
//   kx_fuzz_replay SEEDS COUNT [TARGET]
#include "fuzz/FuzzTarget.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace {

using TSeeds = std::vector<std::string>;

TSeeds ReadSeeds(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    files.push_back(entry.path());
  std::ranges::sort(files); // the system has an order of its own
  TSeeds seeds;
  for (const auto& file : files) {
    std::ifstream stream(file, std::ios::binary);
    seeds.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
  }
  return seeds;
}

// Some changes of the kinds that fuzzers make.
std::string Changed(const TSeeds& seeds, std::mt19937& random) {
  // The distributions of the standard library differ from one to the next.
  const auto below = [&random](std::size_t limit) { return limit == 0 ? 0 : random() % limit; };
  constexpr std::array<std::string_view, 12> pieces{"\n", "\r\n", "\"",   "<", ">",        "]]>",
                                                    "%",  "\\",   "\xFF", "0", "\xC3\xA9", "--"};
  std::string input = seeds[below(seeds.size())];
  for (std::size_t changes = 1 + below(6); changes > 0; --changes) {
    const std::size_t at = below(input.size() + 1);
    const std::size_t length = below(std::min<std::size_t>(input.size() - at, 16) + 1);
    const std::string& other = seeds[below(seeds.size())];
    switch (below(4)) {
    case 0:
      input.erase(at, length);
      break;
    case 1:
      input.replace(at, length, std::string(pieces[below(pieces.size())]));
      break;
    case 2:
      input.insert(at, other.substr(below(other.size() + 1), below(40)));
      break;
    default:
      input.replace(at, std::min<std::size_t>(length, 1), 1, static_cast<char>(below(256)));
    }
  }
  return input;
}

const char* name = "";
int number = 0;

void SayWhere(int /*signal*/) {
  std::fprintf(stderr, "%s fails with its input %d\n", name, number);
  std::_Exit(1);
}

void Replay(const kx::fuzz::TTarget& target, const std::filesystem::path& seedsFolder, int count) {
  const TSeeds seeds = ReadSeeds(seedsFolder / target.Name);
  std::mt19937 random(1);
  name = target.Name;
  number = 0;
  for (const auto& seed : seeds) {
    target.Check(seed);
    ++number;
  }
  for (int i = 0; i < count; ++i, ++number)
    target.Check(Changed(seeds, random));
  std::printf("%s: %d inputs\n", name, number);
}

} // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  std::signal(SIGABRT, SayWhere);
  for (const auto& target : kx::fuzz::Targets())
    if (argc < 4 || std::string_view(target.Name) == argv[3]) Replay(target, argv[1], std::atoi(argv[2]));
  return 0;
}
