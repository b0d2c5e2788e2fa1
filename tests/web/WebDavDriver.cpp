// kx_webdav_driver ADDRESS USER PASSWORD [UPLOADFOLDER]: what a stamping does with a web project's file.
#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "package/web/KxResolveIISDirectory.h"

#include <iostream>

int main(int argc, char** argv) {
  using namespace kx;
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  const auto client = TKxWebDavClient::Create();
  client->UserName = text::FromUtf8(arguments.at(1));
  client->Password = text::FromUtf8(arguments.at(2));
  client->StallTimeout = std::chrono::seconds(1);
  client->MaximumSize = 1 << 20;
  try {
    std::u16string folder;
    const std::u16string local =
        GetProjectFileUsingWebDAV(client.get(), text::FromUtf8(arguments.at(0)), folder);
    if (!platform::SaveFile(local, *platform::ReadFile(local) + "stamped\n")) return 2;
    PutFileUsingWebDAV(client.get(), local, arguments.size() > 3 ? text::FromUtf8(arguments[3]) : folder);
    if (!platform::RemoveFile(local)) return 2;
  } catch (const EKxException& error) {
    std::cout << text::ToUtf8(text::ReplaceAll(error.Message(), u"\r", u"\n")) << "\n";
    return 1;
  }
}
