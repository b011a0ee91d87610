# What every source of the project is compiled with. The arithmetic is part of the interface: nothing here may change a
# bit of a result.
include(CheckCXXCompilerFlag)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_FLAGS_RELEASE "-O2")

add_library(korvale_flags INTERFACE)
target_compile_options(korvale_flags INTERFACE
    -ffp-contract=off -fno-math-errno -fno-trapping-math
    -Wall -Wextra -Wconversion -Wshadow -Wno-invalid-offsetof -Werror
    $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>) # which gcc does not count among conversions
target_link_options(korvale_flags INTERFACE -Wl,--as-needed)
if(NOT KORVALE_SANITIZE) # a sanitizer's runtime is linked to the program only
    target_link_options(korvale_flags INTERFACE -Wl,--no-undefined)
endif()

# A unique symbol would keep dlclose from unloading the library.
check_cxx_compiler_flag(-fno-gnu-unique KORVALE_HAS_NO_GNU_UNIQUE)
if(KORVALE_HAS_NO_GNU_UNIQUE)
    target_compile_options(korvale_flags INTERFACE -fno-gnu-unique)
endif()
# Calls inside the library bind inside the library, so they may be inlined as well.
check_cxx_compiler_flag(-fno-semantic-interposition KORVALE_HAS_NO_SEMANTIC_INTERPOSITION)
if(KORVALE_HAS_NO_SEMANTIC_INTERPOSITION)
    target_compile_options(korvale_flags INTERFACE -fno-semantic-interposition)
endif()

if(NOT KORVALE_WIDE_LANES)
    target_compile_definitions(korvale_flags INTERFACE KORVALE_NO_WIDE_LANES)
endif()

if(KORVALE_SANITIZE)
    target_compile_options(korvale_flags INTERFACE -fsanitize=${KORVALE_SANITIZE} -fno-omit-frame-pointer
                           -fno-sanitize-recover=all)
    target_link_options(korvale_flags INTERFACE -fsanitize=${KORVALE_SANITIZE})
endif()
