# Makes OUTPUT, a source file that defines CONSTANT as the content of INPUT, an ASCII text, or with
# the KIND "DIGEST" as the SHA-256 of INPUT:
#
#   cmake -D INPUT=... -D KIND=... -D CONSTANT=... -D OUTPUT=... -P embed.cmake

if(KIND STREQUAL "DIGEST")
  file(SHA256 "${INPUT}" digest)
  string(HEX "${digest}" digits)
else()
  file(READ "${INPUT}" digits HEX)
endif()
string(REGEX REPLACE "(..)" "0x\\1," bytes "${digits}")
string(REGEX REPLACE "((0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,))" "\\1\n" bytes
  "${bytes}")
file(WRITE "${OUTPUT}" "#include \"doctor/built_in.h\"

namespace launcher::doctor {

const std::string_view ${CONSTANT} = [] {
  static constexpr char kBytes[] = {
${bytes}
  };
  return std::string_view(kBytes, sizeof kBytes);
}();

}  // namespace launcher::doctor
")
