#include "steam_stand_in/tickets.h"

#include <algorithm>
#include <cstring>

#include "steam_stand_in/files.h"

namespace launcher::stand_in {

std::uint32_t Tickets::Issue(void* ticket) {
  std::array<std::uint8_t, kSize> bytes;
  if (!FillRandom(bytes.data(), bytes.size())) return 0;
  issued_.push_back(bytes);
  if (issued_.size() > kMostCount) issued_.pop_front();
  std::memcpy(ticket, bytes.data(), bytes.size());
  return ++lastHandle_;
}

bool Tickets::IsIssued(const void* ticket, std::size_t size) const {
  return size == kSize && std::any_of(issued_.begin(), issued_.end(), [&](const auto& bytes) {
           return std::memcmp(bytes.data(), ticket, kSize) == 0;
         });
}

}  // namespace launcher::stand_in
