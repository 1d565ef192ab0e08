# What every target is built with.

option(BREVIK_TESTS "Build the tests" ON)
option(BREVIK_BENCHMARKS "Build the benchmarks (they need spdlog, libcurl and Google Benchmark)" OFF)
option(BREVIK_FUZZ "Build the fuzz targets (clang only)" OFF)
set(BREVIK_SANITIZE "" CACHE STRING "Sanitizers to build with, such as address,undefined")

set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_compile_options(-Wall -Wextra -Wconversion -Werror)
if(BREVIK_SANITIZE)
    add_compile_options(-fsanitize=${BREVIK_SANITIZE} -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${BREVIK_SANITIZE})
endif()

find_program(CCACHE ccache)
if(CCACHE)
    set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()
