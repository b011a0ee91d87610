# The platform layer that the library is linked against, as layer and static_layer: korvale's own, a shared and a
# static library, or the file of a host's.
if(KORVALE_HOST_LAYER)
    if(NOT EXISTS "${KORVALE_HOST_LAYER}" OR IS_DIRECTORY "${KORVALE_HOST_LAYER}")
        message(FATAL_ERROR "KORVALE_HOST_LAYER: there is no file ${KORVALE_HOST_LAYER}")
    endif()
    add_library(korvale::platform INTERFACE IMPORTED GLOBAL)
    include(${CMAKE_CURRENT_LIST_DIR}/../packaging/hostLayer.cmake)
    use_host_layer("${KORVALE_HOST_LAYER}")
    set(layer korvale::platform)
    set(static_layer korvale::platform)
    return()
endif()

add_library(korvale_platform SHARED platform/layer.cpp)
add_library(korvale::platform ALIAS korvale_platform)
target_link_libraries(korvale_platform PRIVATE korvale_library_flags)
target_link_options(korvale_platform PRIVATE -Wl,-z,nodelete) # its state is the process's and outlives a dlclose
set_target_properties(korvale_platform PROPERTIES OUTPUT_NAME korvale-platform EXPORT_NAME platform
                      VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})

add_library(korvale_platform_static STATIC platform/layer.cpp)
target_link_libraries(korvale_platform_static PRIVATE $<BUILD_INTERFACE:korvale_library_flags>)
set_target_properties(korvale_platform_static PROPERTIES OUTPUT_NAME korvale-platform EXPORT_NAME platform_static)

set(layer korvale_platform)
set(static_layer korvale_platform_static)
