# What is built: the core needs the standard library alone; everything else is on when its package is found.

find_package(Threads REQUIRED)
find_package(hwy CONFIG QUIET)
if(NOT hwy_FOUND)
    find_path(HWY_INCLUDE hwy/highway.h)
    find_library(HWY_LIBRARY hwy)
    if(HWY_INCLUDE AND HWY_LIBRARY)
        set(hwy_FOUND TRUE)
    endif()
endif()
find_path(STB_INCLUDE stb/stb_image.h)
find_package(assimp CONFIG QUIET)
find_package(CLI11 CONFIG QUIET)
find_package(nlohmann_json CONFIG QUIET)
find_package(GTest QUIET)
find_package(Qt6 QUIET COMPONENTS Widgets)
find_package(PkgConfig QUIET)
if(PkgConfig_FOUND)
    pkg_check_modules(EGL QUIET IMPORTED_TARGET egl)
    pkg_check_modules(EPOXY QUIET IMPORTED_TARGET epoxy)
endif()

function(lumora_option name text found)
    if(found)
        set(default ON)
    else()
        set(default OFF)
    endif()
    option(${name} "${text}" ${default})
endfunction()

lumora_option(LUMORA_SIMD "Vector code through Highway" "${hwy_FOUND}")
lumora_option(LUMORA_PICTURES "Picture files through stb_image" "${STB_INCLUDE}")
lumora_option(LUMORA_IMPORT "Model files through Assimp" "${assimp_FOUND}")
lumora_option(LUMORA_SETTINGS "Settings files through nlohmann-json" "${nlohmann_json_FOUND}")
lumora_option(LUMORA_APPS "The command line program" "${CLI11_FOUND}")
lumora_option(LUMORA_TESTS "Tests" "${GTest_FOUND}")
lumora_option(LUMORA_BENCH "Benchmarks against Mesa's software OpenGL" "${EPOXY_FOUND}")
lumora_option(LUMORA_QT "The Qt widget" "${Qt6Widgets_FOUND}")
option(LUMORA_EXAMPLES "Example hosts" ON)
option(LUMORA_FUZZ "Fuzzing programs; needs clang" OFF)
set(LUMORA_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")

# Every target of this project is compiled with these.
add_library(lumora-flags INTERFACE)
target_compile_options(lumora-flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Werror
    -ffp-contract=off) # the same numbers on every processor
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 finds overlaps in std::string that are not there, and under sanitizers loses sight of std::optional.
    target_compile_options(lumora-flags INTERFACE -Wno-restrict $<$<BOOL:${LUMORA_SANITIZE}>:-Wno-maybe-uninitialized>)
endif()
if(LUMORA_SANITIZE)
    target_compile_options(lumora-flags INTERFACE -fsanitize=${LUMORA_SANITIZE} -fno-omit-frame-pointer
        -fno-sanitize-recover=all)
    target_link_options(lumora-flags INTERFACE -fsanitize=${LUMORA_SANITIZE})
endif()

if(LUMORA_FUZZ AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # The library tells the fuzzing programs which way it went.
    target_compile_options(lumora-flags INTERFACE -fsanitize=fuzzer-no-link)
    target_link_options(lumora-flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

find_program(CCACHE ccache)
if(CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()
