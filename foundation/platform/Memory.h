// How the process deals with the memory it has used.
#pragma once

namespace kx::platform {

// Keeps up to some megabytes that are freed instead of giving them back to the system: for one file after
// another that needs as much, getting them again is a tenth of the work.
void KeepFreedMemory();

} // namespace kx::platform
