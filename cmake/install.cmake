# `cmake --install`: the headers below include/korvale, both libraries side by side, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

set(headers_folder ${CMAKE_INSTALL_INCLUDEDIR}/korvale)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/korvale)

# Installed, korvale.h stands among the folders that it stands beside here.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/korvale.h)
file(READ include/korvale.h text)
string(REPLACE "\"../" "\"" text "${text}")
file(CONFIGURE OUTPUT korvale.h CONTENT "${text}" @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/korvale.h include/korvale.hpp DESTINATION ${headers_folder})
install(DIRECTORY include/face DESTINATION ${headers_folder})
foreach(folder platform frame math data path equation preserve ray exchange border)
    file(GLOB headers ${folder}/*.h)
    install(FILES ${headers} DESTINATION ${headers_folder}/${folder})
endforeach()

install(TARGETS korvale EXPORT korvaleTargets)
if(TARGET korvale_platform)
    install(TARGETS korvale_platform EXPORT korvaleTargets)
    set_target_properties(korvale_platform PROPERTIES EXPORT_NAME platform)
endif()
install(EXPORT korvaleTargets NAMESPACE korvale:: DESTINATION ${package_folder} FILE korvaleConfig.cmake)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/korvaleConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/korvaleConfigVersion.cmake DESTINATION ${package_folder})

# Found relative to its own place, so an installed tree may be moved.
file(RELATIVE_PATH to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(packaging/korvale.pc.in korvale.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/korvale.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
