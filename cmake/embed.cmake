# Writes a C++ source with the page's files in it: cmake -DOUTPUT=FILE.cc -DFOLDER=DIR -P embed.cmake
file(GLOB names RELATIVE ${FOLDER} ${FOLDER}/*)
set(arrays "")
set(rows "")
set(number 0)
foreach(name IN LISTS names)
  file(READ ${FOLDER}/${name} bytes HEX)
  string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
  string(APPEND arrays "constexpr char kFile${number}[] = {${bytes}'\\0'};\n")
  string(APPEND rows "      {\"${name}\", {kFile${number}, sizeof kFile${number} - 1}},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE ${OUTPUT} "#include \"apps/studio/page.h\"

namespace zol::studio {
namespace {

${arrays}
} // namespace

const std::map<std::string_view, std::string_view> &compiledPage() {
  static const std::map<std::string_view, std::string_view> page = {
${rows}  };
  return page;
}

} // namespace zol::studio
")
