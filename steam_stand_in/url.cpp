#include "steam_stand_in/url.h"

#include <algorithm>

#include "steam_stand_in/ascii.h"

namespace launcher::stand_in {
namespace {

// A backslash is refused because HTTP clients disagree on whether it ends the host.
bool IsPlain(char c) { return c > ' ' && c < 0x7F && c != '\\'; }

// "127.0.0.1:80" without the port; an IPv6 address keeps its brackets.
std::string HostOf(std::string_view authority) {
  const std::size_t bracket = authority.find(']');
  const std::size_t colon = authority.find(':', bracket == std::string_view::npos ? 0 : bracket);
  return LowerCase(authority.substr(0, colon));
}

bool IsLoopbackHost(const std::string& host) {
  const bool isAddress = host.find_first_not_of("0123456789.") == std::string::npos;
  return host == "localhost" || host == "[::1]" || (isAddress && host.compare(0, 4, "127.") == 0);
}

}  // namespace

std::optional<Url> ParseUrl(std::string_view text) {
  text = text.substr(0, text.find('#'));
  if (!std::all_of(text.begin(), text.end(), IsPlain)) return std::nullopt;

  const std::size_t schemeLength = text.find("://");
  if (schemeLength == std::string_view::npos) return std::nullopt;
  const std::string scheme = LowerCase(text.substr(0, schemeLength));
  if (scheme != "http" && scheme != "https") return std::nullopt;

  std::string_view authority = text.substr(schemeLength + 3);
  authority = authority.substr(0, authority.find_first_of("/?"));
  const std::string host = HostOf(authority);
  if (host.empty() || authority.find('@') != std::string_view::npos) return std::nullopt;
  return Url{std::string(text), scheme == "https", IsLoopbackHost(host)};
}

bool MayLeadTo(const Url& from, const Url& to) { return to.isSecure || !from.isSecure; }

}  // namespace launcher::stand_in
