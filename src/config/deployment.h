// The deployment's host names: what a new config.json says, and whose certificates are trusted. A
// deployment changes them here and nowhere else.

#ifndef LAUNCHER_CONFIG_DEPLOYMENT_H_
#define LAUNCHER_CONFIG_DEPLOYMENT_H_

namespace launcher {

inline constexpr char kDefaultApiServer[] = "https://api.orvane.example/api";
inline constexpr char kDefaultPurchaseServer[] = "http://purchase.orvane.example/";
inline constexpr char kDefaultTelemetryServer[] = "https://telemetry.orvane.example/api";
// The caller fills in the locale and the three numbers.
inline constexpr char kDefaultDownloadUrl[] =
    "https://download.orvane.example/cmsresource/Quexara"
    "?locale=%s&itempath=DownloadList_PC%02d%02d_%02d";
inline constexpr char kDefaultQaApiHost[] = "qa-api.orvane.example";
inline constexpr char kDefaultCiApiHost[] = "ci-api.orvane.example";
inline constexpr char kDefaultGameDomain[] = ".orvane.example";

// The names in the certificates of the game's service domain and of the CI game API.
inline constexpr char kServiceCertificateName[] = "*.orvane.example";
inline constexpr char kCiApiCertificateName[] = "ci-game-api.orvane.example";

}  // namespace launcher

#endif  // LAUNCHER_CONFIG_DEPLOYMENT_H_
