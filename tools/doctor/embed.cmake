# Makes OUTPUT, a source file that defines CONSTANT as the content of INPUT, an ASCII text:
#
#   cmake -D INPUT=... -D CONSTANT=... -D OUTPUT=... -P embed.cmake

file(READ "${INPUT}" digits HEX)
string(REGEX REPLACE "(..)" "0x\\1," bytes "${digits}")
string(REGEX REPLACE "((0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,))" "\\1\n" bytes
  "${bytes}")
file(WRITE "${OUTPUT}" "#include \"doctor/embedded_files.h\"

namespace launcher::doctor {
namespace {

constexpr char kBytes[] = {
${bytes}
};

}  // namespace

const std::string_view ${CONSTANT}(kBytes, sizeof kBytes);

}  // namespace launcher::doctor
")
