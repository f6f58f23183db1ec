# unifold_add_test(<name> SOURCES <file>... [LIBRARIES <target>...] [DRIVERS <target>...])
#
# A Qt Test program and its CTest entry. Each runs in a world of its own: HOME is an empty folder of the test's (the ID
# card page deletes a folder in HOME), and the library path holds nothing but the test's driver folder, into which
# every target of DRIVERS is linked as it is named there. The path has to be set from outside, since the dynamic loader
# reads it only when the process starts.
function(unifold_add_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES;DRIVERS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES
        AUTOMOC ON
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    target_link_libraries(${name} PRIVATE unifold_options Qt5::Test ${ARG_LIBRARIES})

    set(world ${CMAKE_BINARY_DIR}/tests/${name}.world)
    file(MAKE_DIRECTORY ${world}/home ${world}/drivers)
    if(ARG_DRIVERS)
        add_dependencies(${name} ${ARG_DRIVERS})
    endif()
    foreach(driver IN LISTS ARG_DRIVERS)
        add_custom_command(TARGET ${name} POST_BUILD VERBATIM
            COMMAND ${CMAKE_COMMAND} -E create_symlink
                $<TARGET_FILE:${driver}> ${world}/drivers/$<TARGET_FILE_NAME:${driver}>)
    endforeach()

    add_test(NAME ${name} COMMAND ${name} WORKING_DIRECTORY ${world})
    set_tests_properties(${name} PROPERTIES
        TIMEOUT 300
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;HOME=${world}/home;XDG_DATA_HOME=${world}/home/data;XDG_RUNTIME_DIR=${world}/home;LD_LIBRARY_PATH=${world}/drivers;LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0;UBSAN_OPTIONS=print_stacktrace=1;TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/tsan.supp")
endfunction()
