# unifold_add_driver(<target> KIND <folder> LIBRARY <name> SOURCES <file>...)
#
# A driver library: a module that is only ever loaded at run time, built as build/drivers/<folder>/lib<name>.so. The
# target `drivers` builds all but those for tests, whose folders are named test-*.
function(unifold_add_driver target)
    cmake_parse_arguments(ARG "" "KIND;LIBRARY" "SOURCES" ${ARGN})
    add_library(${target} MODULE ${ARG_SOURCES})
    target_link_libraries(${target} PRIVATE unifold_options)
    # A GNU-unique symbol would pin the library in memory past dlclose.
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        target_compile_options(${target} PRIVATE -fno-gnu-unique)
    endif()
    set_target_properties(${target} PROPERTIES
        OUTPUT_NAME ${ARG_LIBRARY}
        PREFIX lib
        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/drivers/${ARG_KIND})
    if(NOT ARG_KIND MATCHES "^test-")
        add_dependencies(drivers ${target})
        # Outside the dynamic loader's default folders: a reader maker's library of the same name must win.
        install(TARGETS ${target} LIBRARY DESTINATION ${UNIFOLD_LIBDIR}/drivers/${ARG_KIND})
    endif()
    # Under the sanitizers the run-time symbols come from the executable that loads the driver.
    if(NOT UNIFOLD_SANITIZE AND NOT UNIFOLD_SANITIZE_THREADS)
        target_link_options(${target} PRIVATE -Wl,--no-undefined)
    endif()
endfunction()
