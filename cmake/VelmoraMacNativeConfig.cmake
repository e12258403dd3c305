include(${CMAKE_CURRENT_LIST_DIR}/VelmoraMacNativeTargets.cmake)
