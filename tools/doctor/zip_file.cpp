#include "doctor/zip_file.h"

#include <zlib.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace launcher::doctor {
namespace {

constexpr std::uint32_t kLocalSign = 0x04034B50;
constexpr std::uint32_t kCentralSign = 0x02014B50;
constexpr std::uint32_t kEndSign = 0x06054B50;
constexpr std::uint32_t kVersion = 20;
constexpr std::uint32_t kNamesAreUtf8 = 0x0800;
constexpr std::uint32_t kDeflated = 8;
// The first of January 1980: the report tells its own time.
constexpr std::uint32_t kDate = 0x0021;

void Put(std::string& out, std::uint32_t value, int size) {
  for (int i = 0; i < size; ++i) out += static_cast<char>((value >> (8 * i)) & 0xFF);
}

std::uint32_t Size32(std::size_t size) {
  if (size > UINT32_MAX) throw std::length_error("too much for a ZIP file");
  return static_cast<std::uint32_t>(size);
}

// Without zlib's own header.
std::string Deflated(const std::string& bytes) {
  z_stream stream = {};
  constexpr int kLargestLevel = 9;
  if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, -MAX_WBITS, kLargestLevel,
                   Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::runtime_error("no memory for a ZIP file");
  }
  std::string out(deflateBound(&stream, static_cast<uLong>(bytes.size())), '\0');
  stream.next_in = reinterpret_cast<const Bytef*>(bytes.data());
  stream.avail_in = Size32(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = Size32(out.size());
  const int result = deflate(&stream, Z_FINISH);
  out.resize(stream.total_out);
  deflateEnd(&stream);
  if (result != Z_STREAM_END) throw std::runtime_error("zlib fails");
  return out;
}

}  // namespace

std::string MakeZip(const std::vector<std::pair<std::string, std::string>>& files) {
  std::string out;
  std::string central;
  for (const auto& [name, content] : files) {
    const std::string packed = Deflated(content);
    std::string common;
    Put(common, kVersion, 2);
    Put(common, kNamesAreUtf8, 2);
    Put(common, kDeflated, 2);
    Put(common, 0, 2);
    Put(common, kDate, 2);
    Put(common,
        static_cast<std::uint32_t>(
            crc32(0, reinterpret_cast<const Bytef*>(content.data()), Size32(content.size()))),
        4);
    Put(common, Size32(packed.size()), 4);
    Put(common, Size32(content.size()), 4);
    Put(common, Size32(name.size()), 2);
    Put(common, 0, 2);

    Put(central, kCentralSign, 4);
    Put(central, kVersion, 2);
    central += common;
    // No comment, the first disk, no attributes.
    central += std::string(10, '\0');
    Put(central, Size32(out.size()), 4);
    central += name;

    Put(out, kLocalSign, 4);
    out += common + name + packed;
  }
  const std::uint32_t start = Size32(out.size());
  out += central;
  Put(out, kEndSign, 4);
  Put(out, 0, 4);
  Put(out, Size32(files.size()), 2);
  Put(out, Size32(files.size()), 2);
  Put(out, Size32(central.size()), 4);
  Put(out, start, 4);
  Put(out, 0, 2);
  return out;
}

}  // namespace launcher::doctor
