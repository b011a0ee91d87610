# WebAssembly by Debian's emscripten; its programs run under node. To CMake it is a Linux: emscripten's own file for
# CMake knows no shared libraries and makes a second static one of the same name instead.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR wasm32)
set(CMAKE_CXX_COMPILER em++)
set(CMAKE_AR emar)
set(CMAKE_RANLIB emranlib)
set(CMAKE_SKIP_RPATH ON)
add_compile_options(-fexceptions -Wno-unused-command-line-argument) # exceptions are off unless asked for
add_link_options(-fexceptions -sALLOW_MEMORY_GROWTH)
set(CMAKE_CROSSCOMPILING_EMULATOR node --no-experimental-fetch) # where there is `fetch`, the loader takes it for files
