# SPDX-License-Identifier: MIT
# One place for how every target of the project is compiled.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

add_library(sordin_options INTERFACE)
target_compile_options(sordin_options INTERFACE
    -Wall -Wextra -Wpedantic $<$<BOOL:${SORDIN_WARNINGS_AS_ERRORS}>:-Werror>
    -Wshadow -Wconversion -Wsign-conversion -Wdouble-promotion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wformat=2 -Wundef -Wimplicit-fallthrough
    # Fused multiply-adds would make results differ between machines.
    -ffp-contract=off)
target_include_directories(sordin_options INTERFACE "${PROJECT_SOURCE_DIR}/src")

if(SORDIN_SANITIZE)
    add_compile_options(-fsanitize=${SORDIN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${SORDIN_SANITIZE})
endif()
if(SORDIN_BUILD_FUZZERS)
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        message(FATAL_ERROR "The fuzz targets need clang.")
    endif()
    # Everything is instrumented, so that the fuzzer sees the library's branches; only its own targets link its main.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# sordin_library(NAME SOURCES...): a static library with the project's options.
function(sordin_library name)
    add_library(${name} STATIC ${ARGN})
    target_link_libraries(${name} PRIVATE sordin_options)
    target_include_directories(${name} INTERFACE "${PROJECT_SOURCE_DIR}/src")
endfunction()

# sordin_strict(SOURCES...): compiles these with the project's warnings, in a target whose other sources Qt generates.
function(sordin_strict)
    get_target_property(options sordin_options INTERFACE_COMPILE_OPTIONS)
    set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS "${options}")
endfunction()
