// The state between SteamAPI_Init and SteamAPI_Shutdown.

#ifndef LAUNCHER_STEAM_STAND_IN_STAND_IN_SESSION_H_
#define LAUNCHER_STEAM_STAND_IN_STAND_IN_SESSION_H_

#include <string>

#include "steam_stand_in/cloud_folders.h"
#include "steam_stand_in/files.h"
#include "steam_stand_in/http_requests.h"
#include "steam_stand_in/steam_settings.h"
#include "steam_stand_in/tickets.h"

namespace launcher::stand_in {

struct Session {
  // `folder` is StandInFolder().
  Session(const Path& folder, SteamSettings theSettings)
      : settings(std::move(theSettings)),
        accountFolder(folder / std::to_string(settings.accountId)),
        cloud(accountFolder, settings),
        http({settings.httpConnectLimitMs, settings.httpRequestLimitMs,
              static_cast<std::size_t>(settings.httpBodyLimitBytes)}) {}

  const SteamSettings settings;
  const Path accountFolder;
  Tickets tickets;
  CloudFolders cloud;
  HttpRequests http;
};

}  // namespace launcher::stand_in

#endif  // LAUNCHER_STEAM_STAND_IN_STAND_IN_SESSION_H_
