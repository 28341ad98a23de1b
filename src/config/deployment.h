// The deployment's host names: the defaults of a new config.json, and the certificate names that
// QX_CheckCert trusts. A deployment changes them here and nowhere else.

#ifndef LAUNCHER_CONFIG_DEPLOYMENT_H_
#define LAUNCHER_CONFIG_DEPLOYMENT_H_

namespace launcher {

inline constexpr char kDefaultApiServer[] = "https://api.orvane.example/api";
inline constexpr char kDefaultPurchaseServer[] = "http://purchase.orvane.example/";
inline constexpr char kDefaultTelemetryServer[] = "https://telemetry.orvane.example/api";
// A format text: the caller fills in the locale and the three numbers, the library does not.
inline constexpr char kDefaultDownloadUrl[] =
    "https://download.orvane.example/cmsresource/Quexara"
    "?locale=%s&itempath=DownloadList_PC%02d%02d_%02d";
inline constexpr char kDefaultQaApiHost[] = "qa-api.orvane.example";
inline constexpr char kDefaultCiApiHost[] = "ci-api.orvane.example";
inline constexpr char kDefaultGameDomain[] = ".orvane.example";

// The names in the certificates of the game's service domain and of the CI game API. They are
// compared as texts: only a caller that passes the "*" itself matches the first.
inline constexpr char kServiceCertificateName[] = "*.orvane.example";
inline constexpr char kCiApiCertificateName[] = "ci-game-api.orvane.example";

}  // namespace launcher

#endif  // LAUNCHER_CONFIG_DEPLOYMENT_H_
