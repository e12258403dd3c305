# Debian packages, made by `scripts/package` from the preset `package`. Nothing here names a release
# of Debian: the dependencies are read from what the build links.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velmoramacnative)
set(CPACK_PACKAGE_CONTACT "The VelmoraMacNative developers <developers@velmora.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvelmoramacnative${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "The shared library that screen-sharing applications load.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvelmoramacnative-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "The header, and the files for pkg-config and CMake.")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME velmoramacnative-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "The program vlm: shares and views screens from a terminal.")
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)

# Each package says under which licences it is passed on.
foreach(component runtime development tools)
  string(TOUPPER ${component} upper)
  set(documents ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${documents}
    RENAME copyright COMPONENT ${component})
  install(FILES ${PROJECT_SOURCE_DIR}/docs/third-party-licences.md DESTINATION ${documents}
    COMPONENT ${component})
endforeach()

include(CPack)
