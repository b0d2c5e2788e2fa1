// The files of a web project, which a solution names by its "http://" or "https://" address only.
//
// Addresses are split into host, port, folders and document; percent escapes are decoded once. Failures raise
// EKxException, also for an address without a server, or one whose folders hold "..".
#pragma once

#include "package/web/WebDav.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kx {

// Where the web server publishes the addressed file: a path of this machine, or of an administrative share
// ("\\S\C$\...") when the address names another.
std::u16string GetPhysicalDirFromIISDir(std::u16string_view url, std::int32_t webSiteNum);

// "\\host\share\folders\document"; separators inside the folders stay "/".
std::u16string BuildShareName(std::u16string_view url, std::u16string_view sharePath);

// The transfers. `client` is the caller's: made with user, password and stop event set, and disconnected by
// it; absent, it fails an assertion. The two downloads give a file of the document's name in the client's own
// temporary folder, for the caller to remove. A name that would lead out of that folder is refused.

// Connects, downloads the project file and leaves its folder on the server, without outer slashes, in
// `projectPath`.
std::u16string GetProjectFileUsingWebDAV(TKxWebDavClient* client, std::u16string_view url,
                                         std::u16string& projectPath);
// Another file, by its folder on the server ("\" counts as "/").
std::u16string GetFileUsingWebDAV(TKxWebDavClient* client, std::u16string_view remotePath,
                                  std::u16string_view fileName);
// Into that folder, under the file's own name.
void PutFileUsingWebDAV(TKxWebDavClient* client, std::u16string_view localFile,
                        std::u16string_view remotePath);

} // namespace kx
