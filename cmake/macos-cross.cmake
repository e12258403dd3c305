# Tool chain for Mach-O on Linux: clang and lld, the sysroot that scripts/setup --macos puts
# together, and the declarations of Apple's frameworks in sdk/macos. A Mac's own build does not use
# this file.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 23)

get_filename_component(root ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
set(sysroot ${root}/build/macos-sysroot)
if(NOT EXISTS ${sysroot}/made-of)
  message(FATAL_ERROR "There is no sysroot: run scripts/setup --macos first")
endif()
set(CMAKE_SYSROOT ${sysroot})
set(CMAKE_OSX_SYSROOT ${sysroot})
set(CMAKE_OSX_DEPLOYMENT_TARGET 14.0)

foreach(language C CXX OBJCXX)
  set(CMAKE_${language}_COMPILER_TARGET ${VLM_MACOS_ARCHITECTURE}-apple-macos14.0)
  set(CMAKE_${language}_FLAGS_INIT
    "-iframework ${root}/sdk/macos/Frameworks -isystem ${sysroot}/usr/include/c++/v1")
endforeach()
set(CMAKE_C_FLAGS_INIT "-iframework ${root}/sdk/macos/Frameworks")
set(CMAKE_C_COMPILER clang-19)
find_program(VLM_CLANGXX clang++-19 REQUIRED)
set(CMAKE_CXX_COMPILER ${VLM_CLANGXX})
set(CMAKE_OBJCXX_COMPILER ${VLM_CLANGXX})
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VLM_MACOS_ARCHITECTURE)

foreach(kind SHARED EXE MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT
    "-fuse-ld=lld -F${root}/sdk/macos/Frameworks -Wl,-adhoc_codesign")
endforeach()
set(CMAKE_AR llvm-ar-19)
set(CMAKE_RANLIB llvm-ranlib-19)
set(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool-19)
set(CMAKE_OTOOL llvm-otool-19)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
