#include "doctor/image_file.h"

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "doctor/file_bytes.h"

namespace launcher::doctor {
namespace {

constexpr std::size_t kLargestFile = std::size_t{64} << 20;

// More than any linker makes. They bound the work that a hostile file can ask for.
constexpr std::uint32_t kMostSections = 96;
constexpr std::uint32_t kMostExports = 65536;
constexpr std::uint32_t kMostResources = 4096;
constexpr std::size_t kLongestName = 512;

struct Machine {
  std::uint32_t number;
  int bits;
  const char* name;
};
constexpr Machine kPeMachines[] = {{0x014C, 32, "32-bit x86"}, {0x8664, 64, "64-bit x86"},
                                   {0xAA64, 64, "64-bit ARM"}, {0x01C0, 32, "32-bit ARM"},
                                   {0x01C4, 32, "32-bit ARM"}, {0x0200, 64, "Itanium"}};

// The part of a file that is read lies outside of it.
struct Outside : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class ByteView {
 public:
  explicit ByteView(const std::string& bytes) : bytes_(bytes) {}

  std::uint32_t At(std::size_t offset, std::size_t width, const char* what) const {
    Require(offset, width, what);
    std::uint32_t value = 0;
    for (std::size_t i = width; i-- > 0;) {
      value = (value << 8) | static_cast<unsigned char>(bytes_[offset + i]);
    }
    return value;
  }

  std::uint32_t U16(std::size_t offset, const char* what) const { return At(offset, 2, what); }
  std::uint32_t U32(std::size_t offset, const char* what) const { return At(offset, 4, what); }

  // A text that ends in a zero byte.
  std::string Text(std::size_t offset, const char* what) const {
    std::string text;
    for (;; ++offset) {
      Require(offset, 1, what);
      if (bytes_[offset] == '\0') return text;
      if (text.size() == kLongestName) throw Outside(std::string(what) + " has no end");
      text += bytes_[offset];
    }
  }

  void Require(std::size_t offset, std::size_t size, const char* what) const {
    if (offset > bytes_.size() || size > bytes_.size() - offset) {
      throw Outside(std::string(what) + " lies behind the end of the file");
    }
  }

 private:
  const std::string& bytes_;
};

class PeReader {
 public:
  PeReader(const ByteView& bytes, Image& image) : bytes_(bytes), image_(image) {}

  void Read() {
    const std::size_t header = bytes_.U32(0x3C, "the header's offset");
    if (bytes_.U32(header, "the header") != 0x00004550) {
      throw Outside("it is a program for DOS");
    }
    image_.format = ImageFormat::pe;
    const std::uint32_t machine = bytes_.U16(header + 4, "the header");
    image_.machine = "machine " + std::to_string(machine);
    for (const Machine& known : kPeMachines) {
      if (known.number != machine) continue;
      image_.bits = known.bits;
      image_.machine = known.name;
    }
    const std::uint32_t sectionCount = bytes_.U16(header + 6, "the header");
    const std::uint32_t optionalSize = bytes_.U16(header + 20, "the header");
    image_.isLibrary = (bytes_.U16(header + 22, "the header") & 0x2000) != 0;
    const std::size_t optional = header + 24;
    const bool isLarge = bytes_.U16(optional, "the optional header") == 0x20B;
    directories_ = optional + (isLarge ? 112 : 96);
    directoryCount_ = bytes_.U32(directories_ - 4, "the optional header");

    if (sectionCount > kMostSections) throw Outside("it has too many sections");
    for (std::uint32_t i = 0; i < sectionCount; ++i) {
      const std::size_t at = optional + optionalSize + std::size_t{40} * i;
      sections_.push_back({bytes_.U32(at + 12, "the section table"),
                           bytes_.U32(at + 16, "the section table"),
                           bytes_.U32(at + 20, "the section table")});
      bytes_.Require(sections_.back().offset, sections_.back().size, "a section");
    }
    ReadExports();
    ReadVersion();
  }

 private:
  struct Section {
    std::uint32_t address;
    std::uint32_t size;
    std::uint32_t offset;
  };

  std::size_t Offset(std::uint32_t address, const char* what) const {
    for (const Section& section : sections_) {
      if (address >= section.address && address - section.address < section.size) {
        return std::size_t{section.offset} + (address - section.address);
      }
    }
    throw Outside(std::string(what) + " lies in no section");
  }

  std::uint32_t Directory(std::uint32_t number) const {
    return number < directoryCount_ ? bytes_.U32(directories_ + std::size_t{8} * number, "a table")
                                    : 0;
  }

