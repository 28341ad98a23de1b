// What there is between SteamAPI_Init and SteamAPI_Shutdown.

#ifndef LAUNCHER_PLATFORM_STEAM_STAND_IN_SESSION_H_
#define LAUNCHER_PLATFORM_STEAM_STAND_IN_SESSION_H_

#include <string>

#include "platform/steam/cloud_folders.h"
#include "platform/steam/files.h"
#include "platform/steam/http_requests.h"
#include "platform/steam/settings.h"
#include "platform/steam/tickets.h"

namespace launcher::stand_in {

struct Session {
  // `folder` is the stand-in's own.
  Session(const Path& folder, Settings theSettings)
      : settings(std::move(theSettings)),
        accountFolder(folder / std::to_string(settings.accountId)),
        cloud(accountFolder, settings),
        http({settings.httpConnectLimitMs, settings.httpRequestLimitMs,
              static_cast<std::size_t>(settings.httpBodyLimitBytes)}) {}

  const Settings settings;
  const Path accountFolder;
  Tickets tickets;
  CloudFolders cloud;
  HttpRequests http;
};

}  // namespace launcher::stand_in

#endif  // LAUNCHER_PLATFORM_STEAM_STAND_IN_SESSION_H_
