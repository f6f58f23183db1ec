# What every target of the project is compiled with. Third-party headers come in as system headers.
add_library(unifold_options INTERFACE)
target_include_directories(unifold_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(unifold_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)

if(UNIFOLD_SANITIZE)
    # The function check compares type information across shared libraries by address, which hidden visibility makes
    # differ for equal types: it would reject every call into a driver.
    target_compile_options(unifold_options INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(unifold_options INTERFACE -fsanitize=address,undefined)
    if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
        target_compile_options(unifold_options INTERFACE -fno-sanitize=function,vptr)
        target_link_options(unifold_options INTERFACE -fno-sanitize=function,vptr)
    endif()
endif()

if(UNIFOLD_SANITIZE_THREADS)
    target_compile_options(unifold_options INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
    target_link_options(unifold_options INTERFACE -fsanitize=thread)
endif()