  void ReadExports() {
    const std::uint32_t address = Directory(0);
    if (address == 0) return;
    constexpr const char* kWhat = "the export table";
    const std::size_t table = Offset(address, kWhat);
    image_.exportName = bytes_.Text(Offset(bytes_.U32(table + 12, kWhat), kWhat), kWhat);
    const std::uint32_t base = bytes_.U32(table + 16, kWhat);
    const std::uint32_t functionCount = bytes_.U32(table + 20, kWhat);
    const std::uint32_t nameCount = bytes_.U32(table + 24, kWhat);
    if (functionCount > kMostExports || nameCount > kMostExports) {
      throw Outside("it has too many exports");
    }
    if (nameCount == 0) return;
    const std::size_t functions = Offset(bytes_.U32(table + 28, kWhat), kWhat);
    const std::size_t names = Offset(bytes_.U32(table + 32, kWhat), kWhat);
    const std::size_t ordinals = Offset(bytes_.U32(table + 36, kWhat), kWhat);
    for (std::uint32_t i = 0; i < nameCount; ++i) {
      const std::uint32_t nameAddress = bytes_.U32(names + std::size_t{4} * i, kWhat);
      const std::uint32_t index = bytes_.U16(ordinals + std::size_t{2} * i, kWhat);
      if (index >= functionCount) throw Outside("an export has no place in the table");
      // A hole in the table is no export.
      if (bytes_.U32(functions + std::size_t{4} * index, kWhat) == 0) continue;
      image_.exports[bytes_.Text(Offset(nameAddress, kWhat), kWhat)] = base + index;
    }
  }

  // The offset that stands in the first entry, or the one with the number `id`, of a resource
  // folder; 0 for none.
  std::uint32_t ResourceEntry(std::size_t folder, std::uint32_t id) const {
    constexpr const char* kWhat = "the resources";
    const std::uint32_t count = bytes_.U16(folder + 12, kWhat) + bytes_.U16(folder + 14, kWhat);
    if (count > kMostResources) throw Outside("it has too many resources");
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::size_t entry = folder + 16 + std::size_t{8} * i;
      if (id == 0 || bytes_.U32(entry, kWhat) == id) return bytes_.U32(entry + 4, kWhat);
    }
    return 0;
  }

  void ReadVersion() {
    const std::uint32_t address = Directory(2);
    if (address == 0) return;
    constexpr const char* kWhat = "the version";
    constexpr std::uint32_t kVersionType = 16;
    constexpr std::uint32_t kIsFolder = 0x80000000;
    const std::size_t root = Offset(address, kWhat);
    // Type, name, language.
    std::uint32_t entry = ResourceEntry(root, kVersionType);
    for (int level = 0; level < 2 && (entry & kIsFolder) != 0; ++level) {
      entry = ResourceEntry(root + (entry & ~kIsFolder), 0);
    }
    if (entry == 0 || (entry & kIsFolder) != 0) return;
    const std::size_t block = Offset(bytes_.U32(root + entry, kWhat), kWhat);
    // Lengths and type, the name VS_VERSION_INFO in 16 characters of two bytes, up to a multiple of
    // four; then the fixed part, which begins with a sign of its own.
    constexpr std::size_t kFixedPart = 40;
    if (bytes_.U32(block + kFixedPart, kWhat) != 0xFEEF04BD) return;
    for (const unsigned half : {10U, 8U, 14U, 12U}) {
      image_.version += (image_.version.empty() ? "" : ".") +
                        std::to_string(bytes_.U16(block + kFixedPart + half, kWhat));
    }
    // Three numbers are told, as in the header, and a fourth only where it says something.
    const std::size_t length = image_.version.size();
    if (image_.version.compare(length - 2, 2, ".0") == 0) image_.version.erase(length - 2);
  }

  const ByteView& bytes_;
  Image& image_;
  std::size_t directories_ = 0;
  std::uint32_t directoryCount_ = 0;
  std::vector<Section> sections_;
};

void ReadElf(const ByteView& bytes, Image& image) {
  image.format = ImageFormat::elf;
  constexpr std::uint32_t kLargeClass = 2;
  constexpr std::uint32_t kSharedType = 3;
  image.bits = bytes.At(4, 1, "the class") == kLargeClass ? 64 : 32;
  image.machine = std::to_string(image.bits) + "-bit Linux";
  image.isLibrary = bytes.U16(16, "the header") == kSharedType;
  bytes.Require(0, image.bits == 64 ? 64 : 52, "the header");
}

}  // namespace

Image ReadImage(const std::filesystem::path& path) {
  const std::string content = ReadBytes(path, kLargestFile);
  const ByteView bytes(content);
  Image image;
  try {
    if (content.empty()) throw Outside("it is empty");
    if (content.compare(0, 2, "MZ") == 0) {
      PeReader(bytes, image).Read();
    } else if (content.compare(0, 4, "\177ELF") == 0) {
      ReadElf(bytes, image);
    } else {
      image.fault = "it is no library at all";
    }
  } catch (const Outside& error) {
    image.fault = error.what();
  }
  return image;
}

}  // namespace launcher::doctor
