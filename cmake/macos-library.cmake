# The dynamic library as macOS has it: its name, what it exports and what it is linked to.
file(STRINGS ${PROJECT_SOURCE_DIR}/cmake/VelmoraMacNative.map names REGEX "^ +vlm_[a-z0-9_]+;")
list(TRANSFORM names REPLACE "^ +(.*);" "_\\1")
list(JOIN names "\n" names)
set(exports ${PROJECT_BINARY_DIR}/exports.txt)
file(CONFIGURE OUTPUT ${exports} CONTENT "${names}\n")

target_link_options(VelmoraMacNative PRIVATE
  -Wl,-exported_symbols_list,${exports} -Wl,-dead_strip -Wl,-dead_strip_dylibs)
foreach(framework ${VLM_FRAMEWORKS})
  target_link_libraries(VelmoraMacNative PRIVATE "-framework ${framework}")
endforeach()
target_link_libraries(VelmoraMacNative PRIVATE objc)
set_target_properties(VelmoraMacNative PROPERTIES
  PREFIX ""
  SUFFIX ".dylib"
  INSTALL_NAME_DIR "@rpath"
  MACOSX_RPATH ON
  BUILD_WITH_INSTALL_NAME_DIR ON
  LINK_DEPENDS ${exports}
  LINKER_LANGUAGE CXX)
