# What every target of this project is compiled with.
add_library(vlm_options INTERFACE)
target_compile_features(vlm_options INTERFACE c_std_99 cxx_std_20)
target_compile_options(vlm_options INTERFACE
  -Wall -Wextra -Wpedantic $<$<BOOL:${VLM_WARNINGS_AS_ERRORS}>:-Werror> -Wshadow -Wconversion -Wno-sign-conversion
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
  $<$<COMPILE_LANG_AND_ID:CXX,Clang,AppleClang>:-Wthread-safety>
  # GCC 12 sees overlaps in optimised string concatenations that are none, and variants moved from
  # before they were filled; clang and the sanitizers look for the real ones.
  $<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<NOT:$<CONFIG:Debug>>>:-Wno-restrict$<SEMICOLON>-Wno-maybe-uninitialized>)
set_property(TARGET vlm_options PROPERTY INTERFACE_POSITION_INDEPENDENT_CODE ON)
target_include_directories(vlm_options INTERFACE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)

if(CMAKE_UNITY_BUILD)
  # GCC takes the sources that are compiled as one for headers.
  target_compile_options(vlm_options INTERFACE
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>)
endif()
if(VLM_SANITIZE)
  target_compile_options(vlm_options INTERFACE
    -fsanitize=${VLM_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(vlm_options INTERFACE -fsanitize=${VLM_SANITIZE})
endif()
if(VLM_SANITIZE_LIBRARY)
  target_link_options(vlm_options INTERFACE -fsanitize=${VLM_SANITIZE_LIBRARY})
endif()
if(VLM_BUILD_FUZZ)
  # Fuzzers are led by what they reach inside the library.
  target_compile_options(vlm_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
