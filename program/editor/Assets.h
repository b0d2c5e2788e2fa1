// The files of the page (web/, and what it shares with the report), compiled in.
#pragma once

#include <span>
#include <string_view>

namespace kx::editor {

struct TAsset {
  std::string_view Name; // of its file: "style.css"
  std::string_view Bytes;
};
extern const std::span<const TAsset> Assets;

} // namespace kx::editor
