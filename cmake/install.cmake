# `cmake --install`: korvale.h and the folder korvale/ of further headers, the libraries side by side, a CMake package
# and a pkg-config file. Nothing in it names a place outside it, so an installed tree may be moved.
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/korvale)

# Installed, the headers of include/ stand beside the folder that has the other headers.
file(GLOB headers CONFIGURE_DEPENDS include/*.h include/*.hpp)
foreach(header ${headers})
    get_filename_component(name ${header} NAME)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
    file(READ ${header} text)
    string(REPLACE "\"../" "\"korvale/" text "${text}")
    file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/installed/${name} "${text}")
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/installed/${name} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endforeach()
install(FILES packaging/korvale_c.json DESTINATION ${CMAKE_INSTALL_DATADIR}/korvale)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY include/korvale DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
foreach(folder platform frame math data path equation preserve ray exchange border)
    file(GLOB headers CONFIGURE_DEPENDS ${folder}/*.h)
    install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/korvale/${folder})
endforeach()

# A host's layer is not installed; the package files know it by the name of its file.
set(installed korvale korvale_c korvale_static)
set(is_host_layer OFF)
set(layer_name libkorvale-platform.so.${PROJECT_VERSION_MAJOR})
set(layer_flags)
set(static_layer_flags " -lkorvale-platform")
if(KORVALE_HOST_LAYER)
    get_filename_component(layer_name "${KORVALE_HOST_LAYER}" NAME)
    set(is_host_layer ON)
    set(layer_flags " -Wl,--push-state,--no-as-needed,-l:${layer_name},--pop-state")
    set(static_layer_flags)
    install(FILES packaging/hostLayer.cmake DESTINATION ${package_folder})
else()
    list(APPEND installed korvale_platform korvale_platform_static)
endif()
install(TARGETS ${installed} EXPORT korvaleTargets)
install(EXPORT korvaleTargets NAMESPACE korvale:: DESTINATION ${package_folder})
configure_file(packaging/korvaleConfig.cmake.in korvaleConfig.cmake @ONLY)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/korvaleConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/korvaleConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/korvaleConfigVersion.cmake
        DESTINATION ${package_folder})

file(RELATIVE_PATH to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(packaging/korvale.pc.in korvale.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/korvale.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
