// What a test loads: an entry that ends the program with a number nobody else uses.
#include <cstdlib>

extern "C" void KxTestEntry() {
  std::_Exit(77);
}
