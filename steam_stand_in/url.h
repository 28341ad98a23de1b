// Checks a URL before the system's HTTP client gets it.

#ifndef LAUNCHER_STEAM_STAND_IN_URL_H_
#define LAUNCHER_STEAM_STAND_IN_URL_H_

#include <optional>
#include <string>
#include <string_view>

namespace launcher::stand_in {

struct Url {
  std::string text;  // without the fragment, which is not sent
  bool isSecure;
  bool isLoopback;  // the server is this machine
};

// Returns none unless `text` is an http or https URL with a host and without a user name, in
// printable ASCII: other characters must be written as %XX.
std::optional<Url> ParseUrl(std::string_view text);

// True if a response of `from` may redirect to `to`: https never leads to http.
bool MayLeadTo(const Url& from, const Url& to);

}  // namespace launcher::stand_in

#endif  // LAUNCHER_STEAM_STAND_IN_URL_H_
