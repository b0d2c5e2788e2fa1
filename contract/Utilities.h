// Small helpers that the host lends to its plug-ins.
#pragma once

#include "foundation/text/Exceptions.h"

#include <optional>
#include <string>
#include <string_view>

namespace kx {

class TPathUtils {
public:
  // The full path of `path` seen from `baseFolder`; a web address is one already. With `keepAbsent` set an
  // empty path stays empty instead of becoming the folder.
  static std::u16string ExpandRelativePath(std::u16string_view path, std::u16string_view baseFolder,
                                           bool keepAbsent = false);
  static std::u16string GetAppPath();       // the running program's folder, with a trailing delimiter
  static std::u16string GetTemporaryPath(); // likewise
};

class TFileReader {
public:
  // The whole text of a file: byte-order mark, else the ANSI code page. Raises EKxException that names the
  // file.
  static std::u16string LoadFromFile(std::u16string_view fileName);
};

class TFileInfo {
public:
  // Makes an empty file with a new name in the folder (empty: the temporary one). Raises EKxException.
  static std::u16string GetTemporaryFileName(std::u16string_view folder, std::u16string_view prefix);
};

class TWindowsUtils {
public:
  static std::u16string MachineName();
};

// In double quotes; with `escape` quotes inside are doubled.
std::u16string DoubleQuoteString(std::u16string_view text, bool escape = false);
// Position from 1, 0 when there is none; the search begins at `from` (from 1).
std::size_t FastPos(std::u16string_view wanted, std::u16string_view text, std::size_t from = 1);
std::u16string FastReplace(std::u16string_view text, std::u16string_view old, std::u16string_view replacement,
                           bool caseSensitive = true);
std::u16string BooleanToString(bool value); // "True", "False"
// True, yes and numbers but 0; False, no and 0; letter case ignored. Nothing for other texts.
std::optional<bool> StringToBoolean(std::u16string_view text);

} // namespace kx
