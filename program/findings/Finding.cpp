#include "program/findings/Finding.h"

namespace kx {

const char* WordOf(TFindingSeverity severity) {
  switch (severity) {
  case TFindingSeverity::Note:
    return "note";
  case TFindingSeverity::Warning:
    return "warning";
  default:
    return "error";
  }
}

} // namespace kx
