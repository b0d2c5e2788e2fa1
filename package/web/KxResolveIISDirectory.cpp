#include "package/web/KxResolveIISDirectory.h"

#include "contract/FileUpdates.h"
#include "contract/Services.h"
#include "contract/Utilities.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "package/web/WebAddress.h"

#include <algorithm>

namespace kx {

namespace {

constexpr std::u16string_view NoObject = u"Unable to resolve to physical path - no object found";

platform::DirectoryObject RequireObject(std::u16string_view path) {
  IKxDirectoryService* const offered = CurrentServices().Directory;
  auto object = offered != nullptr ? offered->FindObject(path) : platform::ReadDirectoryObject(path);
  if (!object) throw EKxException(std::u16string(NoObject));
  return *std::move(object);
}

// The line is part of a message that must not change with the source.
void Assert(const TKxWebDavClient* client, int line) {
  if (client == nullptr)
    throw EKxException(u"Assertion failure (KxResolveIISDirectory, line " + text::FromInteger(line) + u")");
}

std::u16string OnServer(std::u16string_view remotePath) {
  std::u16string folder = u"/" + std::u16string(remotePath) + u"/";
  std::ranges::replace(folder, u'\\', u'/');
  return folder;
}

std::u16string ServerLines(const TKxWebDavClient& client) {
  return u"\rServername: " + client.ServerName + u"\rServerport: " + text::FromInteger(client.ServerPort) +
         u"\rUserID: " + client.UserName;
}

} // namespace

std::u16string GetPhysicalDirFromIISDir(std::u16string_view url, std::int32_t webSiteNum) {
  const TWebAddress address = ParseWebAddress(url);
  const std::u16string root =
      u"IIS://" + address.Host + u"/w3svc/" + text::FromInteger(webSiteNum) + u"/ROOT";
  std::u16string folders = address.Path;
  platform::DirectoryObject object =
      RequireObject(folders.empty() ? AddTrailingSlash(root) : RemoveTrailingSlash(root + folders));
  std::u16string below;
  while (object.Class != u"IIsWebVirtualDir" && !folders.empty()) {
    below.insert(0, SplitLastSegment(folders)); // joined without a separator, as it always was
    object = RequireObject(root + folders);
  }
  if (object.Class != u"IIsWebVirtualDir")
    throw EKxException(u"Unable to resolve to physical path - found " + object.Class +
                       u"\rOriginal IIS uri: " + std::u16string(url));
  std::u16string file = object.Path + below + u"\\" + address.Document;
  if (address.Host == TWindowsUtils::MachineName() || text::EqualsIgnoreCase(address.Host, u"LOCALHOST"))
    return file;
  if (const auto colon = file.find(u':'); colon != std::u16string::npos) file[colon] = u'$';
  return u"\\\\" + address.Host + u"\\" + file;
}

std::u16string BuildShareName(std::u16string_view url, std::u16string_view sharePath) {
  const TWebAddress address = ParseWebAddress(url);
  return u"\\\\" + address.Host + u"\\" + std::u16string(sharePath) + u"\\" + TrimSlashes(address.Path) +
         u"\\" + address.Document;
}

std::u16string GetProjectFileUsingWebDAV(TKxWebDavClient* client, std::u16string_view url,
                                         std::u16string& projectPath) {
  Assert(client, 133);
  const TWebAddress address = ParseWebAddress(url);
  projectPath = TrimSlashes(address.Path);
  client->ServerName = address.Host;
  client->IsSecure = address.IsSecure;
  client->ServerPort = text::ToIntegerOr(address.Port, address.IsSecure ? 443 : 80);
  if (!client->Connect()) throw EKxException(u"Unable to connect using WebDAV : " + client->LastErrorText());
  return GetFileUsingWebDAV(client, projectPath, address.Document);
}

std::u16string GetFileUsingWebDAV(TKxWebDavClient* client, std::u16string_view remotePath,
                                  std::u16string_view fileName) {
  Assert(client, 93);
  if (!IsPlainFileName(fileName))
    throw EKxException(u"\"" + std::u16string(fileName) +
                       u"\" is not a file name that the temporary folder can hold; nothing was downloaded.");
  std::u16string local = text::JoinPath(client->DownloadFolder(), fileName);
  const std::u16string remote = OnServer(remotePath) + std::u16string(fileName);
  if (!client->DownloadFile(remote, local))
    throw EKxException(u"Error retrieving file with WebDAV: " + client->LastErrorText() +
                       u"\rDownload filename: " + local + ServerLines(*client) + u"\rRequested file: " +
                       remote);
  FileUpdates().Forget(local);
  return local;
}

void PutFileUsingWebDAV(TKxWebDavClient* client, std::u16string_view localFile,
                        std::u16string_view remotePath) {
  Assert(client, 113);
  const std::u16string remote = OnServer(remotePath);
  if (!client->UploadFile(localFile, remote))
    throw EKxException(u"Error uploading file with WebDAV: " + client->LastErrorText() +
                       u"\rLocal filename: " + std::u16string(localFile) + ServerLines(*client) +
                       u"\rRemote Path: " + remote);
}

} // namespace kx
