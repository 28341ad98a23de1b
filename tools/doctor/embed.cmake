# Makes OUTPUT, a source file that defines CONSTANT as the content of INPUT, an ASCII text:
#
#   cmake -D INPUT=... -D CONSTANT=... -D OUTPUT=... -P embed.cmake

file(READ "${INPUT}" digits HEX)
string(REGEX REPLACE "(..)" "0x\\1," bytes "${digits}")
string(REGEX REPLACE "((0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,))" "\\1\n" bytes
  "${bytes}")
file(WRITE "${OUTPUT}" "#include \"doctor/embedded_files.h\"

namespace launcher::doctor {

const std::string_view ${CONSTANT} = [] {
  static constexpr char kBytes[] = {
${bytes}
  };
  return std::string_view(kBytes, sizeof kBytes);
}();

}  // namespace launcher::doctor
")
