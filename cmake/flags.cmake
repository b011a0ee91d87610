# What every source of the project is compiled with. The arithmetic is part of the interface: nothing here may change a
# bit of a result.
include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# Here and below: a parent project's own targets keep theirs.
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release)
endif()

add_library(korvale_flags INTERFACE)
target_include_directories(korvale_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(korvale_flags INTERFACE -ffp-contract=off -fno-math-errno -fno-trapping-math)
if(KORVALE_STRICT)
    target_compile_options(korvale_flags INTERFACE
        -Wall -Wextra -Wconversion -Wshadow -Wno-invalid-offsetof -Werror
        # gcc does not count changes of sign among conversions; `&` joins the conditions of lanes, of one too.
        $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion -Wno-bitwise-instead-of-logical>)
endif()
# Linkers of other systems than Linux and Windows may know neither.
check_linker_flag(CXX -Wl,--as-needed KORVALE_LINKS_AS_NEEDED)
if(KORVALE_LINKS_AS_NEEDED)
    target_link_options(korvale_flags INTERFACE -Wl,--as-needed)
endif()
check_linker_flag(CXX -Wl,--no-undefined KORVALE_LINKS_NO_UNDEFINED)
if(KORVALE_LINKS_NO_UNDEFINED AND NOT KORVALE_SANITIZE) # a sanitizer's runtime is linked to the program only
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

# What the libraries are built with besides. A parent project may calculate as it likes: the later -fno-fast-math takes
# its choice back, and -O2 does where -Ofast would link code that switches small numbers off for the whole process.
add_library(korvale_library_flags INTERFACE)
target_link_libraries(korvale_library_flags INTERFACE korvale_flags)
target_compile_options(korvale_library_flags INTERFACE -fno-fast-math)
target_link_options(korvale_library_flags INTERFACE -fno-fast-math -O2)
# Tables of addresses are filled when the library is loaded and read-only from then on.
if(UNIX)
    target_link_options(korvale_library_flags INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack,-z,text)
endif()
