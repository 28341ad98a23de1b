// The little that must be known of a URL before it goes to the system's HTTP client.

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

// None for what is no plain http or https URL: it has a host and no user name, and other characters
// than printable ASCII stand in it in their %XX form.
std::optional<Url> ParseUrl(std::string_view text);

// Whether an answer of `from` may lead on to `to`: what was asked for in secret stays secret.
bool MayLeadTo(const Url& from, const Url& to);

}  // namespace launcher::stand_in

#endif  // LAUNCHER_STEAM_STAND_IN_URL_H_
