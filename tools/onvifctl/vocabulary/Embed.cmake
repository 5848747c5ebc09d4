# cmake -DOUTPUT=FILE -DTEXTS="FUNCTION=FILE;..." -P Embed.cmake: a source file with a function for each text, so
# that the program and its readers have one source. Single characters: compilers limit literals.
set(source "#include \"vocabulary/Embedded.h\"\n\nnamespace onvifctl {\n")
foreach(text IN LISTS TEXTS)
  string(REGEX MATCH "^([^=]*)=(.*)$" parts "${text}")
  file(READ "${CMAKE_MATCH_2}" bytes HEX)
  set(function ${CMAKE_MATCH_1})
  string(REGEX REPLACE "(................................)" "\\1\n    " bytes "${bytes}")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
  string(APPEND source "
std::string_view ${function}() {
    static constexpr char kText[] = {
    ${bytes}};
    return {kText, sizeof kText};
}
")
endforeach()
file(WRITE "${OUTPUT}" "${source}\n}  // namespace onvifctl\n")
