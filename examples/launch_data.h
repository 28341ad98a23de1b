// What the launcher and its client agree on. The library passes a block of bytes from the launcher
// to the client; they choose its content.

#ifndef EXAMPLES_LAUNCH_DATA_H_
#define EXAMPLES_LAUNCH_DATA_H_

#include <cstdint>

// The start of the block: the container's size in bytes. The container follows directly. The launch
// line has the block's address but not its size, so the block begins with it.
struct BlockHeader {
  std::uint32_t containerSize;
};

// The most that the client will read.
constexpr std::uint32_t kMaxContainerSize = 0xFFFFF;

// The files that the client writes to the current directory: the data, and a log.
constexpr char kReceivedPath[] = "received.bin";
constexpr char kClientLogPath[] = "client.log";

#endif  // EXAMPLES_LAUNCH_DATA_H_
