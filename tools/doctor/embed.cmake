# Makes OUTPUT, a source file with the bytes of INPUT:
#
#   cmake -D INPUT=... -D OUTPUT=... -P embed.cmake

file(READ "${INPUT}" digits HEX)
string(REGEX REPLACE "(..)" "0x\\1," bytes "${digits}")
string(REGEX REPLACE "((0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,)(0x..,))" "\\1\n" bytes
  "${bytes}")
file(WRITE "${OUTPUT}" "#include \"doctor/embedded_exports.h\"

namespace launcher::doctor {

const unsigned char kEmbeddedExports[] = {
${bytes}
};
const std::size_t kEmbeddedExportsSize = sizeof kEmbeddedExports;

}  // namespace launcher::doctor
")
