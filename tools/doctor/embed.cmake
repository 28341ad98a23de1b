# Makes OUTPUT, a source file that defines CONSTANT as the content of INPUT, or, with the
# KIND "DIGEST", as the 32 bytes of its SHA-256:
#
#   cmake -D INPUT=... -D KIND=... -D CONSTANT=... -D OUTPUT=... -P embed.cmake

if(KIND STREQUAL "DIGEST")
  file(SHA256 "${INPUT}" digits)
else()
  file(READ "${INPUT}" digits HEX)
endif()
string(REGEX REPLACE "(..)" "0x\\1," bytes "${digits}")
string(REGEX REPLACE "((0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,))" "\\1\n" bytes
  "${bytes}")
file(WRITE "${OUTPUT}" "#include \"doctor/built_in.h\"

namespace launcher::doctor {

const std::string_view ${CONSTANT} = [] {
  static constexpr unsigned char kBytes[] = {
${bytes}
  };
  return std::string_view(reinterpret_cast<const char*>(kBytes), sizeof kBytes);
}();

}  // namespace launcher::doctor
")
