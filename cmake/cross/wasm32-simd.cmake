# As wasm32, with the vectors of 128 bits that newer machines have.
include(${CMAKE_CURRENT_LIST_DIR}/wasm32.cmake)
add_compile_options(-msimd128)
