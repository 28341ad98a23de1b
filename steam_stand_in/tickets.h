// Auth tickets: random bytes, which the stand-in keeps and can verify.

#ifndef LAUNCHER_STEAM_STAND_IN_TICKETS_H_
#define LAUNCHER_STEAM_STAND_IN_TICKETS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>

namespace launcher::stand_in {

class Tickets {
 public:
  static constexpr std::size_t kSize = 234;
  // Only the newest are kept, so that a caller that asks again and again does not fill the memory.
  static constexpr std::size_t kMostCount = 1024;

  // Writes a new ticket to the kSize bytes at `ticket`. Returns its handle, or 0 if the system
  // gives no random bytes.
  std::uint32_t Issue(void* ticket);
  bool IsIssued(const void* ticket, std::size_t size) const;

 private:
  std::deque<std::array<std::uint8_t, kSize>> issued_;
  std::uint32_t lastHandle_ = 0;
};

}  // namespace launcher::stand_in

#endif  // LAUNCHER_STEAM_STAND_IN_TICKETS_H_
