# unifold_embed_files(<target> FUNCTION <name> FILES <file>...)
#
# Compiles text files into the target, as the table that drivers::tray::<name>() returns (see
# drivers/virtual/tray/embedded_files.h). Run as a script it writes that table's source.
function(unifold_embed_files target)
    cmake_parse_arguments(ARG "" "FUNCTION" "FILES" ${ARGN})
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${ARG_FUNCTION}.cpp)
    set(script ${PROJECT_SOURCE_DIR}/cmake/embed_files.cmake)
    add_custom_command(OUTPUT ${source} VERBATIM
        COMMAND ${CMAKE_COMMAND} -DOUTPUT=${source} -DFUNCTION=${ARG_FUNCTION} "-DFILES=${ARG_FILES}" -P ${script}
        DEPENDS ${ARG_FILES} ${script})
    target_sources(${target} PRIVATE ${source})
endfunction()

if(NOT CMAKE_SCRIPT_MODE_FILE)
    return()
endif()

set(text "#include \"drivers/virtual/tray/embedded_files.h\"\n\nnamespace drivers::tray {\n\n")
string(APPEND text "const std::vector<EmbeddedFile> &${FUNCTION}()\n{\n")
string(APPEND text "    static const std::vector<EmbeddedFile> files = {\n")
foreach(file IN LISTS FILES)
    get_filename_component(name ${file} NAME)
    # As bytes, since a compiler need not take string literals longer than 65536 characters.
    file(READ ${file} bytes HEX)
    string(LENGTH "${bytes}" digits)
    math(EXPR size "${digits} / 2")
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
    string(MAKE_C_IDENTIFIER ${name} identifier)
    string(PREPEND text "static const char ${identifier}[] = {${bytes}};\n")
    string(APPEND text "        {\"${name}\", {${identifier}, ${size}}},\n")
endforeach()
string(APPEND text "    };\n    return files;\n}\n\n} // namespace drivers::tray\n")
file(WRITE ${OUTPUT} "${text}")
