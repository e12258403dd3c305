# What an installed copy consists of: library, header, and the two ways to find it.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/VelmoraMacNative)

# Three components: what programs run with, what they are built with, and the program `vlm`.
install(TARGETS VelmoraMacNative EXPORT VelmoraMacNativeTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime NAMELINK_COMPONENT development)
install(FILES ${PROJECT_SOURCE_DIR}/include/VelmoraMacNative.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
if(VLM_PLATFORM STREQUAL macos)
  # For Swift.
  install(FILES ${PROJECT_SOURCE_DIR}/cmake/module.modulemap
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
endif()
install(EXPORT VelmoraMacNativeTargets
  NAMESPACE VelmoraMacNative:: DESTINATION ${package_dir} COMPONENT development)

write_basic_package_version_file(${PROJECT_BINARY_DIR}/VelmoraMacNativeConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_SOURCE_DIR}/cmake/VelmoraMacNativeConfig.cmake
  ${PROJECT_BINARY_DIR}/VelmoraMacNativeConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

# The prefix is found from where the file lies, so that an installed tree can be moved.
file(RELATIVE_PATH prefix_from_pc
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/VelmoraMacNative.pc.in
  ${PROJECT_BINARY_DIR}/VelmoraMacNative.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/VelmoraMacNative.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
