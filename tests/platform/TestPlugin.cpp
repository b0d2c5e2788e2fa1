// What a test loads: an entry that ends the program with a number nobody else uses.
#include <cstdlib>

#ifdef _WIN32
extern "C" __declspec(dllexport) void KxTestEntry() {
#else
extern "C" void KxTestEntry() {
#endif
  std::_Exit(77);
}
